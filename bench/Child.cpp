#include "Child.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {
std::vector<char*> Pointers(const std::vector<std::string>& texts)
{
    std::vector<char*> pointers;
    pointers.reserve(texts.size() + 1);
    for (const std::string& text : texts) {
        pointers.push_back(const_cast<char*>(text.c_str()));
    }
    pointers.push_back(nullptr);
    return pointers;
}

double Milliseconds(const timeval& time)
{
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_usec) / 1e3;
}
} // namespace

Child::Child(const std::string& program, const std::vector<std::string>& arguments,
             const std::vector<std::string>& environment)
{
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_adddup2(&actions, STDOUT_FILENO, STDERR_FILENO);
    if (posix_spawnp(&pid, program.c_str(), &actions, nullptr, Pointers(arguments).data(),
                     environment.empty() ? environ : Pointers(environment).data()) != 0) {
        pid = 0;
    }
    posix_spawn_file_actions_destroy(&actions);
}

Child::~Child()
{
    Send(SIGKILL);
    Wait();
}

void Child::Send(int signal) const
{
    if (pid != 0) {
        kill(pid, signal);
    }
}

int Child::Wait()
{
    if (pid == 0) {
        return -1;
    }
    int status = 0;
    rusage usage{};
    pid_t ended = 0;
    do {
        ended = wait4(pid, &status, 0, &usage);
    } while (ended < 0 && errno == EINTR);
    pid = 0;
    cpuMs = Milliseconds(usage.ru_utime) + Milliseconds(usage.ru_stime);
    return ended > 0 && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}
