#include <QSignalSpy>
#include <QTest>
#include <QThread>
#include <memory>
#include <pthread.h>
#include <system_error>
#include <thread>

#include "config/Constant.h"
#include "supervision/AppManager.h"
#include "supervision/TandraApp.h"
#include "support/CapturedLog.h"

namespace {
const QString VELODESK = QStringLiteral("VELODESK");
const QString INFO = QStringLiteral("INFO");
constexpr int LATE_EVENTS_MS = 1000;

class OpenApp : public BaseApp
{
public:
    static auto Program() { return &OpenApp::program; }
    static auto Arguments() { return &OpenApp::arguments; }
    static auto Processes() { return &OpenApp::processVector; }
    static auto Count() { return &OpenApp::count; }
};

BaseApp& App()
{
    return *Singleton<TandraApp>::GetInstance();
}

/// Replaces the supervised program by a shell that runs `script`.
void UseShell(const QString& script)
{
    App().*OpenApp::Program() = QStringLiteral("/bin/sh");
    App().*OpenApp::Arguments() = QStringList{QStringLiteral("-c"), script};
}

/// Prevents the creation of threads as long as the object exists, by a default stack size that is too large.
class NoThreads
{
public:
    NoThreads()
    {
        if (pthread_getattr_default_np(&before) != 0) {
            qFatal("the threads' attributes cannot be read");
        }
        pthread_attr_t tooLarge;
        pthread_attr_init(&tooLarge);
        if (pthread_attr_setstacksize(&tooLarge, std::size_t{1} << 60U) != 0 ||
            pthread_setattr_default_np(&tooLarge) != 0) {
            qFatal("the threads' stacks cannot be set");
        }
        pthread_attr_destroy(&tooLarge);
    }
    ~NoThreads()
    {
        pthread_setattr_default_np(&before);
        pthread_attr_destroy(&before);
    }
    NoThreads(const NoThreads&) = delete;
    NoThreads& operator=(const NoThreads&) = delete;

private:
    pthread_attr_t before{};
};

const QString SLEEP = QStringLiteral("exec sleep 60");
/// The last commands of a script that runs until it is killed. They create a file when the script is ready,
/// because the program does not read its output.
const QString UNTIL_KILLED = QStringLiteral("; : >up.$$; while :; do sleep 0.05; done");
const QString IGNORE_SIGTERM = QStringLiteral("trap '' TERM") + UNTIL_KILLED;
} // namespace

class TestAppManager : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void constructionRegistersTheEngine();
    void startAndEndAreReported();
    void crashIsReportedBeforeTheEnd();
    void reportsCarryTypeAndEvent();
    void unknownTypeIsNeitherStartedNorStopped();
    void slotCalledWithoutSenderEmitsNothing_data();
    void slotCalledWithoutSenderEmitsNothing();
    void removedApplicationIsRegisteredAgainOnUse_data();
    void removedApplicationIsRegisteredAgainOnUse();
    void signalsOfARemovedApplicationAreNotForwarded();
    void reallocatingTwiceConnectsOnce();
    void signalsAreNotForwardedWhileUnregistered();
    void signalsOfAReregisteredApplicationAreForwardedOnce();
    void stoppingARemovedApplicationKeepsTheEventLoopRunning_data();
    void stoppingARemovedApplicationKeepsTheEventLoopRunning();
    void slotOfAppFinishedCanStartAgain();
    void slotOfAppErrorCanStartAgain();
    void slotCanCallStopAll_data();
    void slotCanCallStopAll();
    void stopWithWaitingKillsAfterTheTimeout();
    void stopAllWithoutAChildOnlyLogs();
    void stopAllStopsTheChildWhenNoThreadCanBeCreated();
    void stopAllEmitsOnTheMainThreadAfterItsReturn_data();
    void stopAllEmitsOnTheMainThreadAfterItsReturn();
    void destructorStopsApplicationsAgain();
    void destructorEmitsNothing();

private:
    void StartChildren(int count);

    std::unique_ptr<CapturedLog> log;
    std::unique_ptr<AppManager> manager;
};

void TestAppManager::init()
{
    log = std::make_unique<CapturedLog>();
    manager = std::make_unique<AppManager>();
    log->Clear();
}

void TestAppManager::cleanup()
{
    manager.reset();
    Singleton<TandraApp>::Destroy();
    log.reset();
}

