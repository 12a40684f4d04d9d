#include <QLocalSocket>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <fcntl.h>
#include <memory>
#include <unistd.h>

#include "supervision/BaseApp.h"
#include "support/CapturedLog.h"

namespace {
const QString VELODESK = QStringLiteral("VELODESK");
const QString INFO = QStringLiteral("INFO");

/// A supervised shell whose protected members are public.
class ShellApp : public BaseApp
{
public:
    ShellApp(const std::string& socket, const QString& script) : BaseApp(socket)
    {
        program = QStringLiteral("/bin/sh");
        arguments = QStringList{QStringLiteral("-c"), script};
    }

    using BaseApp::arguments;
    using BaseApp::count;
    using BaseApp::processVector;
    using BaseApp::program;
};

struct SignalSpies
{
    explicit SignalSpies(BaseApp& app)
        : error(&app, &BaseApp::AppError),
          started(&app, &BaseApp::AppStarted),
          finished(&app, &BaseApp::AppFinished)
    {}

    QSignalSpy error;
    QSignalSpy started;
    QSignalSpy finished;
};

const QString SLEEP = QStringLiteral("exec sleep 60");
/// Returns a script that runs `onRequest` at SIGTERM and does not end. It writes "up" to `file` when it is
/// ready, because the program does not read its output.
QString IgnoreSigterm(const QString& file, const QString& onRequest = QString())
{
    return QStringLiteral("trap '%2' TERM; echo up >%1; while :; do sleep 0.05; done").arg(file, onRequest);
}

/// Returns the content of the file, or an empty array if it does not exist.
QByteArray TextOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}
} // namespace

class TestBaseApp : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void listensFromConstructionOn();
    void reportsBecomeSignals();
    void processStartsEvenIfTheServerCannotListen();
    void stopWithoutAStartOnlyLogs();
    void endOfTheChildGivesItsExitCode();
    void crashGivesErrorThenFinished();
    void missingProgramGivesErrorAndNextStartRemovesItsProcess();
    void overlappingProcessesCountAsOneRun();
    void startDestroysAProcessThatIsStillStarting();
    void finishedIsEmittedIfCountIsAlreadyZero();
    void stopWithoutWaitingOnlyTerminates();
    void stopWithWaitingKillsProcessThatIgnoresSigterm();
    void stoppedProcessReportsACrash();
    void childInheritsTheEnvironment();
    void childInheritsThreeDescriptorsAndWritesToTheNullDevice();
    void nestedStopDoesNotLogEndedProcessesAgain();
    void statusIsKeptAfterTheProcessEnds();

private:
    QString Output() const { return directory->filePath(QStringLiteral("output")); }
    std::string Socket() const { return directory->filePath(QStringLiteral("ipc")).toStdString(); }
    QString Line(const char* format, const QString& last = QString()) const
    {
        const QString line = QString::fromLatin1(format).arg(QString::fromStdString(Socket()));
        return last.isEmpty() ? line : line.arg(last);
    }

    std::unique_ptr<CapturedLog> log;
    std::unique_ptr<QTemporaryDir> directory;
};

void TestBaseApp::init()
{
    log = std::make_unique<CapturedLog>();
    directory = std::make_unique<QTemporaryDir>();
}

void TestBaseApp::cleanup()
{
    directory.reset();
    log.reset();
}

void TestBaseApp::listensFromConstructionOn()
{
    BaseApp app(Socket());
    QLocalSocket client;
    client.connectToServer(QString::fromStdString(Socket()));
    QVERIFY(client.waitForConnected());
}

void TestBaseApp::reportsBecomeSignals()
{
    BaseApp app(Socket());
    QSignalSpy inited(&app, &BaseApp::AppEventInited);
    QSignalSpy running(&app, &BaseApp::AppEventRunning);
    QSignalSpy stopped(&app, &BaseApp::AppEventStopped);
    QLocalSocket client;
    client.connectToServer(QString::fromStdString(Socket()));
    client.write(R"({"status":"init"})");
    QVERIFY(inited.wait());
    client.write(R"({"status":"run"})");
    QVERIFY(running.wait());
    client.write(R"({"status":"stop"})");
    QVERIFY(stopped.wait());
    QVERIFY(log->Contains(INFO, VELODESK, Line("app[%1] event inited")));
    QVERIFY(log->Contains(INFO, VELODESK, Line("app[%1] event running")));
    QVERIFY(log->Contains(INFO, VELODESK, Line("app[%1] event stopped")));
    QCOMPARE(log->Lines().last().file, QStringLiteral("BaseApp.h"));
}

void TestBaseApp::processStartsEvenIfTheServerCannotListen()
{
    ShellApp app(directory->filePath(QStringLiteral("none/ipc")).toStdString(), QStringLiteral("exit 0"));
    SignalSpies spies(app);
    app.Start();
    QVERIFY(spies.finished.wait());
}

