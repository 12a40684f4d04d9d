// A cast engine in its smallest form: it reports to the assistant, and ends when it is asked to.
//   c++ -std=c++17 -fPIC engine.cpp -o Tandra $(pkg-config --cflags --libs velodesk-statuschannel)
#include <QCoreApplication>
#include <QSocketNotifier>
#include <QTimer>
#include <csignal>
#include <platform/Logger.h>
#include <statuschannel/ConnClient.h>
#include <sys/signalfd.h>

int main(int argc, char** argv)
{
    // The assistant asks for the end by SIGTERM. It is taken by the event loop, where a report can still be
    // sent.
    sigset_t requests;
    sigemptyset(&requests);
    sigaddset(&requests, SIGTERM);
    sigprocmask(SIG_BLOCK, &requests, nullptr);

    QCoreApplication engine(argc, argv);
    if (qEnvironmentVariableIsSet("ENGINE_LOG")) {
        // Until then the log is silent.
        Singleton<Brevora::Logger>::GetInstance()->Init(qgetenv("ENGINE_LOG").toStdString());
    }

    ConnClient assistant(qgetenv("HOME").toStdString() + "/Velodesk/TandraIpc");
    if (assistant.ConnToServer() != 0) {
        return 1;
    }
    assistant.AppInit();
    // A real engine says so once a phone is casting. The client repeats it every second by itself.
    QTimer::singleShot(500, &assistant, [&assistant] { assistant.AppRun(); });

    QSocketNotifier request(signalfd(-1, &requests, SFD_CLOEXEC), QSocketNotifier::Read);
    QObject::connect(&request, &QSocketNotifier::activated, &assistant, [&] {
        request.setEnabled(false);
        assistant.AppStop();
        // The report leaves with the event loop.
        QTimer::singleShot(50, &engine, &QCoreApplication::quit);
    });
    return QCoreApplication::exec();
}
