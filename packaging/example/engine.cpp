// A cast engine in its smallest form: it reports its status, and ends on request or with the assistant.
//   c++ -std=c++17 -fPIC engine.cpp -o Tandra $(pkg-config --cflags --libs velodesk-statuschannel)
#include <QCoreApplication>
#include <QSocketNotifier>
#include <QTimer>
#include <csignal>
#include <platform/Logger.h>
#include <statuschannel/ConnClient.h>
#include <sys/signalfd.h>
#include <unistd.h>

int main(int argc, char** argv)
{
    // The assistant asks for the end by SIGTERM. The event loop handles it, so that a report can still be
    // sent.
    sigset_t requests;
    sigemptyset(&requests);
    sigaddset(&requests, SIGTERM);
    sigprocmask(SIG_BLOCK, &requests, nullptr);

    QCoreApplication engine(argc, argv);
    if (qEnvironmentVariableIsSet("ENGINE_LOG")) {
        // Without this call the library writes no log.
        Singleton<Brevora::Logger>::GetInstance()->Init(qgetenv("ENGINE_LOG").toStdString());
    }

    ConnClient assistant(qgetenv("HOME").toStdString() + "/Velodesk/TandraIpc");
    if (assistant.ConnToServer() != 0) {
        return 1;
    }
    assistant.AppInit();
    // "run" waits until the assistant has read "init": it drops two messages that arrive in one read. If the
    // run before this one crashed while casting, it would then take the repeated "run" for no change.
    QTimer::singleShot(500, &assistant, [&assistant] { assistant.AppRun(); });

    QSocketNotifier request(signalfd(-1, &requests, SFD_CLOEXEC), QSocketNotifier::Read);
    QObject::connect(&request, &QSocketNotifier::activated, &assistant, [&] {
        request.setEnabled(false);
        assistant.AppStop();
        // The event loop sends the report.
        QTimer::singleShot(50, &engine, &QCoreApplication::quit);
    });
    // Standard input is a pipe to which nothing is written: it becomes readable when the assistant has ended.
    QSocketNotifier end(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(&end, &QSocketNotifier::activated, &engine, &QCoreApplication::quit);
    return QCoreApplication::exec();
}
