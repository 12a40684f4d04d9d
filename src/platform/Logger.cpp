#include "platform/Logger.h"

#include <algorithm>
#include <array>
#include <ctime>
#include <fcntl.h>
#include <iterator>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>
#include <vector>

#include "platform/BoundedFunctions.h"
#include "platform/DirOperator.h"
#include "platform/FileOperator.h"

namespace {
constexpr int MAX_SIZE = 33554432;
constexpr mode_t FILE_MODE = 0600;
constexpr std::size_t MESSAGE_SIZE = 4096;
constexpr std::size_t TIMESTAMP_SIZE = 32;
/// A stream's own is 8 KiB: 8192 calls for a rotation.
constexpr std::size_t COPY_BUFFER_SIZE = 262144;
/// Room for what a line holds beside its texts: time, level, line number and marks.
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
    // As an argument and not as a format: what percent signs the text holds stay.
    Singleton<Brevora::Logger>::GetInstance()->WriteLog(level, file, 0, module, "%s", message.data());
}
} // namespace

namespace Brevora {

Logger::Logger() : maxSize(MAX_SIZE), stream(filePath) {}

Logger::~Logger()
{
    stream.close();
}

void Logger::Init(const std::string& path)
{
    // Without a path and a file while the guard works: it logs too, and its line could otherwise rotate an
    // overgrown log through the very link that is about to go.
    stream.close();
    filePath.clear();
    if (FileOperator::GetInstance().IsLinkExist(path)) {
        unlink(path.c_str());
    }
    if (DIR_OPERATOR.IsDirExist(path)) {
        DIR_OPERATOR.RemoveDir(path);
    }
    filePath = path;
    stream.open(path, std::ios::out | std::ios::app);
    if (stream.is_open()) {
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
    std::vector<char> sourceBuffer(COPY_BUFFER_SIZE);
    std::vector<char> targetBuffer(COPY_BUFFER_SIZE);
    std::ifstream source;
    std::ofstream target;
    source.rdbuf()->pubsetbuf(sourceBuffer.data(), static_cast<std::streamsize>(sourceBuffer.size()));
    target.rdbuf()->pubsetbuf(targetBuffer.data(), static_cast<std::streamsize>(targetBuffer.size()));
    source.open(from);
    target.open(to);
    if (!target.is_open()) {
        return;
    }
    chmod(to.c_str(), FILE_MODE);
    // Byte by byte, straight between the streams' buffers: a formatted get and put would test the stream's
    // state for each of 32 MiB.
    std::copy(std::istreambuf_iterator<char>(source), std::istreambuf_iterator<char>(),
              std::ostreambuf_iterator<char>(target));
    target.flush();
}

void Logger::SaveAndOpenNewFile()
{
    const std::string backup = filePath + ".old";
    stream.close();
    CopyLog2Log(filePath, backup);
    stream.open(filePath, std::ios::out);
}

int Logger::GetCurrentSize(const std::string& path) const
{
    // Without a stream around the file: its buffer and locale would cost as much as the calls themselves, for
    // every line.
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (file < 0) {
        return -1;
    }
    const auto size = static_cast<int>(lseek(file, 0, SEEK_END));
    lseek(file, 0, SEEK_SET);
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
    // Not cleared: four kilobytes for every line.
    std::array<char, MESSAGE_SIZE> message;
    va_list args;
    va_start(args, format);
    // Held against its arguments at every call site instead.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
    const int length = vsnprintf_s(message.data(), message.size(), message.size() - 1, format, args);
#pragma GCC diagnostic pop
    va_end(args);
    if (length < 0) {
        // Dropped, not cut: a line is whole or not there.
        return;
    }
    std::string text;
    text.reserve(LINE_FRAME_SIZE + file.size() + module.size() + static_cast<std::size_t>(length));
    text.append("[").append(time).append("] [").append(word).append("] [").append(file).append(":");
    text.append(std::to_string(line)).append("] ").append(module).append(": ").append(message.data());
    text.append("\n");
    stream.write(text.data(), static_cast<std::streamsize>(text.size()));
    stream.flush();
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