void TestAppManager::StartChildren(int count)
{
    for (int i = 1; i <= count; ++i) {
        manager->StartApp(AppManager::TANDRA_APP);
        QTRY_COMPARE(App().*OpenApp::Count(), i);
        if ((App().*OpenApp::Arguments()).last().endsWith(UNTIL_KILLED)) {
            const qint64 child = (App().*OpenApp::Processes()).back()->processId();
            QTRY_VERIFY(QFile::exists(QStringLiteral("up.%1").arg(child)));
        }
    }
}

void TestAppManager::constructionRegistersTheEngine()
{
    const AppManager another;
    COMPARE_LISTS(log->Messages(), QStringList(QStringLiteral("AppManager ReAllocResource")));
    QCOMPARE(log->Lines().first().level, INFO);
    QCOMPARE(another.GetTypeFromApp(App()), AppManager::TANDRA_APP);
    const BaseApp unregistered("unregistered");
    QCOMPARE(another.GetTypeFromApp(unregistered), AppManager::APP_TYPE_END);
}

void TestAppManager::startAndEndAreReported()
{
    UseShell(QStringLiteral("exit 3"));
    QSignalSpy started(manager.get(), &AppManager::AppStarted);
    QSignalSpy finished(manager.get(), &AppManager::AppFinished);
    manager->StartApp(AppManager::TANDRA_APP);
    QVERIFY(finished.wait());
    QCOMPARE(started.count(), 1);
    QCOMPARE(started.first().first().value<AppManager::AppType>(), AppManager::TANDRA_APP);
    QCOMPARE(finished.first().at(1).toInt(), 3);
    QVERIFY(log->Contains(INFO, VELODESK, QStringLiteral("start app[0]")));
    // A registered application is not registered again.
    manager->StopApp(AppManager::TANDRA_APP, false);
    QVERIFY(log->Contains(INFO, VELODESK, QStringLiteral("stop app[0]")));
    QCOMPARE(log->Count(QStringLiteral("AppManager ReAllocResource")), 0);
}

void TestAppManager::crashIsReportedBeforeTheEnd()
{
    UseShell(QStringLiteral("kill -SEGV $$"));
    QStringList order;
    connect(manager.get(), &AppManager::AppError, this, [&order] { order.append(QStringLiteral("error")); });
    connect(manager.get(), &AppManager::AppFinished, this,
            [&order] { order.append(QStringLiteral("finished")); });
    manager->StartApp(AppManager::TANDRA_APP);
    QTRY_COMPARE(order, QStringList({QStringLiteral("error"), QStringLiteral("finished")}));
}

void TestAppManager::reportsCarryTypeAndEvent()
{
    QSignalSpy event(manager.get(), &AppManager::AppEvent);
    App().EventInited();
    emit App().AppEventRunning();
    App().EventStopped();
    QCOMPARE(event.count(), 3);
    for (int i = 0; i < 3; ++i) {
        QCOMPARE(event.at(i).at(0).value<AppManager::AppType>(), AppManager::TANDRA_APP);
        QCOMPARE(static_cast<int>(event.at(i).at(1).value<AppManager::AppEventType>()), i);
    }
}

void TestAppManager::unknownTypeIsNeitherStartedNorStopped()
{
    manager->StartApp(AppManager::APP_TYPE_END);
    manager->StopApp(AppManager::APP_TYPE_END, true);
    COMPARE_LISTS(log->Messages(), QStringList({QStringLiteral("AppManager ReAllocResource"),
                                                QStringLiteral("AppManager ReAllocResource")}));
    // StopAll() ignores the map entry that these calls have created.
    manager->StopAll();
    QCOMPARE(log->Count(QStringLiteral("stop app[0]")), 1);
    COMPARE_LISTS(log->Messages(QStringLiteral("stop app[%1]").arg(AppManager::APP_TYPE_END)), QStringList());
}

void TestAppManager::slotCalledWithoutSenderEmitsNothing_data()
{
    QTest::addColumn<QByteArray>("slot");
    for (const char* slot : {"Started", "EventInited", "EventRunning", "EventStopped"}) {
        QTest::newRow(slot) << QByteArray(slot);
    }
}

void TestAppManager::slotCalledWithoutSenderEmitsNothing()
{
    QFETCH(QByteArray, slot);
    const QSignalSpy started(manager.get(), &AppManager::AppStarted);
    const QSignalSpy reports(manager.get(), &AppManager::AppEvent);
    QVERIFY(QMetaObject::invokeMethod(manager.get(), slot.constData()));
    QCOMPARE(started.size(), 0);
    QCOMPARE(reports.size(), 0);
}

