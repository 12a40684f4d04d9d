// Stand-in for the privileged daemon. Owns the daemon's name on the bus, starts the assistant as the daemon
// does, and ends when it receives the exit request. It never runs the commands that it receives.
//
//   standin-daemon [--events FILE] [--misbehave HOW] [-- ASSISTANT [ARGUMENT...]]
//
// ASSISTANT is started with argv[0] "Velodesk" and, if there is no ARGUMENT, with this process's id. Without
// ASSISTANT, only the bus is served. Each line of FILE is an event: nanoseconds of the monotonic clock and a
// description. HOW: silent (never replies), wrong-type (replies with a number), other-process (a child
// process replies). Exit status: 0 after an exit request, 1 without one, 2 if the bus cannot be served.

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <spawn.h>
#include <string>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <systemd/sd-bus.h>
#include <systemd/sd-event.h>
#include <unistd.h>
#include <vector>

namespace {
constexpr char BUS_NAME[] = "com.zelmora.velodesk";
constexpr char OBJECT_PATH[] = "/com/zelmora/velodesk";
constexpr char EXIT_COMMAND[] = "velodeskd --exit";
/// How long the daemon runs after its reply: the caller then asks the bus for our process id, and rejects the
/// reply if we have ended.
constexpr uint64_t LINGER_US = 300000;
/// The time limit for the end of the assistant after the exit request.
constexpr uint64_t ASSISTANT_END_US = 20000000;

enum ExitStatus
{
    REQUESTED = 0,
    NOT_REQUESTED = 1,
    FAILED = 2
};
enum class Misbehaviour
{
    NONE,
    SILENT,
    WRONG_TYPE,
    OTHER_PROCESS
};

struct Daemon
{
    sd_event* loop = nullptr;
    sd_bus* bus = nullptr;
    FILE* events = stdout;
    Misbehaviour misbehaviour = Misbehaviour::NONE;
    bool exitRequested = false;
    bool lingered = false;
    pid_t assistant = 0;
};

void Note(const Daemon& daemon, const std::string& what)
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    std::fprintf(daemon.events, "%lld%09ld %s\n", static_cast<long long>(now.tv_sec), now.tv_nsec,
                 what.c_str());
    std::fflush(daemon.events);
}

void EndIfDone(const Daemon& daemon)
{
    if (daemon.assistant == 0 && (!daemon.exitRequested || daemon.lingered)) {
        sd_event_exit(daemon.loop, daemon.exitRequested ? REQUESTED : NOT_REQUESTED);
    }
}

int OnLingered(sd_event_source*, uint64_t, void* userdata)
{
    auto& daemon = *static_cast<Daemon*>(userdata);
    daemon.lingered = true;
    EndIfDone(daemon);
    return 0;
}

int OnOverdue(sd_event_source*, uint64_t, void* userdata)
{
    auto& daemon = *static_cast<Daemon*>(userdata);
    Note(daemon, "assistant overdue");
    return sd_event_exit(daemon.loop, FAILED);
}

int OnAssistantEnded(sd_event_source*, const siginfo_t* info, void* userdata)
{
    auto& daemon = *static_cast<Daemon*>(userdata);
    Note(daemon, std::string("assistant ended ") + (info->si_code == CLD_EXITED ? "exit " : "signal ") +
                     std::to_string(info->si_status));
    daemon.assistant = 0;
    EndIfDone(daemon);
    return 0;
}

int OnTerminate(sd_event_source*, const signalfd_siginfo*, void* userdata)
{
    const auto& daemon = *static_cast<Daemon*>(userdata);
    if (daemon.assistant != 0) {
        kill(daemon.assistant, SIGKILL);
    }
    return sd_event_exit(daemon.loop, daemon.exitRequested ? REQUESTED : NOT_REQUESTED);
}

int OnCommand(sd_bus_message* message, void* userdata, sd_bus_error*)
{
    auto& daemon = *static_cast<Daemon*>(userdata);
    const char* command = nullptr;
    const int read = sd_bus_message_read(message, "s", &command);
    if (read < 0) {
        return read;
    }
    if (std::strcmp(command, EXIT_COMMAND) != 0) {
        Note(daemon, "rejected");
        return sd_bus_reply_method_errorf(message, SD_BUS_ERROR_ACCESS_DENIED, "only %s is answered",
                                          EXIT_COMMAND);
    }
    Note(daemon, "exit requested");
    daemon.exitRequested = true;
    sd_event_add_time_relative(daemon.loop, nullptr, CLOCK_MONOTONIC, LINGER_US, 0, OnLingered, &daemon);
    sd_event_add_time_relative(daemon.loop, nullptr, CLOCK_MONOTONIC, ASSISTANT_END_US, 0, OnOverdue,
                               &daemon);
    if (daemon.misbehaviour == Misbehaviour::SILENT) {
        return 1;
    }
    const int replied = daemon.misbehaviour == Misbehaviour::WRONG_TYPE
                            ? sd_bus_reply_method_return(message, "i", 1)
                            : sd_bus_reply_method_return(message, "s", "");
    sd_bus_flush(daemon.bus);
    return replied;
}

