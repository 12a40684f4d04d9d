#pragma once

#include <string>
#include <vector>

struct sd_bus;
struct sd_bus_message;

namespace Brevora {

/// The only process whose answers on the daemon's bus are believed; 0 until SetDbusServerPid().
extern int g_velodeskdPid;

/// Commands, the daemon's bus, and functions on text. No state but g_velodeskdPid, which is written once at
/// start-up: safe from any thread. Texts are bytes in whatever encoding the caller has.
class Utils
{
public:
    Utils() = delete;

    /// The pieces of `text` between delimiters, empty ones included, but none behind a delimiter at the end.
    static std::vector<std::string> Split(std::string text, std::string delimiter);

    /// Stores the daemon's process id.
    static void SetDbusServerPid(int pid);

    /// Runs a shell command as this user, blocking for as long as it runs, and gives its output without the
    /// last line feed and without blanks at the ends. Empty on any failure, for an exit code other than 0,
    /// and for a command that holds "./" anywhere, which is not run.
    static std::string ExecutePopenAndReturn(const std::string& command);

    /// Opens the system bus and makes the call to the daemon; the caller frees both. Negative on failure.
    static int DBusProcessInit(sd_bus** bus, sd_bus_message** message, const std::string& command);
    /// Hands the daemon a command and takes its answer, blocking for up to 5 s. Negative on failure, with the
    /// bus's words in `errorMessage`. An answer from another process than the daemon leaves `result` empty,
    /// which is no failure here.
    static int DBusProcess(const std::string& command, std::string& result, std::string& errorMessage);
    /// The same, with one text for a time-out in every locale: "Connection timed out".
    static int ExecutePopenAndReturnByDbus(const std::string& command, std::string& result,
                                           std::string& errorMessage);

    /// Erases every occurrence of `piece`, also those that erasing forms. Does not return for an empty
    /// `piece`.
    static std::string DeleteSubStr(std::string text, std::string piece);
    /// Two lower-case hexadecimal digits a byte.
    static std::string String2HexString(const std::string& text);
    /// A random identifier from the kernel; empty on failure.
    static std::string GenerateUUID();
    /// At most 64 letters, digits, "-" and "_" (ASCII); an empty one is valid.
    static bool IsValidUDID(const std::string& id);
    /// Six pairs of hexadecimal digits with colons, but neither all zeros nor the broadcast address.
    static bool IsMacValid(const std::string& mac);
    /// At least one letter, digit or "_", and nothing else.
    static bool IsStringAndNumberOnly(const std::string& text);
    /// At least one digit, and nothing else.
    static bool IsNumberOnly(const std::string& text);
    /// An IPv4 address in decimal, its first number from 1 on, without leading zeros.
    static bool IsIpValid(const std::string& ip);

    static const std::string mVelodeskFilePath;
};

} // namespace Brevora

namespace Velodesk {
/// As Brevora::Utils::ExecutePopenAndReturn().
std::string RunCommand(const std::string& command);
} // namespace Velodesk
