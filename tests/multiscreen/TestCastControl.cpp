#include <QDir>
#include <QFile>
#include <QLabel>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <memory>
#include <thread>

#include "DialogScript.h"
#include "SettingsFile.h"
#include "multiscreen/MultiScreen.h"
#include "shell/VeloMessageBox.h"
#include "supervision/TandraApp.h"
#include "support/CapturedLog.h"
#include "support/Sandbox.h"
#include "support/Widgets.h"

namespace {
const QString VELODESK = QStringLiteral("VELODESK");
const QString INFO = QStringLiteral("INFO");
const QString ERROR = QStringLiteral("ERROR");
const QString START_CLICK = QStringLiteral("Click start app button.");
const QString STOP_CLICK = QStringLiteral("Click stop app button.");
const QString CORRUPTED = QStringLiteral("Tandra file corrupted.");

constexpr int EXECUTABLE = QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner;
constexpr int NOT_EXECUTABLE = QFile::ReadOwner | QFile::WriteOwner;
const QByteArray FOREVER = "exec sleep 60";

AppManager& Manager()
{
    return *Singleton<AppManager>::GetInstance();
}

QString EnginePath()
{
    return QString::fromStdString(GetConstant(Velodesk::ENGINE_PATH));
}

QString EngineFolder()
{
    return EnginePath().section(QLatin1Char('/'), 0, -2);
}

void InstallEngine(const QByteArray& script, int permissions = EXECUTABLE,
                   const QByteArray& shell = "/bin/sh")
{
    QDir().mkpath(EngineFolder());
    QFile file(EnginePath());
    if (!file.open(QIODevice::WriteOnly)) {
        qFatal("%s cannot be written", qPrintable(EnginePath()));
    }
    file.write("#!" + shell + "\n" + script + "\n");
    file.setPermissions(static_cast<QFile::Permissions>(permissions));
}

/// A signal of the manager with its arguments.
struct Event
{
    enum Signal
    {
        STARTED,
        FINISHED,
        ERROR_OCCURRED,
        REPORT,
    };
    Signal signal;
    AppManager::AppType type;
    int detail;

    void Emit() const
    {
        switch (signal) {
        case STARTED:
            emit Manager().AppStarted(type);
            break;
        case FINISHED:
            emit Manager().AppFinished(type, detail);
            break;
        case ERROR_OCCURRED:
            emit Manager().AppError(type, static_cast<QProcess::ProcessError>(detail));
            break;
        case REPORT:
            emit Manager().AppEvent(type, static_cast<AppManager::AppEventType>(detail));
            break;
        }
    }
};

enum PageState
{
    UNCHANGED,
    IDLE,
    CASTING,
};
} // namespace

Q_DECLARE_METATYPE(Event)

class TestCastControl : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void newPageIsIdleInAnyStateOfTheEngine();
    void statesHaveTheirAppearance_data();
    void statesHaveTheirAppearance();
    void settingAStateTwiceChangesNothing_data();
    void settingAStateTwiceChangesNothing();
    void signalsChangeThePageState_data();
    void signalsChangeThePageState();
    void signalsOfAnotherThreadArriveQueued();
    void clickStartsTheEngine();
    void clickWhileCastingStopsTheEngine();
    void secondClickRepeatsTheRequest();
    void changeIsPaintedImmediately();
    void clickWithUnknownButtonTextStartsTheEngine_data();
    void clickWithUnknownButtonTextStartsTheEngine();
    void clickAfterStopReportRequestsAnotherStart();
    void crashReturnsToIdleWithoutAMessage();
    void engineThatFailsToStartIsOnlyLogged_data();
    void engineThatFailsToStartIsOnlyLogged();
    void unusableEngineShowsWarning_data();
    void unusableEngineShowsWarning();
    void otherMessageBoxSuppressesTheWarning();
    void signalsArriveWhileTheWarningIsOpen();

private:
    QPushButton& Button() { return *Find<QPushButton>(*page, "PreScreenBtn"); }
    bool ShowsCasting() { return Button().text() == QStringLiteral("结束投屏"); }
    void Click() { QTest::mouseClick(&Button(), Qt::LeftButton); }
    /// Returns the button, the label and the image as one text.
    QString PageContent() const;
    void VerifyPageState(bool casting);

    std::unique_ptr<CapturedLog> log;
    std::unique_ptr<MultiScreen> page;
};

void TestCastControl::init()
{
    SettingsFile::Write(QByteArray());
    log = std::make_unique<CapturedLog>();
    page = std::make_unique<MultiScreen>(nullptr);
    page->show();
    log->Clear();
}