// With older versions of systemd, these macros leave fields uninitialised.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wmissing-field-initializers"
const sd_bus_vtable VTABLE[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD("velodeskd", "s", "s", OnCommand, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_VTABLE_END,
};
const sd_bus_vtable WRONG_TYPE_VTABLE[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD("velodeskd", "s", "i", OnCommand, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_VTABLE_END,
};
#pragma GCC diagnostic pop

bool Serve(Daemon& daemon)
{
    int result = sd_bus_open_system(&daemon.bus);
    if (result >= 0) {
        result = sd_bus_add_object_vtable(
            daemon.bus, nullptr, OBJECT_PATH, BUS_NAME,
            daemon.misbehaviour == Misbehaviour::WRONG_TYPE ? WRONG_TYPE_VTABLE : VTABLE, &daemon);
    }
    if (result >= 0) {
        result = sd_bus_request_name(daemon.bus, BUS_NAME, 0);
    }
    if (result >= 0) {
        result = sd_bus_attach_event(daemon.bus, daemon.loop, SD_EVENT_PRIORITY_NORMAL);
    }
    if (result < 0) {
        std::fprintf(stderr, "standin-daemon: the bus cannot be served: %s\n", std::strerror(-result));
    }
    return result >= 0;
}

/// Starts `command` with the argv[0] that the assistant requires. Returns its process id, or 0 on failure.
pid_t StartAssistant(const std::vector<std::string>& command, pid_t daemonPid)
{
    std::vector<std::string> arguments{"Velodesk"};
    arguments.insert(arguments.end(), command.begin() + 1, command.end());
    if (command.size() == 1) {
        arguments.push_back(std::to_string(daemonPid));
    }
    std::vector<char*> argv;
    argv.reserve(arguments.size() + 1);
    for (auto& argument : arguments) {
        argv.push_back(argument.data());
    }
    argv.push_back(nullptr);

    // The assistant must not inherit the signals that are blocked for our event loop.
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    sigset_t none;
    sigemptyset(&none);
    posix_spawnattr_setsigmask(&attributes, &none);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK);
    pid_t pid = 0;
    const int failed = posix_spawn(&pid, command.front().c_str(), nullptr, &attributes, argv.data(), environ);
    posix_spawnattr_destroy(&attributes);
    if (failed != 0) {
        std::fprintf(stderr, "standin-daemon: %s: %s\n", command.front().c_str(), std::strerror(failed));
        return 0;
    }
    return pid;
}

bool TakeOption(Daemon& daemon, const std::string& name, const std::string& value)
{
    if (name == "--events") {
        daemon.events = std::fopen(value.c_str(), "ae");
        return daemon.events != nullptr;
    }
    if (name != "--misbehave") {
        return false;
    }
    if (value == "silent") {
        daemon.misbehaviour = Misbehaviour::SILENT;
    } else if (value == "wrong-type") {
        daemon.misbehaviour = Misbehaviour::WRONG_TYPE;
    } else if (value == "other-process") {
        daemon.misbehaviour = Misbehaviour::OTHER_PROCESS;
    } else {
        return false;
    }
    return true;
}

/// Forks. Returns in the child process, which serves the bus. The parent, whose process id the assistant
/// gets, only waits for the end of the child.
void LeaveServingToChild()
{
    const pid_t server = fork();
    if (server < 0) {
        std::perror("standin-daemon: fork");
        std::exit(FAILED);
    }
    if (server == 0) {
        prctl(PR_SET_PDEATHSIG, SIGTERM);
        return;
    }
    int status = 0;
    while (waitpid(server, &status, 0) == -1 && errno == EINTR) {
    }
    std::exit(WIFEXITED(status) ? WEXITSTATUS(status) : FAILED);
}
} // namespace

int main(int argc, char** argv)
{
    Daemon daemon;
    std::vector<std::string> command;
    for (int i = 1; i < argc; ++i) {
        const std::string argument = argv[i];
        if (argument == "--") {
            command.assign(argv + i + 1, argv + argc);
            break;
        }
        if (i + 1 == argc || !TakeOption(daemon, argument, argv[++i])) {
            std::fprintf(
                stderr,
                "usage: standin-daemon [--events FILE] [--misbehave HOW] [-- ASSISTANT [ARGUMENT...]]\n");
            return FAILED;
        }
    }

    const pid_t daemonPid = getpid();
    if (daemon.misbehaviour == Misbehaviour::OTHER_PROCESS) {
        LeaveServingToChild();
    }

    sigset_t blocked;
    sigemptyset(&blocked);
    sigaddset(&blocked, SIGCHLD);
    sigaddset(&blocked, SIGTERM);
    sigprocmask(SIG_BLOCK, &blocked, nullptr);
    if (sd_event_default(&daemon.loop) < 0 || !Serve(daemon)) {
        return FAILED;
    }
    sd_event_add_signal(daemon.loop, nullptr, SIGTERM, OnTerminate, &daemon);
    Note(daemon, "serving " + std::to_string(daemonPid));
    if (!command.empty()) {
        daemon.assistant = StartAssistant(command, daemonPid);
        if (daemon.assistant == 0) {
            return FAILED;
        }
        Note(daemon, "assistant started " + std::to_string(daemon.assistant));
        sd_event_add_child(daemon.loop, nullptr, daemon.assistant, WEXITED, OnAssistantEnded, &daemon);
    }
    const int status = sd_event_loop(daemon.loop);
    sd_bus_flush_close_unref(daemon.bus);
    sd_event_unref(daemon.loop);
    return status < 0 ? FAILED : status;
}
