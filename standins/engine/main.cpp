#include <QCoreApplication>
#include <QSocketNotifier>
#include <csignal>
#include <sys/signalfd.h>
#include <unistd.h>

#include "Engine.h"

namespace {
/// Returns a descriptor that becomes readable at each termination request.
int TerminationRequests()
{
    sigset_t requests;
    sigemptyset(&requests);
    sigaddset(&requests, SIGTERM);
    sigprocmask(SIG_BLOCK, &requests, nullptr);
    return signalfd(-1, &requests, SFD_CLOEXEC);
}
} // namespace

int main(int argc, char** argv)
{
    const int requests = TerminationRequests();
    QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() != 2) {
        qCritical("usage: standin-engine DAEMON-PID");
        return 2;
    }
    Engine engine(qEnvironmentVariable("HOME"), arguments.at(1));
    QSocketNotifier notifier(requests, QSocketNotifier::Read);
    QObject::connect(&notifier, &QSocketNotifier::activated, &engine, [requests, &engine] {
        signalfd_siginfo info{};
        if (read(requests, &info, sizeof info) == static_cast<ssize_t>(sizeof info)) {
            engine.Terminate();
        }
    });
    QTimer::singleShot(0, &engine, &Engine::Start);
    return QCoreApplication::exec();
}