void TestAppManager::removedApplicationIsRegisteredAgainOnUse_data()
{
    QTest::addColumn<bool>("start");
    QTest::addColumn<QString>("line");
    QTest::newRow("start") << true << QStringLiteral("start app[0]");
    QTest::newRow("stop") << false << QStringLiteral("stop app[0]");
}

void TestAppManager::removedApplicationIsRegisteredAgainOnUse()
{
    QFETCH(bool, start);
    QFETCH(QString, line);
    UseShell(QStringLiteral("exit 0"));
    const BaseApp* before = &App();
    manager->DeleteAll();
    if (start) {
        manager->StartApp(AppManager::TANDRA_APP);
    } else {
        manager->StopApp(AppManager::TANDRA_APP, false);
    }
    COMPARE_LISTS(log->Messages().mid(0, 2),
                  QStringList({QStringLiteral("AppManager ReAllocResource"), line}));
    QCOMPARE(&App(), before);
    QSignalSpy finished(manager.get(), &AppManager::AppFinished);
    manager->StartApp(AppManager::TANDRA_APP);
    QVERIFY(finished.wait());
}

void TestAppManager::signalsOfARemovedApplicationAreNotForwarded()
{
    QSignalSpy event(manager.get(), &AppManager::AppEvent);
    QSignalSpy finished(manager.get(), &AppManager::AppFinished);
    QSignalSpy started(manager.get(), &AppManager::AppStarted);
    QSignalSpy error(manager.get(), &AppManager::AppError);
    manager->DeleteAll();
    App().EventInited();
    App().EventStopped();
    emit App().AppEventRunning();
    App().Started();
    App().Finished(0);
    App().Error(QProcess::Crashed);
    QCOMPARE(event.count() + finished.count() + started.count() + error.count(), 0);
    QCOMPARE(manager->GetTypeFromApp(App()), AppManager::APP_TYPE_END);
}

void TestAppManager::reallocatingTwiceConnectsOnce()
{
    manager->ReAllocResource();
    manager->ReAllocResource();
    QSignalSpy event(manager.get(), &AppManager::AppEvent);
    App().EventInited();
    QCOMPARE(event.count(), 1);
}

void TestAppManager::signalsAreNotForwardedWhileUnregistered()
{
    QSignalSpy started(manager.get(), &AppManager::AppStarted);
    QSignalSpy error(manager.get(), &AppManager::AppError);
    QSignalSpy finished(manager.get(), &AppManager::AppFinished);
    QSignalSpy event(manager.get(), &AppManager::AppEvent);
    const auto emitAll = [] {
        emit App().AppStarted();
        emit App().AppError(QProcess::Crashed);
        emit App().AppFinished(0);
        emit App().AppEventInited();
        emit App().AppEventRunning();
        emit App().AppEventStopped();
    };
    const auto received = [&] {
        return QList<int>{started.count(), error.count(), finished.count(), event.count()};
    };
    manager->UnregisterCallback();
    emitAll();
    QCOMPARE(received(), QList<int>({0, 0, 0, 0}));
    manager->RegisterCallback();
    emitAll();
    QCOMPARE(received(), QList<int>({1, 1, 1, 3}));
}

void TestAppManager::signalsOfAReregisteredApplicationAreForwardedOnce()
{
    UseShell(QStringLiteral("kill -SEGV $$"));
    for (int i = 0; i < 3; ++i) {
        manager->DeleteAll();
        manager->StopApp(AppManager::TANDRA_APP, false);
    }
    QSignalSpy started(manager.get(), &AppManager::AppStarted);
    QSignalSpy error(manager.get(), &AppManager::AppError);
    QSignalSpy finished(manager.get(), &AppManager::AppFinished);
    QSignalSpy event(manager.get(), &AppManager::AppEvent);
    manager->StartApp(AppManager::TANDRA_APP);
    QVERIFY(finished.wait());
    App().EventInited();
    emit App().AppEventRunning();
    App().EventStopped();
    QCOMPARE(started.count(), 1);
    QCOMPARE(error.count(), 1);
    QCOMPARE(finished.count(), 1);
    QCOMPARE(event.count(), 3);
}

void TestAppManager::stoppingARemovedApplicationKeepsTheEventLoopRunning_data()
{
    QTest::addColumn<QString>("script");
    QTest::newRow("ends at SIGTERM") << SLEEP;
    QTest::newRow("ignores SIGTERM") << IGNORE_SIGTERM;
}