void TestCastControl::cleanup()
{
    page.reset();
    Singleton<AppManager>::Destroy();
    Singleton<TandraApp>::Destroy();
    log.reset();
    QFile::setPermissions(EngineFolder(), static_cast<QFile::Permissions>(EXECUTABLE));
    QDir(QStringLiteral("/opt/apps")).removeRecursively();
}

QString TestCastControl::PageContent() const
{
    const auto* button = Find<QPushButton>(*page, "PreScreenBtn");
    return QStringList({button->text(), button->styleSheet(), Find<QLabel>(*page, "ScreenLabel")->text(),
                        Find(*page, "StatusFrame")->styleSheet()})
        .join(QLatin1Char('|'));
}

void TestCastControl::VerifyPageState(bool casting)
{
    QCOMPARE(Button().text(), casting ? QStringLiteral("结束投屏") : QStringLiteral("开始投屏"));
    QCOMPARE(Button().styleSheet(),
             casting ? QStringLiteral(" QPushButton {\ncolor: #2B6FF2;\nborder: 2px solid  #2B6FF2;\n"
                                      "font: 14px Noto Sans CJK SC;\nborder-radius: 16px;"
                                      "background-color: #FFFFFF;\n}\n\nQPushButton:hover {color: #3E80FF; "
                                      "background-color: #FFFFFF;}QPushButton:pressed {color: #1953C4; "
                                      "background-color: #FFFFFF;}")
                     : QStringLiteral("QPushButton {\ncolor: #FFFFFF;\nborder: 0px solid  #2B6FF2;\n"
                                      "font: 14px Noto Sans CJK SC;\nborder-radius: 16px;"
                                      "background-color: #2B6FF2;\n}\n\nQPushButton:hover "
                                      "{background-color: #3E80FF;}QPushButton:pressed "
                                      "{background-color: #1953C4;}"));
    QCOMPARE(Find<QLabel>(*page, "ScreenLabel")->text(),
             casting ? QStringLiteral("投屏中") : QStringLiteral("未投屏"));
    QCOMPARE(Find(*page, "StatusFrame")->styleSheet(),
             casting ? QStringLiteral("border-image: url(:/velo/prescreensucess)")
                     : QStringLiteral("border-image: url(:/velo/prescreen)"));
    QVERIFY(Button().isEnabled());
}

void TestCastControl::newPageIsIdleInAnyStateOfTheEngine()
{
    VerifyPageState(false);
    InstallEngine(FOREVER);
    QSignalSpy started(&Manager(), &AppManager::AppStarted);
    Manager().StartApp(AppManager::TANDRA_APP);
    QVERIFY(started.wait());
    Singleton<TandraApp>::GetInstance()->EventRunning();
    VerifyPageState(true);
    page = std::make_unique<MultiScreen>(nullptr);
    VerifyPageState(false);
}

void TestCastControl::statesHaveTheirAppearance_data()
{
    QTest::addColumn<bool>("casting");
    QTest::newRow("casting") << true;
    QTest::newRow("idle") << false;
}

void TestCastControl::statesHaveTheirAppearance()
{
    QFETCH(bool, casting);
    page->SetPreScreenStatus(!casting);
    page->SetPreScreenStatus(casting);
    VerifyPageState(casting);
    // The result of the style sheet: the fill colour and, if there is one, the border.
    const QImage image = Button().grab().toImage();
    const QColor blue(0x2B, 0x6F, 0xF2);
    QCOMPARE(QColor(image.pixel(16, 16)), casting ? QColor(Qt::white) : blue);
    QCOMPARE(QColor(image.pixel(56, 1)), blue);
}

void TestCastControl::settingAStateTwiceChangesNothing_data()
{
    statesHaveTheirAppearance_data();
}

void TestCastControl::settingAStateTwiceChangesNothing()
{
    QFETCH(bool, casting);
    page->SetPreScreenStatus(casting);
    page->SetPreScreenStatus(casting);
    VerifyPageState(casting);
}

