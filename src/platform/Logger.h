#pragma once

#include <cstdarg>
#include <mutex>
#include <string>
#include <type_traits>

#include "platform/Singleton.h"

namespace Brevora {

/// The log file of the program. Use it as Singleton<Brevora::Logger>, which owns it.
///
/// main() calls Init() once, before it starts threads. Lines that are logged earlier are lost. After Init(),
/// any thread may call WriteLog(). No function reports a failure: a line that cannot be written is lost, and
/// the next line is written independently of it. The program's own sources use the macros of platform/Log.h.
/// The package velodesk-dev does not contain that header.
class Logger
{
public:
    Logger();
    ~Logger();
    Logger(const Logger&) = delete;
    Logger& operator=(const Logger&) = delete;

    /// Opens the log at `path` (local 8-bit) for appending, with mode 0600. If `path` is a directory or a
    /// link to a file, removes it first.
    void Init(const std::string& path);

    /// Writes one line. `level` is 2 (INFO), 3 (WARNING), 4 (ERROR) or 5 (CRITICAL); lines of lower levels
    /// are dropped. `file` is the name of the source file without directories, `module` the name of its
    /// module. `format` and `args` are those of printf: texts are `const char*`. A message of more than 4095
    /// bytes is dropped, not cut. Above 32 MiB, the log is emptied first, after a copy to "<path>.old".
    template <typename... Args>
    void WriteLog(int level, const std::string& file, int line, const std::string& module,
                  const std::string& format, Args... args)
    {
        static_assert((... && std::is_scalar_v<Args>), "printf takes numbers and pointers only");
        WriteFormatted(level, file, line, module, format.c_str(), args...);
    }

    /// Returns the name of a level, from "DEBUG" (1) to "CRITICAL" (5); a blank for any other number.
    std::string GetLevelString(int level) const;

    /// Returns the local time as "yy-mm-dd hh:mm:ss.uuuuuu"; empty if it could not be formatted.
    std::string GetTimestamp() const;

    /// Replaces the content of the file `to` with that of `from` and sets the mode of `to` to 0600. An error
    /// ends the copy: `to` then contains the part before the error.
    void CopyLog2Log(std::string from, std::string to) const;

    /// Copies the log to "<path>.old" and empties the log. The caller must hold the lock, as WriteLog() does.
    void SaveAndOpenNewFile();

    /// Returns the size of the file at `path` in bytes, or -1 if it cannot be opened.
    int GetCurrentSize(const std::string& path) const;

private:
    void WriteFormatted(int level, const std::string& file, int line, const std::string& module,
                        const char* format, ...);

    void Open(int truncateOrAppend);
    void Close();

    const int maxSize;
    std::string filePath;
    /// The open log, or -1. Children do not inherit it.
    int descriptor = -1;
    /// True if the last write stored only the beginning of its line. The next line then begins with a line
    /// feed.
    bool lineIsCut = false;
    std::mutex lock;
};

} // namespace Brevora

extern "C" {
/// Write a line to the same log, for C code. The line number is 0. If a pointer is null, nothing is written.
__attribute__((visibility("default"), format(printf, 3, 4))) void
CLogDebug(const char* module, const char* file, const char* format, ...);
__attribute__((visibility("default"), format(printf, 3, 4))) void
CLogInfo(const char* module, const char* file, const char* format, ...);
__attribute__((visibility("default"), format(printf, 3, 4))) void
CLogWarn(const char* module, const char* file, const char* format, ...);
__attribute__((visibility("default"), format(printf, 3, 4))) void
CLogError(const char* module, const char* file, const char* format, ...);
}
