// The part of Utils without D-Bus, so that other programs can link it without libsystemd.
#include "platform/Utils.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <optional>
#include <regex>

#include "platform/BoundedFunctions.h"

namespace {
constexpr std::size_t UTILS_BUFFER_SIZE = 1026;
constexpr std::size_t COMMAND_BUFFER_SIZE = 1024;
constexpr int EXIT_CODE_MASK = 0xff00;
constexpr std::size_t MAX_UDID_LENGTH = 64;

bool ClearBounded(char* buffer, std::size_t size)
{
    return memset_s(buffer, size, 0, size) == 0;
}

bool ClearPlainly(char* buffer, std::size_t size)
{
    std::fill_n(buffer, size, '\0');
    return true;
}

template <std::size_t size>
std::optional<std::string> ReadCommand(const std::string& command, bool (*clear)(char*, std::size_t))
{
    FILE* pipe = popen(command.c_str(), "r");
    if (pipe == nullptr) {
        return std::nullopt;
    }
    std::array<char, size> buffer{};
    std::string output;
    while (fgets(buffer.data(), static_cast<int>(size), pipe) != nullptr) {
        output += buffer.data();
        if (!clear(buffer.data(), buffer.size())) {
            pclose(pipe);
            return std::nullopt;
        }
    }
    if ((pclose(pipe) & EXIT_CODE_MASK) != 0) {
        return std::nullopt;
    }
    return output;
}

template <std::size_t size>
std::string RunAndTrim(const std::string& command, bool (*clear)(char*, std::size_t))
{
    // Also refuses a command with "../", and even one with a harmless path such as /a./b.
    if (command.empty() || command.find("./") != std::string::npos) {
        return "";
    }
    std::string output = ReadCommand<size>(command, clear).value_or("");
    // The last line feed is removed wherever it is: if the output does not end with one, its last two lines
    // are joined.
    const std::size_t lineFeed = output.rfind('\n');
    if (lineFeed != std::string::npos) {
        output.erase(lineFeed, 1);
    }
    const std::size_t first = output.find_first_not_of(' ');
    if (first == std::string::npos) {
        return "";
    }
    return output.substr(first, output.find_last_not_of(' ') - first + 1);
}

/// Returns true if the whole text matches. `maxLength` is the length of the longest possible match. A longer
/// text is not tried, because std::regex recurses for each byte and would overflow the stack.
bool Matches(const std::string& text, std::size_t maxLength, const char* pattern)
{
    return text.size() <= maxLength && std::regex_match(text, std::regex(pattern));
}
} // namespace

namespace Brevora {

std::vector<std::string> Utils::Split(std::string text, std::string delimiter)
{
    std::vector<std::string> pieces;
    std::size_t start = 0;
    std::size_t end = 0;
    while (!delimiter.empty() && (end = text.find(delimiter, start)) != std::string::npos) {
        pieces.push_back(text.substr(start, end - start));
        start = end + delimiter.size();
    }
    if (start < text.size()) {
        pieces.push_back(text.substr(start));
    }
    return pieces;
}

std::string Utils::ExecutePopenAndReturn(const std::string& command)
{
    return RunAndTrim<UTILS_BUFFER_SIZE>(command, ClearBounded);
}

std::string Utils::DeleteSubStr(std::string text, std::string piece)
{
    std::size_t at = 0;
    // The loop never ends for an empty piece, because find() always finds it.
    while ((at = text.find(piece)) != std::string::npos) {
        text.erase(at, piece.size());
    }
    return text;
}

std::string Utils::String2HexString(const std::string& text)
{
    constexpr char DIGITS[] = "0123456789abcdef";
    std::string hex;
    hex.reserve(2 * text.size());
    for (const char byte : text) {
        const auto value = static_cast<unsigned char>(byte);
        hex += DIGITS[value >> 4U];
        hex += DIGITS[value & 0xFU];
    }
    return hex;
}

std::string Utils::GenerateUUID()
{
    return ExecutePopenAndReturn("cat /proc/sys/kernel/random/uuid");
}

bool Utils::IsValidUDID(const std::string& id)
{
    constexpr char VALID[] = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-_";
    return id.size() <= MAX_UDID_LENGTH && id.find_first_not_of(VALID) == std::string::npos;
}

bool Utils::IsMacValid(const std::string& mac)
{
    constexpr std::size_t LENGTH = 17;
    return mac != "00:00:00:00:00:00" && mac != "FF:FF:FF:FF:FF:FF" && mac != "ff:ff:ff:ff:ff:ff" &&
           Matches(mac, LENGTH, "([A-Fa-f0-9][A-Fa-f0-9]:){5}[A-Fa-f0-9][A-Fa-f0-9]");
}

bool Utils::IsStringAndNumberOnly(const std::string& text)
{
    constexpr char VALID[] = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_";
    return !text.empty() && text.find_first_not_of(VALID) == std::string::npos;
}

bool Utils::IsNumberOnly(const std::string& text)
{
    return !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
}

bool Utils::IsIpValid(const std::string& ip)
{
    constexpr std::size_t MAX_LENGTH = 15;
    return Matches(ip, MAX_LENGTH,
                   R"((1\d{2}|2[0-4]\d|25[0-5]|[1-9]\d|[1-9]))"
                   R"((\.(1\d{2}|2[0-4]\d|25[0-5]|[1-9]\d|\d)){3})");
}

} // namespace Brevora

std::string Velodesk::RunCommand(const std::string& command)
{
    return RunAndTrim<COMMAND_BUFFER_SIZE>(command, ClearPlainly);
}