void TestCastControl::signalsChangeThePageState_data()
{
    QTest::addColumn<Event>("event");
    QTest::addColumn<int>("state");
    QTest::addColumn<QString>("level");
    QTest::addColumn<QString>("line");
    const auto engine = AppManager::TANDRA_APP;
    const auto other = AppManager::APP_TYPE_END;
    const QString started = QStringLiteral("App started.");
    const QString failed = QStringLiteral("Tandra startup failed.");
    const QString finished = QStringLiteral("Process finished, id %1.");
    const auto row = [](const char* name, Event::Signal signal, AppManager::AppType type, int detail,
                        int state, const QString& level = QString(), const QString& line = QString()) {
        QTest::newRow(name) << Event{signal, type, detail} << state << level << line;
    };
    row("started", Event::STARTED, engine, 0, UNCHANGED, INFO, started);
    row("other application: started", Event::STARTED, other, 0, UNCHANGED);
    row("reports init", Event::REPORT, engine, AppManager::APP_EVENT_INITED, UNCHANGED);
    row("reports run", Event::REPORT, engine, AppManager::APP_EVENT_RUNNING, CASTING);
    row("reports stop", Event::REPORT, engine, AppManager::APP_EVENT_STOPPED, IDLE);
    row("other application: reports init", Event::REPORT, other, AppManager::APP_EVENT_INITED, UNCHANGED);
    row("other application: reports run", Event::REPORT, other, AppManager::APP_EVENT_RUNNING, UNCHANGED);
    row("other application: reports stop", Event::REPORT, other, AppManager::APP_EVENT_STOPPED, UNCHANGED);
    row("finished", Event::FINISHED, engine, 0, IDLE, INFO, finished.arg(0));
    row("finished with a code", Event::FINISHED, engine, -3, IDLE, INFO, finished.arg(-3));
    row("other application: finished", Event::FINISHED, other, 7, UNCHANGED, INFO, finished.arg(7));
    row("failed to start", Event::ERROR_OCCURRED, engine, QProcess::FailedToStart, IDLE, ERROR, failed);
    row("other application: failed to start", Event::ERROR_OCCURRED, other, QProcess::FailedToStart,
        UNCHANGED, ERROR, failed);
    for (const auto error : {QProcess::Crashed, QProcess::Timedout, QProcess::ReadError, QProcess::WriteError,
                             QProcess::UnknownError}) {
        row(qPrintable(QStringLiteral("error %1").arg(error)), Event::ERROR_OCCURRED, engine, error, IDLE);
        row(qPrintable(QStringLiteral("other application: error %1").arg(error)), Event::ERROR_OCCURRED,
            other, error, UNCHANGED);
    }
}

void TestCastControl::signalsChangeThePageState()
{
    QFETCH(Event, event);
    QFETCH(int, state);
    QFETCH(QString, level);
    QFETCH(QString, line);
    for (const bool casting : {false, true}) {
        page->SetPreScreenStatus(casting);
        log->Clear();
        event.Emit();
        VerifyPageState(state == UNCHANGED ? casting : state == CASTING);
        COMPARE_LISTS(log->Messages(), line.isEmpty() ? QStringList() : QStringList(line));
        QVERIFY(line.isEmpty() || log->Contains(level, VELODESK, line));
    }
}

void TestCastControl::signalsOfAnotherThreadArriveQueued()
{
    Manager();
    const auto emitElsewhere = [](const Event& event) {
        std::thread([event] { event.Emit(); }).join();
    };
    emitElsewhere({Event::REPORT, AppManager::TANDRA_APP, AppManager::APP_EVENT_RUNNING});
    VerifyPageState(false);
    QTRY_VERIFY(ShowsCasting());
    emitElsewhere({Event::ERROR_OCCURRED, AppManager::TANDRA_APP, QProcess::FailedToStart});
    VerifyPageState(true);
    QTRY_VERIFY(!ShowsCasting());
    emitElsewhere({Event::STARTED, AppManager::TANDRA_APP, 0});
    emitElsewhere({Event::FINISHED, AppManager::TANDRA_APP, 5});
    COMPARE_LISTS(log->Messages(), QStringList(QStringLiteral("Tandra startup failed.")));
    QTRY_COMPARE(log->Messages().mid(1),
                 QStringList({QStringLiteral("App started."), QStringLiteral("Process finished, id 5.")}));
}

void TestCastControl::clickStartsTheEngine()
{
    InstallEngine(FOREVER);
    QSignalSpy started(&Manager(), &AppManager::AppStarted);
    Click();
    COMPARE_LISTS(log->Messages().mid(0, 2), QStringList({START_CLICK, QStringLiteral("start app[0]")}));
    QVERIFY(log->Contains(INFO, VELODESK, START_CLICK));
    VerifyPageState(false);
    QVERIFY(started.wait());
    QVERIFY(log->Contains(INFO, VELODESK, QStringLiteral("App started.")));
    // The engine runs, but no phone is connected yet.
    VerifyPageState(false);
    QCOMPARE(log->Count(CORRUPTED), 0);
}

