#include "Engine.h"

#include <QCoreApplication>
#include <QFile>
#include <QSocketNotifier>
#include <QTimer>
#include <csignal>
#include <cstdio>
#include <ctime>
#include <unistd.h>

#include "config/Constant.h"

namespace {
constexpr char DEFAULT_SCRIPT[] = "report init\nwait 500\nreport run\n";
constexpr int CONNECT_TIMEOUT_MS = 3000;
constexpr unsigned int LINGER_S = 60;
/// How long to run after the last report. ConnClient does not flush, so the event loop sends the report.
constexpr int LAST_REPORT_MS = 50;

QString MonotonicNanoseconds()
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return QStringLiteral("%1%2").arg(now.tv_sec).arg(now.tv_nsec, 9, 10, QLatin1Char('0'));
}
} // namespace

Engine::Engine(const QString& homeDir, const QString& daemonPid) : home(homeDir)
{
    QFile file(home + QStringLiteral("/standin-engine.script"));
    const QByteArray text = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray(DEFAULT_SCRIPT);
    script = QString::fromUtf8(text).split(QLatin1Char('\n'), QString::SkipEmptyParts);
    Note(QStringLiteral("started %1 for %2").arg(QCoreApplication::applicationPid()).arg(daemonPid));
    connect(&watcher, &QFileSystemWatcher::directoryChanged, this, &Engine::CheckForAwaitedFile);
}

void Engine::Start()
{
    NextStep();
}

void Engine::Note(const QString& what) const
{
    QFile file(home + QStringLiteral("/standin-engine.events"));
    if (file.open(QIODevice::Append)) {
        file.write((MonotonicNanoseconds() + QLatin1Char(' ') + what + QLatin1Char('\n')).toUtf8());
    }
}

void Engine::Terminate()
{
    Note(QStringLiteral("terminate"));
    if (ignoresTerminate) {
        return;
    }
    if (client != nullptr) {
        client->AppStop();
    }
    QTimer::singleShot(LAST_REPORT_MS, this, [this] {
        phone.disconnect();
        phone.kill();
        phone.waitForFinished();
        Note(QStringLiteral("ended"));
        QCoreApplication::quit();
    });
}

void Engine::NextStep()
{
    while (!script.isEmpty()) {
        const QString line = script.takeFirst();
        if (!Do(line.section(QLatin1Char(' '), 0, 0), line.section(QLatin1Char(' '), 1))) {
            return;
        }
    }
}

void Engine::CheckForAwaitedFile()
{
    if (!awaited.isEmpty() && QFile::exists(awaited)) {
        awaited.clear();
        watcher.removePath(home);
        NextStep();
    }
}

bool Engine::Do(const QString& verb, const QString& rest)
{
    if (verb == QLatin1String("wait")) {
        QTimer::singleShot(rest.toInt(), this, &Engine::NextStep);
        return false;
    }
    if (verb == QLatin1String("await")) {
        awaited = home + QLatin1Char('/') + rest;
        watcher.addPath(home);
        QTimer::singleShot(0, this, &Engine::CheckForAwaitedFile);
        return false;
    }
    if (verb == QLatin1String("report")) {
        Report(rest);
    } else if (verb == QLatin1String("send")) {
        SendRaw(rest.toUtf8());
    } else if (verb == QLatin1String("flood")) {
        SendRaw(rest.section(QLatin1Char(' '), 1)
                    .toUtf8()
                    .repeated(rest.section(QLatin1Char(' '), 0, 0).toInt()));
    } else if (verb == QLatin1String("bulk")) {
        SendRaw(QByteArray(rest.toInt(), 'x'));
    } else if (verb == QLatin1String("connections")) {
        MakeConnections(rest.toInt());
    } else if (verb == QLatin1String("print")) {
        Print(rest.toInt());
    } else if (verb == QLatin1String("linger")) {
        Linger();
    } else if (verb == QLatin1String("repeat")) {
        const QString text = rest.section(QLatin1Char(' '), 0, -2);
        auto* timer = new QTimer(this);
        connect(timer, &QTimer::timeout, this, [this, text] { SendRaw(text.toUtf8()); });
        timer->start(rest.section(QLatin1Char(' '), -1).toInt());
    } else if (verb == QLatin1String("drop")) {
        if (client == nullptr) {
            qFatal("standin-engine: nothing to drop before the first report");
        }
        client->DisConnect();
    } else if (verb == QLatin1String("await-end-of-input")) {
        // No process writes to standard input, so it becomes readable only at its end.
        auto* input = new QSocketNotifier(STDIN_FILENO, QSocketNotifier::Read, this);
        connect(input, &QSocketNotifier::activated, this, [this, input] {
            input->setEnabled(false);
            Note(QStringLiteral("end of input"));
            Terminate();
        });
    } else if (verb == QLatin1String("show")) {
        Show();
    } else if (verb == QLatin1String("ignore-terminate")) {
        ignoresTerminate = true;
    } else if (verb == QLatin1String("exit")) {
        Note(QStringLiteral("ended"));
        std::exit(rest.toInt());
    } else if (verb == QLatin1String("crash")) {
        Note(QStringLiteral("crashing"));
        std::raise(SIGKILL);
    } else {
        qFatal("standin-engine: no such step: %s", qUtf8Printable(verb));
    }
    return true;
}

void Engine::Report(const QString& status)
{
    if (client == nullptr) {
        client = std::make_unique<ConnClient>(GetConstant(Velodesk::ENGINE_IPC_NAME));
        client->ConnToServer();
    }
    Note(QStringLiteral("report ") + status);
    if (status == StatusText::INIT) {
        client->AppInit();
    } else if (status == StatusText::RUN) {
        client->AppRun();
    } else {
        client->AppStop();
    }
}

void Engine::SendRaw(const QByteArray& bytes)
{
    Connect(rawSocket);
    rawSocket.write(bytes);
    while (rawSocket.bytesToWrite() > 0 && rawSocket.waitForBytesWritten(CONNECT_TIMEOUT_MS)) {
    }
}

void Engine::Connect(QLocalSocket& socket) const
{
    if (socket.state() != QLocalSocket::ConnectedState) {
        socket.connectToServer(QString::fromStdString(GetConstant(Velodesk::ENGINE_IPC_NAME)));
        socket.waitForConnected(CONNECT_TIMEOUT_MS);
    }
}

void Engine::MakeConnections(int count) const
{
    for (int i = 0; i < count; ++i) {
        QLocalSocket socket;
        Connect(socket);
    }
    Note(QStringLiteral("connections made"));
}

void Engine::Print(int count) const
{
    const std::string text(static_cast<std::size_t>(count), 'x');
    std::fputs(text.c_str(), stdout);
    std::fputs(text.c_str(), stderr);
    Note(QStringLiteral("printed"));
}

void Engine::Linger() const
{
    const pid_t child = fork();
    if (child != 0) {
        Note(QStringLiteral("left behind %1").arg(child));
        return;
    }
    // The child must not run Qt code, because it shares the connections of its parent.
    std::signal(SIGTERM, SIG_IGN);
    sleep(LINGER_S);
    _exit(0);
}

void Engine::Show()
{
    connect(&phone, QOverload<int, QProcess::ExitStatus>::of(&QProcess::finished), this, [this] {
        Note(QStringLiteral("window closed"));
        Terminate();
    });
    phone.setProcessChannelMode(QProcess::ForwardedChannels);
    phone.start(QCoreApplication::applicationDirPath() + QStringLiteral("/standin-phone"), QStringList());
}

#include "moc_Engine.cpp"
