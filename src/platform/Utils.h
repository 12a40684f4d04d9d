#pragma once

#include <string>
#include <vector>

struct sd_bus;
struct sd_bus_message;

namespace Brevora {

/// The daemon's process id. Replies of other processes on the bus are dropped. 0 until SetDbusServerPid().
extern int g_velodeskdPid;

/// Runs shell commands, calls the daemon over D-Bus, and checks and converts texts. Any thread may call the
/// functions: their only state is g_velodeskdPid, which is written once at start. Texts are bytes in the
/// caller's encoding.
class Utils
{
public:
    Utils() = delete;

    /// Returns the parts of `text` before, between and after the delimiters. Parts can be empty, except the
    /// last one: a delimiter at the end of `text` adds no part. If `delimiter` is empty, returns `text`.
    static std::vector<std::string> Split(std::string text, std::string delimiter);

    /// Stores the daemon's process id.
    static void SetDbusServerPid(int pid);

    /// Runs a shell command and blocks until it ends. Returns its output without the last line feed and
    /// without blanks at both ends. Returns an empty text if the command cannot be run or has an exit code
    /// other than 0. Does not run a command that contains "./", and returns an empty text for it.
    static std::string ExecutePopenAndReturn(const std::string& command);

    /// Opens the system bus and creates the method call to the daemon. The caller frees both objects, also
    /// after a failure. Returns a negative number on failure.
    static int DBusProcessInit(sd_bus** bus, sd_bus_message** message, const std::string& command);
    /// Sends a command to the daemon and stores its reply in `result`. Blocks for up to 5000 ms. Returns a
    /// negative number on failure, and stores the error text of the bus in `errorMessage` if there is one. If
    /// another process replies, this is no failure, but `result` is empty.
    static int DBusProcess(const std::string& command, std::string& result, std::string& errorMessage);
    /// As DBusProcess(). After a time-out, `errorMessage` is "Connection timed out" in every locale.
    static int ExecutePopenAndReturnByDbus(const std::string& command, std::string& result,
                                           std::string& errorMessage);

    /// Returns `text` without `piece`. If a removal creates another occurrence of `piece`, that is removed,
    /// too. Does not return if `piece` is empty.
    static std::string DeleteSubStr(std::string text, std::string piece);
    /// Returns two lower-case hexadecimal digits for each byte.
    static std::string String2HexString(const std::string& text);
    /// Returns a random UUID from the kernel; empty on failure.
    static std::string GenerateUUID();
    /// Returns true for a text of 0 to 64 letters, digits, "-" and "_" (ASCII).
    static bool IsValidUDID(const std::string& id);
    /// Returns true for six pairs of hexadecimal digits with colons between them, except for
    /// 00:00:00:00:00:00 and FF:FF:FF:FF:FF:FF.
    static bool IsMacValid(const std::string& mac);
    /// Returns true for one or more letters, digits and "_" (ASCII).
    static bool IsStringAndNumberOnly(const std::string& text);
    /// Returns true for one or more digits (ASCII).
    static bool IsNumberOnly(const std::string& text);
    /// Returns true for an IPv4 address in decimal. Its numbers have no leading zeros, and the first is not
    /// 0.
    static bool IsIpValid(const std::string& ip);

    /// The folder of the installed engine, with a slash at the end.
    static const std::string mVelodeskFilePath;
};

} // namespace Brevora

namespace Velodesk {
/// Runs a shell command as Brevora::Utils::ExecutePopenAndReturn() does.
std::string RunCommand(const std::string& command);
} // namespace Velodesk
