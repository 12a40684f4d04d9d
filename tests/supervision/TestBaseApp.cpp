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

/// A supervised shell, with its inside open to the test.
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

struct Watched
{
    explicit Watched(BaseApp& app)
        : error(&app, &BaseApp::AppError),
          started(&app, &BaseApp::AppStarted),
          finished(&app, &BaseApp::AppFinished)
    {}

    QSignalSpy error;
    QSignalSpy started;
    QSignalSpy finished;
};

const QString FOREVER = QStringLiteral("exec sleep 60");
/// Writes "up" to a file, because nobody reads the child's output, and goes on after a termination request.
QString Deaf(const QString& file, const QString& onRequest = QString())
{
    return QStringLiteral("trap '%2' TERM; echo up >%1; while :; do sleep 0.05; done").arg(file, onRequest);
}

/// The file's text; empty while it does not exist.
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
    void builtEvenIfTheServerCannotStart();
    void stopWithoutAStartOnlyLogs();
    void endOfTheChildGivesItsExitCode();
    void crashGivesErrorThenFinished();
    void missingProgramGivesErrorOnlyAndIsClearedByTheNextStart();
    void overlappingProcessesCountAsOneRun();
    void startDestroysAProcessThatIsStillStarting();
    void finishedAtZeroStillFires();
    void stopWithoutWaitingOnlyAsks();
    void stopWithWaitingKillsWhatIgnoresIt();
    void stopCountsAsACrash();
    void childInheritsTheEnvironment();
    void childInheritsThreeDescriptorsAndWritesToTheNullDevice();
    void slotThatStopsAgainLeavesNoLinesForEndedProcesses();
    void statusOutlivesTheProcess();

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

