// Any bytes from the bus as the daemon's answer: a text comes out only of an answer that holds one, and a
// failure leaves none.

#include <array>
#include <cstring>
#include <filesystem>
#include <sys/socket.h>
#include <sys/un.h>
#include <systemd/sd-bus.h>
#include <thread>
#include <unistd.h>

#include "fuzz/FuzzSupport.h"
#include "platform/Utils.h"

namespace {
constexpr int SENDER = 4711;
constexpr uint8_t RETURN_TYPE = 2;
constexpr uint8_t ERROR_TYPE = 3;
constexpr uint32_t HELLO_SERIAL = 1;
constexpr uint32_t CALL_SERIAL = 2;

void Align(std::string& bytes, size_t to)
{
    while (bytes.size() % to != 0) {
        bytes += '\0';
    }
}

void Number(std::string& bytes, uint32_t number)
{
    Align(bytes, sizeof number);
    for (unsigned int shift = 0; shift < 32; shift += 8) {
        bytes += static_cast<char>(number >> shift & 0xFFU);
    }
}

std::string Text(const std::string& text)
{
    std::string bytes;
    Number(bytes, static_cast<uint32_t>(text.size()));
    return bytes + text + '\0';
}

/// A message of the bus in little-endian order.
std::string Message(uint8_t type, uint32_t repliesTo, const std::string& signature, const std::string& body)
{
    std::string fields;
    fields += std::string("\5\1u\0", 4);
    Number(fields, repliesTo);
    if (type == ERROR_TYPE) {
        Align(fields, 8);
        fields += std::string("\4\1s\0", 4) + Text("org.freedesktop.DBus.Error.Failed");
    }
    if (!signature.empty()) {
        Align(fields, 8);
        fields += std::string("\10\1g\0", 4) + static_cast<char>(signature.size()) + signature + '\0';
    }
    std::string bytes{'l', static_cast<char>(type), '\1', '\1'};
    Number(bytes, static_cast<uint32_t>(body.size()));
    Number(bytes, repliesTo);
    Number(bytes, static_cast<uint32_t>(fields.size()));
    bytes += fields;
    Align(bytes, 8);
    return bytes + body;
}

/// A bus for one caller: lets it in, answers its greeting, and gives `answer` for its call.
class Bus
{
public:
    Bus() : path(std::filesystem::temp_directory_path() / ("velodesk-fuzz-" + std::to_string(getpid())))
    {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
        unlink(path.c_str());
        REQUIRE(bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0);
        REQUIRE(listen(listener, 1) == 0);
        setenv("DBUS_SYSTEM_BUS_ADDRESS", ("unix:path=" + path).c_str(), 1);
    }

    void Serve(const std::string& answer) const
    {
        const int caller = accept(listener, nullptr, nullptr);
        ReadUntil(caller, "BEGIN\r\n");
        Write(caller, "DATA\r\nOK 0123456789abcdef0123456789abcdef\r\nAGREE_UNIX_FD\r\n");
        ReadUntil(caller, "Hello");
        Write(caller, Message(RETURN_TYPE, HELLO_SERIAL, "s", Text(":1.1")));
        ReadUntil(caller, "velodeskd");
        Write(caller, answer);
        // The end of the connection ends a call that this was no answer to.
        close(caller);
    }

private:
    static void ReadUntil(int caller, const char* wanted)
    {
        std::string all;
        std::array<char, 4096> piece{};
        while (all.find(wanted) == std::string::npos) {
            const ssize_t count = read(caller, piece.data(), piece.size());
            if (count <= 0) {
                return;
            }
            all.append(piece.data(), static_cast<size_t>(count));
        }
    }
    static void Write(int caller, const std::string& bytes)
    {
        (void)!send(caller, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    }

    std::string path;
    int listener = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
};
} // namespace

// This bus can not be asked for a sender: it is believed to be the daemon.
extern "C" int __wrap_sd_bus_query_sender_creds(sd_bus_message*, uint64_t, sd_bus_creds** creds)
{
    *creds = nullptr;
    return 0;
}

extern "C" int __wrap_sd_bus_creds_get_pid(sd_bus_creds*, pid_t* pid)
{
    *pid = SENDER;
    return 0;
}

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static const Bus bus;
    Brevora::Utils::SetDbusServerPid(SENDER);
    Input input(data, size);
    const uint8_t kind = input.Byte() % 4;
    std::string answer;
    std::string text;
    if (kind == 0) {
        answer = input.Rest();
    } else if (kind == 1) {
        text = input.Rest();
        answer = Message(RETURN_TYPE, CALL_SERIAL, "s", Text(text));
    } else {
        const std::string signature = input.Take(input.Byte() % 8);
        answer = Message(kind == 2 ? RETURN_TYPE : ERROR_TYPE, CALL_SERIAL, signature, input.Rest());
    }
    std::thread server([&answer] { bus.Serve(answer); });
    std::string result = "before";
    std::string error = "before";
    const int outcome = Brevora::Utils::ExecutePopenAndReturnByDbus("velodeskd --exit", result, error);
    server.join();
    REQUIRE(outcome >= 0 || result.empty());
    REQUIRE(outcome < 0 || error.empty());
    REQUIRE(kind != 3 || outcome < 0);
    REQUIRE(kind != 1 || outcome < 0 || result == text);
    return 0;
}
