// Replaces the cast engine, and ends immediately when it receives SIGTERM.

#include <csignal>

int main()
{
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGTERM);
    sigprocmask(SIG_BLOCK, &signals, nullptr);
    int received = 0;
    return sigwait(&signals, &received);
}
