#include <QSignalSpy>
#include <QTest>
#include <memory>

#include "ExtraApp.h"
#include "supervision/AppManager.h"
#include "supervision/TandraApp.h"
#include "support/CapturedLog.h"

namespace {
class OpenApp : public BaseApp
{
public:
    static auto Program() { return &OpenApp::program; }
    static auto Arguments() { return &OpenApp::arguments; }
    static auto Count() { return &OpenApp::count; }
};
} // namespace

/// The manager with an additional application in its list.
class TestTwoApplications : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void eachApplicationHasItsType();
    void bothAreStoppedAndReportTheirEnd_data();
    void bothAreStoppedAndReportTheirEnd();

private:
    std::unique_ptr<CapturedLog> log;
    std::unique_ptr<AppManager> manager;
};

void TestTwoApplications::init()
{
    log = std::make_unique<CapturedLog>();
    manager = std::make_unique<AppManager>();
    BaseApp& engine = *Singleton<TandraApp>::GetInstance();
    engine.*OpenApp::Program() = QStringLiteral("/bin/sleep");
    engine.*OpenApp::Arguments() = QStringList(QStringLiteral("60"));
}

void TestTwoApplications::cleanup()
{
    manager.reset();
    Singleton<ExtraApp>::Destroy();
    Singleton<TandraApp>::Destroy();
    log.reset();
}

void TestTwoApplications::eachApplicationHasItsType()
{
    QCOMPARE(manager->GetTypeFromApp(*Singleton<TandraApp>::GetInstance()), AppManager::TANDRA_APP);
    QCOMPARE(manager->GetTypeFromApp(*Singleton<ExtraApp>::GetInstance()), AppManager::EXTRA_APP);
}

void TestTwoApplications::bothAreStoppedAndReportTheirEnd_data()
{
    QTest::addColumn<bool>("areRemoved");
    QTest::newRow("registered") << false;
    QTest::newRow("removed") << true;
}

void TestTwoApplications::bothAreStoppedAndReportTheirEnd()
{
    QFETCH(bool, areRemoved);
    QSignalSpy started(manager.get(), &AppManager::AppStarted);
    manager->StartApp(AppManager::TANDRA_APP);
    manager->StartApp(AppManager::EXTRA_APP);
    QTRY_COMPARE(started.count(), 2);
    QSignalSpy finished(manager.get(), &AppManager::AppFinished);
    if (areRemoved) {
        manager->DeleteAll();
    }
    manager->StopAll();
    QTRY_COMPARE(finished.count(), 2);
    QCOMPARE(log->Count(QStringLiteral("AppManager ReAllocResource")), areRemoved ? 2 : 1);
    // The event loop still delivers the events of a new process.
    for (BaseApp* app : {static_cast<BaseApp*>(Singleton<TandraApp>::GetInstance()),
                         static_cast<BaseApp*>(Singleton<ExtraApp>::GetInstance())}) {
        QCOMPARE(app->*OpenApp::Count(), 0);
        app->*OpenApp::Program() = QStringLiteral("/bin/true");
        app->*OpenApp::Arguments() = QStringList();
    }
    manager->StartApp(AppManager::TANDRA_APP);
    manager->StartApp(AppManager::EXTRA_APP);
    QTRY_COMPARE(finished.count(), 4);
}

QTEST_GUILESS_MAIN(TestTwoApplications)
#include "TestTwoApplications.moc"
