// Input: the bytes that the bus sends as the daemon's reply. The client gets a text only from a reply that
// contains a text, and an empty text after a failure.

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

/// Returns a D-Bus message in little-endian order.
std::string Message(uint8_t type, uint32_t replySerial, const std::string& signature, const std::string& body)
{
    std::string fields;
    fields += std::string("\5\1u\0", 4);
    Number(fields, replySerial);
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
    Number(bytes, replySerial);
    Number(bytes, static_cast<uint32_t>(fields.size()));
    bytes += fields;
    Align(bytes, 8);
    return bytes + body;
}

/// A bus for one client: authenticates it, answers Hello, and replies to its call with given bytes.
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

    void Serve(const std::string& reply) const
    {
        const int client = accept(listener, nullptr, nullptr);
        ReadUntil(client, "BEGIN\r\n");
        Write(client, "DATA\r\nOK 0123456789abcdef0123456789abcdef\r\nAGREE_UNIX_FD\r\n");
        ReadUntil(client, "Hello");
        Write(client, Message(RETURN_TYPE, HELLO_SERIAL, "s", Text(":1.1")));
        ReadUntil(client, "velodeskd");
        Write(client, reply);
        // If the bytes are no reply, the end of the connection ends the call.
        close(client);
    }

private:
    static void ReadUntil(int client, const char* expected)
    {
        std::string all;
        std::array<char, 4096> chunk{};
        while (all.find(expected) == std::string::npos) {
            const ssize_t count = read(client, chunk.data(), chunk.size());
            if (count <= 0) {
                return;
            }
            all.append(chunk.data(), static_cast<size_t>(count));
        }
    }
    static void Write(int client, const std::string& bytes)
    {
        (void)!send(client, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    }

    std::string path;
    int listener = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
};
} // namespace

// This bus does not provide credentials, so these functions return the daemon's process id as the sender's.
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
    std::string reply;
    std::string text;
    if (kind == 0) {
        reply = input.Rest();
    } else if (kind == 1) {
        text = input.Rest();
        reply = Message(RETURN_TYPE, CALL_SERIAL, "s", Text(text));
    } else {
        const std::string signature = input.Take(input.Byte() % 8);
        reply = Message(kind == 2 ? RETURN_TYPE : ERROR_TYPE, CALL_SERIAL, signature, input.Rest());
    }
    std::thread server([&reply] { bus.Serve(reply); });
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
