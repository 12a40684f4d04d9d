#include "platform/Utils.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <systemd/sd-bus.h>

#include "platform/Log.h"

namespace {
constexpr char MODULE_TAG[] = "UTILS";

constexpr char BUS_NAME[] = "com.zelmora.velodesk";
constexpr char OBJECT_PATH[] = "/com/zelmora/velodesk";
constexpr char INTERFACE[] = "com.zelmora.velodesk";
constexpr char METHOD[] = "velodeskd";
constexpr std::chrono::microseconds TIMEOUT(5000000);
constexpr char TIMED_OUT[] = "Connection timed out";
constexpr char TIMED_OUT_TRANSLATED[] = "连接超时";

/// The time limit of one call to the daemon. It includes the connection to the bus, the call, and the query
/// of the sender's process id.
class Deadline
{
public:
    /// Returns the microseconds until the deadline. Returns 1 after it, because 0 would select the default
    /// time limit of sd-bus.
    uint64_t Left() const
    {
        const auto left = std::chrono::duration_cast<std::chrono::microseconds>(end - Clock::now());
        return static_cast<uint64_t>(std::max<int64_t>(left.count(), 1));
    }
    bool IsOver() const { return Clock::now() >= end; }

private:
    using Clock = std::chrono::steady_clock;
    const Clock::time_point end = Clock::now() + TIMEOUT;
};

/// Waits until `bus` is authenticated and has its name. sd_bus_call() would wait for that, too, but for up to
/// 90 s, whatever its time-out is. Returns 0, or a negative number on failure.
int WaitUntilReady(sd_bus* bus, const Deadline& deadline)
{
    while (sd_bus_is_ready(bus) <= 0) {
        if (deadline.IsOver()) {
            return -ETIMEDOUT;
        }
        int result = sd_bus_process(bus, nullptr);
        if (result == 0) {
            result = sd_bus_wait(bus, deadline.Left());
        }
        if (result < 0 && result != -EINTR) {
            return result;
        }
    }
    return 0;
}

/// Returns the id of the process that sent `reply`, or a negative number.
int SenderOf(sd_bus_message* reply)
{
    if (reply == nullptr) {
        return -1;
    }
    sd_bus_creds* creds = nullptr;
    int result = sd_bus_query_sender_creds(reply, SD_BUS_CREDS_PID, &creds);
    if (result < 0) {
        LOG_ERROR("sd_bus_query_sender_creds failed: %d, creds = %p", -result, static_cast<void*>(creds));
        return result;
    }
    pid_t sender = 0;
    result = sd_bus_creds_get_pid(creds, &sender);
    if (result < 0) {
        LOG_ERROR("sd_bus_creds_get_pid failed: %d, creds = %p", -result, static_cast<void*>(creds));
        sender = result;
    }
    sd_bus_creds_unref(creds);
    return sender;
}

/// Stores the text of `reply` in `result` if the daemon has sent it. Drops the reply of another process and
/// returns `callResult`. Returns a negative number if the reply is not a text.
int StoreReply(sd_bus_message* reply, int callResult, const std::string& command, std::string& result)
{
    const int sender = SenderOf(reply);
    if (sender != Brevora::g_velodeskdPid) {
        LOG_ERROR("Failed to msg reply id: %d != velodeskd pid %d", sender, Brevora::g_velodeskdPid);
        return callResult;
    }
    const char* text = nullptr;
    const int read = sd_bus_message_read(reply, "s", &text);
    if (read < 0) {
        LOG_ERROR("sd_bus_message_read failed.");
        return read;
    }
    if (text != nullptr) {
        result = text;
        LOG_DEBUG("sd_bus_message_read command = %s, r = %d, result = %s", command.c_str(), read,
                  result.c_str());
    }
    return read;
}

/// The objects of one call. Its destructor frees them; it frees the bus last, because the messages use it.
struct BusCall
{
    BusCall() = default;
    ~BusCall()
    {
        sd_bus_error_free(&error);
        sd_bus_message_unref(message);
        sd_bus_message_unref(reply);
        // Flushing has no time limit, so it could block for ever on a bus that does not answer.
        if (isAnswering) {
            sd_bus_flush_close_unref(bus);
        } else {
            sd_bus_close_unref(bus);
        }
    }
    BusCall(const BusCall&) = delete;
    BusCall& operator=(const BusCall&) = delete;

    sd_bus* bus = nullptr;
    sd_bus_message* message = nullptr;
    sd_bus_message* reply = nullptr;
    sd_bus_error error{nullptr, nullptr, 0};
    bool isAnswering = false;
};
} // namespace

namespace Brevora {

int g_velodeskdPid = 0;

const std::string Utils::mVelodeskFilePath = "/opt/apps/com.zelmora.velodesk/files/tandra/";

void Utils::SetDbusServerPid(int pid)
{
    g_velodeskdPid = pid;
}

int Utils::DBusProcessInit(sd_bus** bus, sd_bus_message** message, const std::string& command)
{
    int result = sd_bus_open_system(bus);
    if (result < 0) {
        LOG_ERROR("Failed to connect to system bus: %s", std::strerror(-result));
        return result;
    }
    result = sd_bus_message_new_method_call(*bus, message, BUS_NAME, OBJECT_PATH, INTERFACE, METHOD);
    if (result < 0) {
        LOG_ERROR("Failed to sd_bus_message_new_method_call r:%d", result);
        return result;
    }
    result = sd_bus_message_append(*message, "s", command.c_str());
    if (result < 0) {
        LOG_ERROR("Failed to sd_bus_message_append");
    }
    return result;
}

int Utils::DBusProcess(const std::string& command, std::string& result, std::string& errorMessage)
{
    result.clear();
    errorMessage.clear();
    const Deadline deadline;
    BusCall call;
    const int made = DBusProcessInit(&call.bus, &call.message, command);
    if (made < 0) {
        return made;
    }
    int called = WaitUntilReady(call.bus, deadline);
    if (called == -ETIMEDOUT) {
        sd_bus_error_set(&call.error, SD_BUS_ERROR_TIMEOUT, TIMED_OUT);
    } else if (called < 0) {
        sd_bus_error_set_errno(&call.error, called);
    } else {
        called = sd_bus_call(call.bus, call.message, deadline.Left(), &call.error, &call.reply);
    }
    call.isAnswering = called != -ETIMEDOUT;
    if (called < 0) {
        const char* reason = call.error.message == nullptr ? "" : call.error.message;
        LOG_ERROR("Failed to call method, reason: %s", reason);
        errorMessage = reason;
        return called;
    }
    sd_bus_set_method_call_timeout(call.bus, deadline.Left());
    return StoreReply(call.reply, called, command, result);
}

int Utils::ExecutePopenAndReturnByDbus(const std::string& command, std::string& result,
                                       std::string& errorMessage)
{
    const int outcome = DBusProcess(command, result, errorMessage);
    LOG_DEBUG("execute popoen result, ret:%d result:%s errorMessage:%s", outcome, result.c_str(),
              errorMessage.c_str());
    if (outcome < 0 && (errorMessage == TIMED_OUT || errorMessage == TIMED_OUT_TRANSLATED)) {
        LOG_WARNING("popoen error, please retry tandra, result:%s, errormessage:%s", result.c_str(),
                    errorMessage.c_str());
        errorMessage = TIMED_OUT;
    }
    return outcome;
}

} // namespace Brevora