void TestBaseApp::builtEvenIfTheServerCannotStart()
{
    ShellApp app(directory->filePath(QStringLiteral("none/ipc")).toStdString(), QStringLiteral("exit 0"));
    Watched watched(app);
    app.Start();
    QVERIFY(watched.finished.wait());
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
    Watched watched(app);
    app.Start();
    QVERIFY(watched.finished.wait());
    QCOMPARE(watched.started.count(), 1);
    QCOMPARE(watched.finished.first().first().toInt(), 7);
    QCOMPARE(watched.error.count(), 0);
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

void TestBaseApp::missingProgramGivesErrorOnlyAndIsClearedByTheNextStart()
{
    ShellApp app(Socket(), QString());
    app.program = QStringLiteral("/nowhere/engine");
    Watched watched(app);
    app.Start();
    QTRY_COMPARE(watched.error.count(), 1);
    QCOMPARE(watched.error.first().first().value<QProcess::ProcessError>(), QProcess::FailedToStart);
    QCOMPARE(watched.started.count() + watched.finished.count(), 0);
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
    Watched watched(app);
    app.Start();
    QVERIFY(watched.started.wait());
    app.Start();
    QTRY_COMPARE(app.count, 2);
    QCOMPARE(app.processVector.size(), std::size_t{2});
    QCOMPARE(watched.started.count(), 1);
    app.processVector.front()->write("3\n");
    QTRY_COMPARE(app.count, 1);
    QCOMPARE(watched.finished.count(), 0);
    app.processVector.back()->write("4\n");
    QVERIFY(watched.finished.wait());
    QCOMPARE(watched.finished.count(), 1);
    QCOMPARE(watched.finished.first().first().toInt(), 4);
}

void TestBaseApp::startDestroysAProcessThatIsStillStarting()
{
    ShellApp app(Socket(), FOREVER);
    Watched watched(app);
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
    QCOMPARE(watched.started.count(), 1);
    app.Stop(true);
}

void TestBaseApp::finishedAtZeroStillFires()
{
    BaseApp app(Socket());
    QSignalSpy finished(&app, &BaseApp::AppFinished);
    app.Finished(5);
    QCOMPARE(finished.count(), 1);
    QCOMPARE(finished.first().first().toInt(), 5);
    QVERIFY(log->Contains(INFO, VELODESK, QStringLiteral("count is 0")));
}

void TestBaseApp::stopWithoutWaitingOnlyAsks()
{
    ShellApp app(Socket(), Deaf(Output(), QStringLiteral("echo asked >%1").arg(Output())));
    Watched watched(app);
    app.Start();
    // A process that is still starting would be dropped by Stop().
    QTRY_COMPARE(app.count, 1);
    QTRY_COMPARE(TextOf(Output()), QByteArray("up\n"));
    QElapsedTimer timer;
    timer.start();
    app.Stop(false);
    // Waiting would take three seconds.
    QVERIFY(timer.elapsed() < 2500);
    QTRY_COMPARE(TextOf(Output()), QByteArray("asked\n"));
    QCOMPARE(app.count, 1);
    QCOMPARE(log->Count(Line("terminate process[%1]")), 1);
    QCOMPARE(log->Count(Line("kill process[%1]")), 0);
    app.processVector.front()->kill();
    QVERIFY(watched.finished.wait());
}

void TestBaseApp::stopWithWaitingKillsWhatIgnoresIt()
{
    ShellApp app(Socket(), Deaf(Output()));
    Watched watched(app);
    app.Start();
    // A process that is still starting would be dropped by Stop().
    QTRY_COMPARE(app.count, 1);
    QTRY_COMPARE(TextOf(Output()), QByteArray("up\n"));
    QElapsedTimer timer;
    timer.start();
    app.Stop(true);
    const qint64 elapsed = timer.elapsed();
    QVERIFY2(elapsed >= 3000, qPrintable(QString::number(elapsed)));
    COMPARE_LISTS(log->Messages().filter(QStringLiteral("process[")),
                  QStringList({Line("terminate process[%1]"), Line("kill process[%1]")}));
    QVERIFY(watched.finished.count() == 1 || watched.finished.wait());
    // The list is emptied only by the next start or stop.
    QCOMPARE(app.processVector.size(), std::size_t{1});
}

void TestBaseApp::stopCountsAsACrash()
{
    ShellApp app(Socket(), FOREVER);
    Watched watched(app);
    app.Start();
    QVERIFY(watched.started.wait());
    app.Stop(false);
    QVERIFY(watched.finished.wait());
    QCOMPARE(watched.error.count(), 1);
    QCOMPARE(watched.error.first().first().value<QProcess::ProcessError>(), QProcess::Crashed);
}

void TestBaseApp::childInheritsTheEnvironment()
{
    qputenv("VELODESK_TEST_WORD", "inherited");
    ShellApp app(Socket(),
                 QStringLiteral("test \"$VELODESK_TEST_WORD\" = inherited && test \"$PWD\" = \"$1\""));
    app.arguments << QStringLiteral("sh") << QDir::currentPath();
    Watched watched(app);
    app.Start();
    QVERIFY(watched.finished.wait());
    QCOMPARE(watched.finished.first().first().toInt(), 0);
}

void TestBaseApp::childInheritsThreeDescriptorsAndWritesToTheNullDevice()
{
    const int leaking = open("/dev/zero", O_RDONLY);
    // In another process, so that the redirection leaves the descriptors of the shell itself alone.
    ShellApp app(Socket(),
                 QStringLiteral("(cd /proc/$$/fd && echo * && readlink 1 2) >%1; exit 0").arg(Output()));
    Watched watched(app);
    app.Start();
    QVERIFY(watched.finished.wait());
    QCOMPARE(TextOf(Output()), QByteArray("0 1 2\n/dev/null\n/dev/null\n"));
    close(leaking);
}

void TestBaseApp::slotThatStopsAgainLeavesNoLinesForEndedProcesses()
{
    ShellApp app(Socket(), FOREVER);
    app.Start();
    QTRY_COMPARE(app.count, 1);
    app.Start();
    QTRY_COMPARE(app.count, 2);
    connect(&app, &BaseApp::AppError, this, [&app] { app.Stop(true); });
    app.Stop(true);
    QCOMPARE(log->Count(Line("terminate process[%1]")), 2);
    QCOMPARE(log->Count(Line("kill process[%1]")), 0);
}

void TestBaseApp::statusOutlivesTheProcess()
{
    ShellApp app(Socket(), QStringLiteral("exit 0"));
    QSignalSpy inited(&app, &BaseApp::AppEventInited);
    QLocalSocket client;
    client.connectToServer(QString::fromStdString(Socket()));
    client.write(R"({"status":"init"})");
    QVERIFY(inited.wait());
    Watched watched(app);
    app.Start();
    QVERIFY(watched.finished.wait());
    client.write(R"({"status":"init"})");
    QVERIFY(!inited.wait(200));
}

QTEST_GUILESS_MAIN(TestBaseApp)
#include "TestBaseApp.moc"
