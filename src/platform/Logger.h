#pragma once

#include <cstdarg>
#include <mutex>
#include <string>
#include <type_traits>

#include "platform/Singleton.h"

namespace Brevora {

/// The program's one log file, reached as Singleton<Brevora::Logger>::GetInstance().
///
/// main() calls Init() once, before there are other threads; lines logged earlier are lost. WriteLog() may
/// then be called on any thread, but not from within itself. A failure of the log is never reported and never
/// stops the program: a line that cannot be written is lost, and the next line is written again. Our own
/// sources use the macros of platform/Log.h, which is not part of the client library.
class Logger
{
public:
    Logger();
    ~Logger();
    Logger(const Logger&) = delete;
    Logger& operator=(const Logger&) = delete;

    /// Opens the log at `path` (local 8-bit) for appending, with mode 0600. Removes a link to a file, or a
    /// directory, at that path first.
    void Init(const std::string& path);

    /// Writes one line and flushes it. `level`: 2 INFO, 3 WARNING, 4 ERROR, 5 CRITICAL; 1 (DEBUG) and below
    /// are dropped. `file`: source file without directories; `module`: the source file's tag; `format`:
    /// printf, with strings as plain character pointers. A message of more than 4095 bytes is dropped, not
    /// cut.
    template <typename... Args>
    void WriteLog(int level, const std::string& file, int line, const std::string& module,
                  const std::string& format, Args... args)
    {
        static_assert((... && std::is_scalar_v<Args>), "printf takes numbers and pointers only");
        WriteFormatted(level, file, line, module, format.c_str(), args...);
    }

    /// Returns the name of a level: "DEBUG" to "CRITICAL" for 1 to 5, a blank for any other.
    std::string GetLevelString(int level) const;

    /// Returns the local time as "yy-mm-dd hh:mm:ss.uuuuuu"; empty if it could not be formatted.
    std::string GetTimestamp() const;

    /// Copies the bytes of `from` over `to`, which gets mode 0600. A read error ends the copy.
    void CopyLog2Log(std::string from, std::string to) const;

    /// Copies the log to "<path>.old" and empties the log. Does not lock: WriteLog() holds the lock.
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
    /// The descriptor of the log, which children do not inherit; -1 if no log is open.
    int descriptor = -1;
    /// Whether the last line is incomplete because its write failed.
    bool lineIsCut = false;
    std::mutex lock;
};

} // namespace Brevora

extern "C" {
/// Functions for callers with C strings. They write lines with line number 0, and nothing for a null pointer.
__attribute__((visibility("default"), format(printf, 3, 4))) void
CLogDebug(const char* module, const char* file, const char* format, ...);
__attribute__((visibility("default"), format(printf, 3, 4))) void
CLogInfo(const char* module, const char* file, const char* format, ...);
__attribute__((visibility("default"), format(printf, 3, 4))) void
CLogWarn(const char* module, const char* file, const char* format, ...);
__attribute__((visibility("default"), format(printf, 3, 4))) void
CLogError(const char* module, const char* file, const char* format, ...);
}
