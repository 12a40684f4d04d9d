#pragma once

#include "platform/Logger.h"

namespace Brevora {

/// Lets the compiler check a format against its arguments; never called at run time.
__attribute__((format(printf, 1, 2))) inline void CheckLogFormat(const char*, ...) {}

/// Returns the part of a path after its last slash, at compile time.
constexpr const char* SourceFileName(const char* path)
{
    const char* name = path;
    for (const char* at = path; *at != '\0'; ++at) {
        if (*at == '/') {
            name = at + 1;
        }
    }
    return name;
}

} // namespace Brevora

/// LOG_INFO("count is %d", count) writes a line to the log, with source file, line number and module. The
/// source file must define the module's name as the constant MODULE_TAG.
#define VELODESK_LOG(level, ...)                                                                             \
    do {                                                                                                     \
        if (false) {                                                                                         \
            Brevora::CheckLogFormat(__VA_ARGS__);                                                            \
        }                                                                                                    \
        static constexpr const char* velodeskSourceFile = Brevora::SourceFileName(__FILE__);                 \
        Singleton<Brevora::Logger>::GetInstance()->WriteLog(level, velodeskSourceFile, __LINE__, MODULE_TAG, \
                                                            __VA_ARGS__);                                    \
    } while (false)

#define LOG_DEBUG(...) VELODESK_LOG(1, __VA_ARGS__)
#define LOG_INFO(...) VELODESK_LOG(2, __VA_ARGS__)
#define LOG_WARNING(...) VELODESK_LOG(3, __VA_ARGS__)
#define LOG_ERROR(...) VELODESK_LOG(4, __VA_ARGS__)