void TestAppManager::stoppingARemovedApplicationKeepsTheEventLoopRunning()
{
    QFETCH(QString, script);
    UseShell(script);
    StartChildren(1);
    QSignalSpy finished(manager.get(), &AppManager::AppFinished);
    manager->DeleteAll();
    log->Clear();
    manager->StopAll();
    const QString name = QString::fromStdString(GetConstant(Velodesk::ENGINE_IPC_NAME));
    QCOMPARE(log->Messages().first(), QStringLiteral("AppManager ReAllocResource"));
    COMPARE_LISTS(log->Messages(QStringLiteral("app[0]")), QStringList(QStringLiteral("stop app[0]")));
    QCOMPARE(log->Messages(name).first(), QStringLiteral("terminate process[%1]").arg(name));
    QTRY_COMPARE(finished.count(), 1);
    QTest::qWait(LATE_EVENTS_MS);
    QCOMPARE(finished.count(), 1);
    QCOMPARE(App().*OpenApp::Count(), 0);
}

void TestAppManager::slotOfAppFinishedCanStartAgain()
{
    constexpr int RUNS = 5;
    UseShell(QStringLiteral("exit 0"));
    QList<QPointer<QProcess>> children;
    connect(manager.get(), &AppManager::AppFinished, this, [this, &children] {
        const QPointer<QProcess> ended((App().*OpenApp::Processes()).back().get());
        children.append(ended);
        if (children.size() < RUNS) {
            manager->StartApp(AppManager::TANDRA_APP);
            // The process exists until its signal has been handled. A nested event loop in the slot does not
            // change this, even if the next process ends in that loop.
            QTest::qWait(1);
            QVERIFY(!ended.isNull());
        }
    });
    manager->StartApp(AppManager::TANDRA_APP);
    QTRY_COMPARE(children.size(), RUNS);
    for (int i = 0; i < RUNS - 1; ++i) {
        QTRY_VERIFY(children.at(i).isNull());
    }
    QCOMPARE(log->Count(QStringLiteral("delete 1 invalid process")), RUNS - 1);
    QCOMPARE((App().*OpenApp::Processes()).size(), std::size_t{1});
    QCOMPARE(App().*OpenApp::Count(), 0);
}

void TestAppManager::slotOfAppErrorCanStartAgain()
{
    constexpr int RUNS = 5;
    App().*OpenApp::Program() = QStringLiteral("/nowhere/engine");
    int errors = 0;
    QSignalSpy finished(manager.get(), &AppManager::AppFinished);
    connect(manager.get(), &AppManager::AppError, this, [this, &errors] {
        ++errors;
        if (errors == RUNS) {
            UseShell(QStringLiteral("exit 0"));
        }
        if (errors <= RUNS) {
            manager->StartApp(AppManager::TANDRA_APP);
        }
    });
    manager->StartApp(AppManager::TANDRA_APP);
    QVERIFY(finished.wait());
    QCOMPARE(errors, RUNS);
    QCOMPARE(log->Count(QStringLiteral("delete 1 invalid process")), RUNS);
}

void TestAppManager::slotCanCallStopAll_data()
{
    QTest::addColumn<QString>("script");
    QTest::addColumn<bool>("atStart");
    QTest::newRow("at the start, runs") << SLEEP << true;
    QTest::newRow("at the start, has ended") << QStringLiteral("exit 0") << true;
    QTest::newRow("at the end") << QStringLiteral("exit 0") << false;
}

void TestAppManager::slotCanCallStopAll()
{
    QFETCH(QString, script);
    QFETCH(bool, atStart);
    UseShell(script);
    QSignalSpy finished(manager.get(), &AppManager::AppFinished);
    const auto stop = [this] {
        manager->StopAll();
        manager->StopAll();
        QTest::qWait(1);
    };
    if (atStart) {
        connect(manager.get(), &AppManager::AppStarted, this, stop);
    } else {
        connect(manager.get(), &AppManager::AppFinished, this, stop);
    }
    manager->StartApp(AppManager::TANDRA_APP);
    QTRY_COMPARE(finished.count(), 1);
    QTRY_COMPARE(App().*OpenApp::Count(), 0);
    QTRY_VERIFY((App().*OpenApp::Processes()).empty() ||
                (App().*OpenApp::Processes()).front()->state() == QProcess::NotRunning);
}

