#pragma once

#include <string>
#include <vector>

struct sd_bus;
struct sd_bus_message;

namespace Brevora {

/// The only process whose replies on the bus are accepted; 0 until SetDbusServerPid().
extern int g_velodeskdPid;

/// Shell commands, calls to the daemon over D-Bus, and text functions. May be used on any thread: the only
/// state is g_velodeskdPid, which is written once at start. Texts are bytes in the caller's encoding.
class Utils
{
public:
    Utils() = delete;

    /// Returns the parts of `text` between delimiters, including empty ones, but none after a delimiter at
    /// the end.
    static std::vector<std::string> Split(std::string text, std::string delimiter);

    /// Stores the daemon's process id.
    static void SetDbusServerPid(int pid);

    /// Runs a shell command, blocks until it ends, and returns its output without the last line feed and
    /// without blanks at both ends. Returns an empty text on failure, for an exit code other than 0, and for
    /// a command that contains "./", which it does not run.
    static std::string ExecutePopenAndReturn(const std::string& command);

    /// Opens the system bus and creates the method call to the daemon. The caller frees both. Returns a
    /// negative number on failure.
    static int DBusProcessInit(sd_bus** bus, sd_bus_message** message, const std::string& command);
    /// Sends a command to the daemon and stores its reply in `result`; blocks for up to 5000 ms. On failure
    /// returns a negative number and stores the bus's message in `errorMessage`. A reply from another process
    /// is no failure, but leaves `result` empty.
    static int DBusProcess(const std::string& command, std::string& result, std::string& errorMessage);
    /// The same, but after a time-out `errorMessage` is "Connection timed out" in every locale.
    static int ExecutePopenAndReturnByDbus(const std::string& command, std::string& result,
                                           std::string& errorMessage);

    /// Erases each occurrence of `piece`, including those that the erasing creates. Does not return if
    /// `piece` is empty.
    static std::string DeleteSubStr(std::string text, std::string piece);
    /// Returns two lower-case hexadecimal digits for each byte.
    static std::string String2HexString(const std::string& text);
    /// Returns a random UUID from the kernel; empty on failure.
    static std::string GenerateUUID();
    /// True for at most 64 letters, digits, "-" and "_" (ASCII), and for an empty text.
    static bool IsValidUDID(const std::string& id);
    /// True for six pairs of hexadecimal digits with colons, except all zeros and the broadcast address.
    static bool IsMacValid(const std::string& mac);
    /// True for one or more letters, digits and "_" (ASCII).
    static bool IsStringAndNumberOnly(const std::string& text);
    /// True for one or more digits.
    static bool IsNumberOnly(const std::string& text);
    /// True for an IPv4 address in decimal without leading zeros, whose first number is not 0.
    static bool IsIpValid(const std::string& ip);

    static const std::string mVelodeskFilePath;
};

} // namespace Brevora

namespace Velodesk {
/// As Brevora::Utils::ExecutePopenAndReturn().
std::string RunCommand(const std::string& command);
} // namespace Velodesk