void TestCastControl::clickWhileCastingStopsTheEngine()
{
    InstallEngine("trap 'exit 9' TERM; while :; do sleep 0.05; done");
    QSignalSpy started(&Manager(), &AppManager::AppStarted);
    QSignalSpy finished(&Manager(), &AppManager::AppFinished);
    Click();
    QVERIFY(started.wait());
    Singleton<TandraApp>::GetInstance()->EventRunning();
    VerifyPageState(true);
    log->Clear();
    Click();
    COMPARE_LISTS(log->Messages().mid(0, 2), QStringList({STOP_CLICK, QStringLiteral("stop app[0]")}));
    QVERIFY(log->Contains(INFO, VELODESK, STOP_CLICK));
    // The click does not wait: the casting state is shown until the end is reported.
    QCOMPARE(finished.count(), 0);
    VerifyPageState(true);
    QVERIFY(finished.wait());
    VerifyPageState(false);
    QCOMPARE(log->Messages().filter(QStringLiteral("Process finished")).size(), 1);
    QCOMPARE(log->Messages().filter(QStringLiteral("kill process")).size(), 0);
}

void TestCastControl::secondClickRepeatsTheRequest()
{
    InstallEngine(FOREVER);
    Click();
    Click();
    QCOMPARE(log->Count(START_CLICK), 2);
    QCOMPARE(log->Count(QStringLiteral("start app[0]")), 2);
    VerifyPageState(false);
    page->SetPreScreenStatus(true);
    Click();
    Click();
    QCOMPARE(log->Count(STOP_CLICK), 2);
    QCOMPARE(log->Count(QStringLiteral("stop app[0]")), 2);
    VerifyPageState(true);
}

void TestCastControl::changeIsPaintedImmediately()
{
    // The page repaints each widget separately. Otherwise Qt would paint the area between them too.
    class PaintOrder : public QObject
    {
    public:
        QStringList painted;

    protected:
        bool eventFilter(QObject* watched, QEvent* event) override
        {
            if (event->type() == QEvent::Paint) {
                painted.append(watched->objectName());
            }
            return false;
        }
    } order;
    QVERIFY(QTest::qWaitForWindowExposed(page.get()));
    const QStringList names{QStringLiteral("PreScreenBtn"), QStringLiteral("ScreenLabel"),
                            QStringLiteral("StatusFrame")};
    for (const QString& name : names) {
        Find(*page, name.toLatin1().constData())->installEventFilter(&order);
    }
    page->SetPreScreenStatus(true);
    QCOMPARE(order.painted, names);
}

void TestCastControl::clickWithUnknownButtonTextStartsTheEngine_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("empty") << QString();
    QTest::newRow("trailing space") << QStringLiteral("结束投屏 ");
    QTest::newRow("other text") << QStringLiteral("stop");
}

void TestCastControl::clickWithUnknownButtonTextStartsTheEngine()
{
    QFETCH(QString, text);
    InstallEngine(FOREVER);
    Button().setText(text);
    Click();
    COMPARE_LISTS(log->Messages().mid(0, 2), QStringList({START_CLICK, QStringLiteral("start app[0]")}));
    QCOMPARE(Button().text(), text);
}

void TestCastControl::clickAfterStopReportRequestsAnotherStart()
{
    InstallEngine(FOREVER);
    QSignalSpy started(&Manager(), &AppManager::AppStarted);
    Click();
    QVERIFY(started.wait());
    Singleton<TandraApp>::GetInstance()->EventRunning();
    Singleton<TandraApp>::GetInstance()->EventStopped();
    VerifyPageState(false);
    log->Clear();
    Click();
    // The first process still runs, and the click requests another start.
    COMPARE_LISTS(log->Messages(), QStringList({START_CLICK, QStringLiteral("start app[0]"),
                                                QStringLiteral("processVector size is 1"),
                                                QStringLiteral("delete 0 invalid process")}));
}

void TestCastControl::crashReturnsToIdleWithoutAMessage()
{
    InstallEngine("kill -SEGV $$");
    QSignalSpy error(&Manager(), &AppManager::AppError);
    QSignalSpy finished(&Manager(), &AppManager::AppFinished);
    Click();
    page->SetPreScreenStatus(true);
    QTRY_COMPARE(error.count() + finished.count(), 2);
    VerifyPageState(false);
    QCOMPARE(log->Count(QStringLiteral("Tandra startup failed.")), 0);
}

