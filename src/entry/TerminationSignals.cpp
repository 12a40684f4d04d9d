#include "entry/TerminationSignals.h"

#include <QCoreApplication>
#include <QSocketNotifier>
#include <cerrno>
#include <csignal>
#include <sys/eventfd.h>

namespace {
constexpr int SIGNALS[] = {SIGTERM, SIGINT, SIGHUP};

volatile std::sig_atomic_t haveArrived = 0;
int wakeUp = -1;

void SetHandler(void (*handler)(int))
{
    struct sigaction action
    {};
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART;
    for (const int number : SIGNALS) {
        sigaction(number, &action, nullptr);
    }
}

/// The signal handler; calls only async-signal-safe functions (signal-safety(7)).
void OnSignal(int)
{
    const int before = errno;
    haveArrived = 1;
    SetHandler(SIG_DFL);
    eventfd_write(wakeUp, 1);
    errno = before;
}
} // namespace

void TerminationSignals::QuitEventLoop()
{
    wakeUp = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    // Nothing reads the event, so the notifier also ends event loops that start later.
    auto* notifier = new QSocketNotifier(wakeUp, QSocketNotifier::Read, QCoreApplication::instance());
    QObject::connect(notifier, &QSocketNotifier::activated, &QCoreApplication::quit);
    SetHandler(&OnSignal);
}

bool TerminationSignals::HaveArrived()
{
    return haveArrived != 0;
}