void TestBaseApp::stopWithoutAStartOnlyLogs()
{
    BaseApp app(Socket());
    app.Stop(true);
    COMPARE_LISTS(log->Messages(), QStringList({QStringLiteral("processVector size is 0"),
                                                QStringLiteral("delete 0 invalid process")}));
}

void TestBaseApp::endOfTheChildGivesItsExitCode()
{
    ShellApp app(Socket(), QStringLiteral("exit 7"));
    SignalSpies spies(app);
    app.Start();
    QVERIFY(spies.finished.wait());
    QCOMPARE(spies.started.count(), 1);
    QCOMPARE(spies.finished.first().first().toInt(), 7);
    QCOMPARE(spies.error.count(), 0);
    QVERIFY(log->Contains(INFO, VELODESK, Line("app[%1] started")));
    QVERIFY(log->Contains(INFO, VELODESK, Line("app[%1] finished: %2", QStringLiteral("7"))));
    QVERIFY(log->Contains(INFO, VELODESK, QStringLiteral("count is 1")));
    QVERIFY(log->Contains(INFO, VELODESK, QStringLiteral("count is 0")));
    QCOMPARE(app.count, 0);
}

void TestBaseApp::crashGivesErrorThenFinished()
{
    ShellApp app(Socket(), QStringLiteral("kill -SEGV $$"));
    QStringList order;
    connect(&app, &BaseApp::AppError, this,
            [&order](QProcess::ProcessError error) { order.append(QStringLiteral("error %1").arg(error)); });
    connect(&app, &BaseApp::AppFinished, this, [&order] { order.append(QStringLiteral("finished")); });
    app.Start();
    QTRY_COMPARE(order.size(), 2);
    QCOMPARE(order,
             QStringList({QStringLiteral("error %1").arg(QProcess::Crashed), QStringLiteral("finished")}));
    QVERIFY(log->Contains(INFO, VELODESK, Line("app[%1]error: %2", QString::number(QProcess::Crashed))));
}

void TestBaseApp::missingProgramGivesErrorAndNextStartRemovesItsProcess()
{
    ShellApp app(Socket(), QString());
    app.program = QStringLiteral("/nowhere/engine");
    SignalSpies spies(app);
    app.Start();
    QTRY_COMPARE(spies.error.count(), 1);
    QCOMPARE(spies.error.first().first().value<QProcess::ProcessError>(), QProcess::FailedToStart);
    QCOMPARE(spies.started.count() + spies.finished.count(), 0);
    QCOMPARE(app.processVector.size(), std::size_t{1});
    log->Clear();
    app.Start();
    QVERIFY(log->Contains(INFO, VELODESK, QStringLiteral("processVector size is 1")));
    QVERIFY(log->Contains(INFO, VELODESK, QStringLiteral("delete 1 invalid process")));
    QCOMPARE(app.processVector.size(), std::size_t{1});
}

void TestBaseApp::overlappingProcessesCountAsOneRun()
{
    ShellApp app(Socket(), QStringLiteral("read line; exit $line"));
    SignalSpies spies(app);
    app.Start();
    QVERIFY(spies.started.wait());
    app.Start();
    QTRY_COMPARE(app.count, 2);
    QCOMPARE(app.processVector.size(), std::size_t{2});
    QCOMPARE(spies.started.count(), 1);
    app.processVector.front()->write("3\n");
    QTRY_COMPARE(app.count, 1);
    QCOMPARE(spies.finished.count(), 0);
    app.processVector.back()->write("4\n");
    QVERIFY(spies.finished.wait());
    QCOMPARE(spies.finished.count(), 1);
    QCOMPARE(spies.finished.first().first().toInt(), 4);
}

void TestBaseApp::startDestroysAProcessThatIsStillStarting()
{
    ShellApp app(Socket(), SLEEP);
    SignalSpies spies(app);
    app.Start();
    if (app.processVector.front()->state() != QProcess::Starting) {
        QFAIL("the process is up before the event loop has run");
    }
    QSignalSpy destroyed(app.processVector.front().get(), &QObject::destroyed);
    app.Start();
    QCOMPARE(destroyed.count(), 1);
    QCOMPARE(app.processVector.size(), std::size_t{1});
    QVERIFY(log->Contains(INFO, VELODESK, QStringLiteral("delete 1 invalid process")));
    QTRY_COMPARE(app.count, 1);
    QCOMPARE(spies.started.count(), 1);
    app.Stop(true);
}

void TestBaseApp::finishedIsEmittedIfCountIsAlreadyZero()
{
    BaseApp app(Socket());
    QSignalSpy finished(&app, &BaseApp::AppFinished);
    app.Finished(5);
    QCOMPARE(finished.count(), 1);
    QCOMPARE(finished.first().first().toInt(), 5);
    QVERIFY(log->Contains(INFO, VELODESK, QStringLiteral("count is 0")));
}