void TestCastControl::engineThatFailsToStartIsOnlyLogged_data()
{
    QTest::addColumn<bool>("directory");
    QTest::newRow("its interpreter is missing") << false;
    QTest::newRow("it is a directory") << true;
}

void TestCastControl::engineThatFailsToStartIsOnlyLogged()
{
    QFETCH(bool, directory);
    if (directory) {
        QDir().mkpath(EnginePath());
    } else {
        InstallEngine(QByteArray(), EXECUTABLE, "/nonexistent/sh");
    }
    DialogScript noDialog({});
    QSignalSpy error(&Manager(), &AppManager::AppError);
    Click();
    QTRY_COMPARE(error.count(), 1);
    QVERIFY(log->Contains(ERROR, VELODESK, QStringLiteral("Tandra startup failed.")));
    QCOMPARE(log->Count(CORRUPTED), 0);
    VerifyPageState(false);
    QCOMPARE(VeloMessageBox::GetWindCount(), 0);
    QVERIFY(noDialog.IsComplete());
}

void TestCastControl::unusableEngineShowsWarning_data()
{
    QTest::addColumn<int>("filePermissions");
    QTest::addColumn<int>("folderPermissions");
    QTest::newRow("absent") << -1 << EXECUTABLE;
    QTest::newRow("not executable") << NOT_EXECUTABLE << EXECUTABLE;
    QTest::newRow("folder cannot be searched") << EXECUTABLE << NOT_EXECUTABLE;
}

void TestCastControl::unusableEngineShowsWarning()
{
    QFETCH(int, filePermissions);
    QFETCH(int, folderPermissions);
    if (filePermissions >= 0) {
        InstallEngine(FOREVER, filePermissions);
        QVERIFY(QFile::setPermissions(EngineFolder(), static_cast<QFile::Permissions>(folderPermissions)));
    }
    const QString before = PageContent();
    DialogScript script({[this](QWidget* dialog) {
        auto* box = qobject_cast<VeloMessageBox*>(dialog);
        QVERIFY(box != nullptr);
        QCOMPARE(box->parentWidget(), page.get());
        QCOMPARE(box->windowModality(), Qt::WindowModal);
        QVERIFY(Find(*box, "warnIcon")->isVisible());
        QCOMPARE(Find<QLabel>(*box, "textMsgWarn")->text(),
                 QStringLiteral("可执行文件损坏，无法使用多屏协同"));
        QCOMPARE(Find<QLabel>(*box, "textMsg")->text(), QStringLiteral("请卸载重装"));
        QVERIFY(!Find(*box, "btnLeft")->isVisible());
        QCOMPARE(Find<QPushButton>(*box, "btnRight")->text(), QStringLiteral("确定"));
        QTest::mouseClick(Find(*box, "btnRight"), Qt::LeftButton);
    }});
    Click();
    QVERIFY(script.IsComplete());
    COMPARE_LISTS(log->Messages(), QStringList({START_CLICK, CORRUPTED}));
    QVERIFY(log->Contains(ERROR, VELODESK, CORRUPTED));
    QCOMPARE(PageContent(), before);
    QCOMPARE(Button().text(), QStringLiteral("开始投屏"));
    QCOMPARE(VeloMessageBox::GetWindCount(), 0);
}

void TestCastControl::otherMessageBoxSuppressesTheWarning()
{
    {
        DialogScript noDialog({});
        const VeloMessageBox other(nullptr);
        Click();
        COMPARE_LISTS(log->Messages(), QStringList(START_CLICK));
        VerifyPageState(false);
        QVERIFY(noDialog.IsComplete());
    }
    // After the other message box was destroyed, the warning is shown.
    DialogScript script({[](QWidget* dialog) {
        dialog->close();
    }});
    Click();
    QVERIFY(script.IsComplete());
    COMPARE_LISTS(log->Messages(), QStringList({START_CLICK, START_CLICK, CORRUPTED}));
}

void TestCastControl::signalsArriveWhileTheWarningIsOpen()
{
    DialogScript script({[this](QWidget* dialog) {
        Event{Event::REPORT, AppManager::TANDRA_APP, AppManager::APP_EVENT_RUNNING}.Emit();
        VerifyPageState(true);
        dialog->close();
    }});
    Click();
    QVERIFY(script.IsComplete());
    VerifyPageState(true);
}

SANDBOXED_QTEST_MAIN(TestCastControl)
#include "TestCastControl.moc"