void TestAppManager::stopWithWaitingKillsAfterTheTimeout()
{
    UseShell(IGNORE_SIGTERM);
    StartChildren(1);
    QElapsedTimer timer;
    timer.start();
    manager->StopApp(AppManager::TANDRA_APP, true);
    QVERIFY(timer.elapsed() >= 3000);
    const QString name = QString::fromStdString(GetConstant(Velodesk::ENGINE_IPC_NAME));
    COMPARE_LISTS(log->Messages(QStringLiteral("process[")),
                  QStringList({QStringLiteral("terminate process[%1]").arg(name),
                               QStringLiteral("kill process[%1]").arg(name)}));
}

void TestAppManager::stopAllWithoutAChildOnlyLogs()
{
    manager->StopAll();
    COMPARE_LISTS(log->Messages(QStringLiteral("app[0]")), QStringList(QStringLiteral("stop app[0]")));
    COMPARE_LISTS(log->Messages(QStringLiteral("process[")), QStringList());
}

void TestAppManager::stopAllStopsTheChildWhenNoThreadCanBeCreated()
{
    UseShell(SLEEP);
    StartChildren(1);
    log->Clear();
    {
        const NoThreads none;
        QVERIFY_EXCEPTION_THROWN(std::thread([] {}).join(), std::system_error);
        manager->StopAll();
    }
    COMPARE_LISTS(log->Messages(QStringLiteral("app[0]")), QStringList(QStringLiteral("stop app[0]")));
    QCOMPARE(log->Count(QStringLiteral("processVector size is 1")), 1);
    QCOMPARE((App().*OpenApp::Processes()).back()->state(), QProcess::NotRunning);
    QTRY_COMPARE(App().*OpenApp::Count(), 0);
}

void TestAppManager::stopAllEmitsOnTheMainThreadAfterItsReturn_data()
{
    QTest::addColumn<QString>("script");
    QTest::addColumn<int>("children");
    QTest::newRow("ends at SIGTERM") << SLEEP << 1;
    QTest::newRow("two end at SIGTERM") << SLEEP << 2;
    QTest::newRow("ends with a code") << QStringLiteral("trap 'exit 9' TERM") + UNTIL_KILLED << 1;
    QTest::newRow("ignores SIGTERM") << IGNORE_SIGTERM << 1;
    QTest::newRow("two ignore SIGTERM") << IGNORE_SIGTERM << 2;
}

void TestAppManager::stopAllEmitsOnTheMainThreadAfterItsReturn()
{
    QFETCH(QString, script);
    QFETCH(int, children);
    UseShell(script);
    StartChildren(children);
    QThread* receivingThread = nullptr;
    int finished = 0;
    connect(manager.get(), &AppManager::AppFinished, this, [&receivingThread, &finished] {
        receivingThread = QThread::currentThread();
        ++finished;
    });
    manager->StopAll();
    // No signal is emitted before the event loop runs again. Then all signals are emitted on this thread.
    QCOMPARE(finished, 0);
    QTRY_COMPARE(finished, 1);
    QCOMPARE(receivingThread, thread());
    QTest::qWait(LATE_EVENTS_MS);
    QCOMPARE(App().*OpenApp::Count(), 0);
    // The next start begins with an empty list of processes.
    UseShell(QStringLiteral("exit 0"));
    manager->StartApp(AppManager::TANDRA_APP);
    QTRY_COMPARE(finished, 2);
}

void TestAppManager::destructorStopsApplicationsAgain()
{
    UseShell(SLEEP);
    StartChildren(1);
    QSignalSpy finished(manager.get(), &AppManager::AppFinished);
    manager->StopAll();
    log->Clear();
    manager.reset();
    COMPARE_LISTS(log->Messages(QStringLiteral("app[0]")), QStringList(QStringLiteral("stop app[0]")));
    QCOMPARE(log->Count(QStringLiteral("processVector size is 1")), 1);
    QCOMPARE(log->Count(QStringLiteral("delete 1 invalid process")), 1);
}

void TestAppManager::destructorEmitsNothing()
{
    UseShell(SLEEP);
    StartChildren(1);
    int received = 0;
    connect(manager.get(), &AppManager::AppFinished, this, [&received] { ++received; });
    connect(manager.get(), &AppManager::AppError, this, [&received] { ++received; });
    {
        // Without a thread, StopAll() runs on this thread, so the end of the child is handled immediately.
        const NoThreads none;
        manager.reset();
    }
    QCOMPARE(log->Count(QStringLiteral("stop app[0]")), 1);
    QCOMPARE(received, 0);
}

QTEST_GUILESS_MAIN(TestAppManager)
#include "TestAppManager.moc"