void TestBaseApp::stopWithoutWaitingOnlyTerminates()
{
    ShellApp app(Socket(), IgnoreSigterm(Output(), QStringLiteral("echo terminated >%1").arg(Output())));
    SignalSpies spies(app);
    app.Start();
    // Stop() would drop a process that is still starting.
    QTRY_COMPARE(app.count, 1);
    QTRY_COMPARE(TextOf(Output()), QByteArray("up\n"));
    QElapsedTimer timer;
    timer.start();
    app.Stop(false);
    // Waiting would take three seconds.
    QVERIFY(timer.elapsed() < 2500);
    QTRY_COMPARE(TextOf(Output()), QByteArray("terminated\n"));
    QCOMPARE(app.count, 1);
    QCOMPARE(log->Count(Line("terminate process[%1]")), 1);
    QCOMPARE(log->Count(Line("kill process[%1]")), 0);
    app.processVector.front()->kill();
    QVERIFY(spies.finished.wait());
}

void TestBaseApp::stopWithWaitingKillsProcessThatIgnoresSigterm()
{
    ShellApp app(Socket(), IgnoreSigterm(Output()));
    SignalSpies spies(app);
    app.Start();
    // Stop() would drop a process that is still starting.
    QTRY_COMPARE(app.count, 1);
    QTRY_COMPARE(TextOf(Output()), QByteArray("up\n"));
    QElapsedTimer timer;
    timer.start();
    app.Stop(true);
    const qint64 elapsed = timer.elapsed();
    QVERIFY2(elapsed >= 3000, qPrintable(QString::number(elapsed)));
    COMPARE_LISTS(log->Messages().filter(QStringLiteral("process[")),
                  QStringList({Line("terminate process[%1]"), Line("kill process[%1]")}));
    QVERIFY(spies.finished.count() == 1 || spies.finished.wait());
    // The list is emptied only by the next start or stop.
    QCOMPARE(app.processVector.size(), std::size_t{1});
}

void TestBaseApp::stoppedProcessReportsACrash()
{
    ShellApp app(Socket(), SLEEP);
    SignalSpies spies(app);
    app.Start();
    QVERIFY(spies.started.wait());
    app.Stop(false);
    QVERIFY(spies.finished.wait());
    QCOMPARE(spies.error.count(), 1);
    QCOMPARE(spies.error.first().first().value<QProcess::ProcessError>(), QProcess::Crashed);
}

void TestBaseApp::childInheritsTheEnvironment()
{
    qputenv("VELODESK_TEST_WORD", "inherited");
    ShellApp app(Socket(),
                 QStringLiteral("test \"$VELODESK_TEST_WORD\" = inherited && test \"$PWD\" = \"$1\""));
    app.arguments << QStringLiteral("sh") << QDir::currentPath();
    SignalSpies spies(app);
    app.Start();
    QVERIFY(spies.finished.wait());
    QCOMPARE(spies.finished.first().first().toInt(), 0);
}

void TestBaseApp::childInheritsThreeDescriptorsAndWritesToTheNullDevice()
{
    const int leaking = open("/dev/zero", O_RDONLY);
    // A subshell runs the commands, so that the redirection does not change the descriptors of the shell
    // itself.
    ShellApp app(Socket(),
                 QStringLiteral("(cd /proc/$$/fd && echo * && readlink 1 2) >%1; exit 0").arg(Output()));
    SignalSpies spies(app);
    app.Start();
    QVERIFY(spies.finished.wait());
    QCOMPARE(TextOf(Output()), QByteArray("0 1 2\n/dev/null\n/dev/null\n"));
    close(leaking);
}

void TestBaseApp::nestedStopDoesNotLogEndedProcessesAgain()
{
    ShellApp app(Socket(), SLEEP);
    app.Start();
    QTRY_COMPARE(app.count, 1);
    app.Start();
    QTRY_COMPARE(app.count, 2);
    connect(&app, &BaseApp::AppError, this, [&app] { app.Stop(true); });
    app.Stop(true);
    QCOMPARE(log->Count(Line("terminate process[%1]")), 2);
    QCOMPARE(log->Count(Line("kill process[%1]")), 0);
}

void TestBaseApp::statusIsKeptAfterTheProcessEnds()
{
    ShellApp app(Socket(), QStringLiteral("exit 0"));
    QSignalSpy inited(&app, &BaseApp::AppEventInited);
    QLocalSocket client;
    client.connectToServer(QString::fromStdString(Socket()));
    client.write(R"({"status":"init"})");
    QVERIFY(inited.wait());
    SignalSpies spies(app);
    app.Start();
    QVERIFY(spies.finished.wait());
    client.write(R"({"status":"init"})");
    QVERIFY(!inited.wait(200));
}

QTEST_GUILESS_MAIN(TestBaseApp)
#include "TestBaseApp.moc"
