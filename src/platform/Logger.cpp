#include "platform/Logger.h"

#include <array>
#include <ctime>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

#include "platform/BoundedFunctions.h"
#include "platform/DirOperator.h"
#include "platform/FileOperator.h"

namespace {
constexpr int MAX_SIZE = 33554432;
constexpr mode_t FILE_MODE = 0600;
constexpr std::size_t MESSAGE_SIZE = 4096;
constexpr std::size_t TIMESTAMP_SIZE = 32;
constexpr std::size_t COPY_BUFFER_SIZE = 16384;
/// The mode of a new file until chmod() sets FILE_MODE.
constexpr mode_t NEW_FILE_MODE = 0666;
/// The maximum length of time, level, line number and punctuation in a line.
constexpr std::size_t LINE_FRAME_SIZE = 64;

constexpr int LEVEL_DEBUG = 1;
constexpr int LEVEL_INFO = 2;
constexpr int LEVEL_WARNING = 3;
constexpr int LEVEL_ERROR = 4;
constexpr int LEVEL_CRITICAL = 5;

__attribute__((format(printf, 4, 0))) void LogPlain(int level, const char* module, const char* file,
                                                    const char* format, va_list args)
{
    if (module == nullptr || file == nullptr || format == nullptr) {
        return;
    }
    std::array<char, MESSAGE_SIZE> message{};
    if (vsnprintf_s(message.data(), message.size(), message.size() - 1, format, args) < 0) {
        return;
    }
    // The text is an argument, not the format, because it can contain percent signs.
    Singleton<Brevora::Logger>::GetInstance()->WriteLog(level, file, 0, module, "%s", message.data());
}
} // namespace

namespace Brevora {

Logger::Logger() : maxSize(MAX_SIZE) {}

Logger::~Logger()
{
    Close();
}

void Logger::Init(const std::string& path)
{
    // Closes the log and clears its path first, because the checks below write lines. If the log is a link
    // and too large, such a line would rotate the target of the link.
    Close();
    filePath.clear();
    if (FileOperator::GetInstance().IsLinkExist(path)) {
        unlink(path.c_str());
    }
    if (DIR_OPERATOR.IsDirExist(path)) {
        DIR_OPERATOR.RemoveDir(path);
    }
    filePath = path;
    Open(O_APPEND);
    if (descriptor >= 0) {
        chmod(path.c_str(), FILE_MODE);
    }
}

std::string Logger::GetLevelString(int level) const
{
    switch (level) {
    case LEVEL_DEBUG:
        return "DEBUG";
    case LEVEL_INFO:
        return "INFO";
    case LEVEL_WARNING:
        return "WARNING";
    case LEVEL_ERROR:
        return "ERROR";
    case LEVEL_CRITICAL:
        return "CRITICAL";
    default:
        return " ";
    }
}

std::string Logger::GetTimestamp() const
{
    timeval now{};
    gettimeofday(&now, nullptr);
    tm local{};
    localtime_r(&now.tv_sec, &local);
    std::array<char, TIMESTAMP_SIZE> text{};
    const std::size_t length = std::strftime(text.data(), text.size(), "%y-%m-%d %H:%M:%S", &local);
    const std::size_t rest = text.size() - length;
    if (snprintf_s(text.data() + length, rest, rest - 1, ".%06ld", static_cast<long>(now.tv_usec)) < 0) {
        return "";
    }
    return text.data();
}

void Logger::CopyLog2Log(std::string from, std::string to) const
{
    const int target = open(to.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, NEW_FILE_MODE);
    if (target < 0) {
        return;
    }
    chmod(to.c_str(), FILE_MODE);
    const int source = open(from.c_str(), O_RDONLY | O_CLOEXEC);
    std::array<char, COPY_BUFFER_SIZE> buffer;
    ssize_t count = 0;
    do {
        count = read(source, buffer.data(), buffer.size());
    } while (count > 0 && write(target, buffer.data(), static_cast<std::size_t>(count)) == count);
    close(source);
    close(target);
}

void Logger::SaveAndOpenNewFile()
{
    Close();
    CopyLog2Log(filePath, filePath + ".old");
    Open(O_TRUNC);
}

int Logger::GetCurrentSize(const std::string& path) const
{
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (file < 0) {
        return -1;
    }
    const auto size = static_cast<int>(lseek(file, 0, SEEK_END));
    close(file);
    return size;
}

void Logger::WriteFormatted(int level, const std::string& file, int line, const std::string& module,
                            const char* format, ...)
{
    if (level <= LEVEL_DEBUG) {
        return;
    }
    const std::lock_guard<std::mutex> guard(lock);
    if (GetCurrentSize(filePath) > maxSize) {
        SaveAndOpenNewFile();
    }
    const std::string word = GetLevelString(level);
    const std::string time = GetTimestamp();
    // Not initialised, because that would fill 4 KiB for each line.
    std::array<char, MESSAGE_SIZE> message;
    va_list args;
    va_start(args, format);
    // LOG_INFO and the others check the arguments at each call.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
    const int length = vsnprintf_s(message.data(), message.size(), message.size() - 1, format, args);
#pragma GCC diagnostic pop
    va_end(args);
    if (length < 0) {
        return;
    }
    std::string text;
    text.reserve(LINE_FRAME_SIZE + file.size() + module.size() + static_cast<std::size_t>(length));
    text.append(lineIsCut ? "\n[" : "[")
        .append(time)
        .append("] [")
        .append(word)
        .append("] [")
        .append(file)
        .append(":");
    text.append(std::to_string(line)).append("] ").append(module).append(": ").append(message.data());
    text.append("\n");
    const ssize_t written = write(descriptor, text.data(), text.size());
    if (written > 0) {
        lineIsCut = text[static_cast<std::size_t>(written) - 1] != '\n';
    }
}

void Logger::Open(int truncateOrAppend)
{
    descriptor = open(filePath.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | truncateOrAppend, NEW_FILE_MODE);
    lineIsCut = false;
}

void Logger::Close()
{
    if (descriptor >= 0) {
        close(descriptor);
        descriptor = -1;
    }
}

} // namespace Brevora

void CLogDebug(const char* module, const char* file, const char* format, ...)
{
    va_list args;
    va_start(args, format);
    LogPlain(LEVEL_DEBUG, module, file, format, args);
    va_end(args);
}

void CLogInfo(const char* module, const char* file, const char* format, ...)
{
    va_list args;
    va_start(args, format);
    LogPlain(LEVEL_INFO, module, file, format, args);
    va_end(args);
}

void CLogWarn(const char* module, const char* file, const char* format, ...)
{
    va_list args;
    va_start(args, format);
    LogPlain(LEVEL_WARNING, module, file, format, args);
    va_end(args);
}

void CLogError(const char* module, const char* file, const char* format, ...)
{
    va_list args;
    va_start(args, format);
    LogPlain(LEVEL_ERROR, module, file, format, args);
    va_end(args);
}
