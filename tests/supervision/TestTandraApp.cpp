#include <QLocalSocket>
#include <QSignalSpy>
#include <QTest>
#include <memory>

#include "config/Configure.h"
#include "config/Constant.h"
#include "supervision/TandraApp.h"
#include "support/CapturedLog.h"

namespace {
class OpenTandraApp : public TandraApp
{
public:
    using BaseApp::arguments;
    using BaseApp::count;
    using BaseApp::name;
    using BaseApp::program;
};

const QString VELODESK = QStringLiteral("VELODESK");
const QString INFO = QStringLiteral("INFO");
} // namespace

class TestTandraApp : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void programArgumentAndSocketAreSet();
    void runWithoutAProcessEmitsNothing();
    void runWithAProcessIsForwarded();
    void runAfterTheEndOfTheLastProcessEmitsNothing();
    void repeatedRunEmitsNothingUntilTheStatusChanges();
    void initAndStopNeedNoProcess();

private:
    std::unique_ptr<CapturedLog> log;
    std::unique_ptr<OpenTandraApp> app;
    std::unique_ptr<QLocalSocket> engine;
};

void TestTandraApp::init()
{
    log = std::make_unique<CapturedLog>();
    Singleton<Configure>::GetInstance()->daemonPid = -4711;
    app = std::make_unique<OpenTandraApp>();
    engine = std::make_unique<QLocalSocket>();
    engine->connectToServer(QString::fromStdString(app->name));
    QVERIFY(engine->waitForConnected());
}

void TestTandraApp::cleanup()
{
    engine.reset();
    app.reset();
    log.reset();
}

void TestTandraApp::programArgumentAndSocketAreSet()
{
    QCOMPARE(app->name, GetConstant(Velodesk::ENGINE_IPC_NAME));
    QCOMPARE(QString::fromStdString(app->name),
             qEnvironmentVariable("HOME") + QStringLiteral("/Velodesk/TandraIpc"));
    QCOMPARE(app->program, QStringLiteral("/opt/apps/com.zelmora.velodesk/files/tandra/bin/Tandra"));
    QCOMPARE(app->arguments, QStringList(QStringLiteral("-4711")));
}

void TestTandraApp::runWithoutAProcessEmitsNothing()
{
    QSignalSpy running(app.get(), &BaseApp::AppEventRunning);
    engine->write(R"({"status":"run"})");
    QTRY_VERIFY(log->Contains(INFO, VELODESK, QStringLiteral("count is 0")));
    QCOMPARE(running.count(), 0);
    QVERIFY(log->Messages().filter(QStringLiteral("event running")).isEmpty());
}

void TestTandraApp::runWithAProcessIsForwarded()
{
    QSignalSpy running(app.get(), &BaseApp::AppEventRunning);
    app->count = 1;
    engine->write(R"({"status":"run"})");
    QVERIFY(running.wait());
    QVERIFY(log->Contains(INFO, VELODESK, QStringLiteral("count is 1")));
    // TandraApp logs nothing for this event.
    QVERIFY(log->Messages().filter(QStringLiteral("event running")).isEmpty());
}

void TestTandraApp::runAfterTheEndOfTheLastProcessEmitsNothing()
{
    QSignalSpy running(app.get(), &BaseApp::AppEventRunning);
    QSignalSpy finished(app.get(), &BaseApp::AppFinished);
    app->program = QStringLiteral("true");
    app->Start();
    QVERIFY(finished.wait());
    log->Clear();
    engine->write(R"({"status":"run"})");
    QTRY_VERIFY(log->Contains(INFO, VELODESK, QStringLiteral("count is 0")));
    QCOMPARE(running.count(), 0);
}

void TestTandraApp::repeatedRunEmitsNothingUntilTheStatusChanges()
{
    QSignalSpy running(app.get(), &BaseApp::AppEventRunning);
    QSignalSpy inited(app.get(), &BaseApp::AppEventInited);
    engine->write(R"({"status":"run"})");
    QTRY_VERIFY(log->Contains(INFO, VELODESK, QStringLiteral("count is 0")));
    app->count = 1;
    engine->write(R"({"status":"run"})");
    engine->flush();
    QVERIFY(!running.wait(200));
    engine->write(R"({"status":"init"})");
    QVERIFY(inited.wait());
    engine->write(R"({"status":"run"})");
    QVERIFY(running.wait());
}

void TestTandraApp::initAndStopNeedNoProcess()
{
    QSignalSpy inited(app.get(), &BaseApp::AppEventInited);
    QSignalSpy stopped(app.get(), &BaseApp::AppEventStopped);
    engine->write(R"({"status":"init"})");
    QVERIFY(inited.wait());
    engine->write(R"({"status":"stop"})");
    QVERIFY(stopped.wait());
}

QTEST_GUILESS_MAIN(TestTandraApp)
#include "TestTandraApp.moc"
