#include "platform/InheritedState.h"

#include <csignal>
#include <cstdlib>
#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

namespace {
void OpenStandardDescriptors()
{
    int file = 0;
    do {
        file = open("/dev/null", O_RDWR);
    } while (file >= 0 && file <= STDERR_FILENO);
    close(file);
}

void ResetSignals()
{
    for (int number = 1; number < NSIG; ++number) {
        struct sigaction action
        {};
        if (sigaction(number, nullptr, &action) == 0 && action.sa_handler == SIG_IGN) {
            std::signal(number, SIG_DFL);
        }
    }
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
}
} // namespace

void Brevora::InheritedState::Reset()
{
    OpenStandardDescriptors();
    KeepDescriptorsFromChildren();
    ResetSignals();
}

void Brevora::InheritedState::KeepDescriptorsFromChildren()
{
    DIR* descriptors = opendir("/proc/self/fd");
    if (descriptors == nullptr) {
        return;
    }
    while (const dirent* entry = readdir(descriptors)) {
        // For the entries "." and "..", strtol() returns 0, which is skipped.
        const auto file = static_cast<int>(std::strtol(entry->d_name, nullptr, 10));
        if (file > STDERR_FILENO) {
            fcntl(file, F_SETFD, FD_CLOEXEC);
        }
    }
    closedir(descriptors);
}
