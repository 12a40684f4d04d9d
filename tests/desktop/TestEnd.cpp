#include <QElapsedTimer>
#include <QProcess>
#include <csignal>

#include "DesktopTest.h"

class TestEnd : public DesktopTest
{
    Q_OBJECT

private slots:
    void cleanup()
    {
        world.reset();
        if (sessionManager != nullptr) {
            sessionManager->kill();
            sessionManager->waitForFinished();
            sessionManager.reset();
        }
    }

    void quitWithoutACastEndsTheDaemon();
    void quitWhileCastingStopsTheEngineFirst();
    void quitKillsAnEngineThatIgnoresTheRequest();
    void quitAfterAStopLeavesNoEngine();
    void cancelKeepsTheCast_data();
    void cancelKeepsTheCast();
    void closeCommandShowsTheQuestion();
    void blockedWindowShowsOneQuestion();
    void minimiseKeepsTheCast();
    void endOfTheSessionStopsTheEngineAndNotTheDaemon_data();
    void endOfTheSessionStopsTheEngineAndNotTheDaemon();
    void quitSucceedsWhenTheDaemonDoesNotAnswer();
    void quitSucceedsWhenTheBusDoesNotAnswer();
    void signalEndsTheProgramInOrderAtEveryStage_data();
    void signalEndsTheProgramInOrderAtEveryStage();
    void secondSignalDoesNotWaitForTheEngine();

private:
    void BeginCast(const QString& script)
    {
        Begin();
        world->WriteEngineScript(script);
        world->ClickPage(CAST_BUTTON);
        VERIFY_SOON(world->ShowsCasting());
    }
    QString ReadFromSessionManager()
    {
        DesktopWorld::WaitFor([this] { return sessionManager->canReadLine(); });
        return QString::fromLocal8Bit(sessionManager->readLine()).trimmed();
    }

    std::unique_ptr<QProcess> sessionManager;
};

void TestEnd::quitWithoutACastEndsTheDaemon()
{
    Begin();
    world->ClickCard(CLOSE_BUTTON);
    ConfirmQuit();
    QCOMPARE(world->AssistantStatus(), 0);
    QCOMPARE(world->DaemonStatus(), 0);
    QVERIFY(world->EngineEvents().isEmpty());
    // The first stop follows the user's confirmation, the second is in the manager's destructor.
    QCOMPARE(world->CountLog(QStringLiteral("stop app[0]")), 2);
    QCOMPARE(world->CountLog(QStringLiteral("process["), ENGINE), 0);
    QCOMPARE(world->CountLog(QStringLiteral("Velodesk exit.")), 1);
}

void TestEnd::quitWhileCastingStopsTheEngineFirst()
{
    BeginCast(QStringLiteral("report run\n"));
    world->ClickCard(CLOSE_BUTTON);
    ConfirmQuit();
    QCOMPARE(world->AssistantStatus(), 0);
    QCOMPARE(world->DaemonStatus(), 0);
    const qint64 ended = EngineTime(QStringLiteral("ended"));
    const qint64 requested = DaemonTime(QStringLiteral("exit requested"));
    const qint64 assistantEnded = DaemonTime(QStringLiteral("assistant ended exit 0"));
    QVERIFY(ended > 0);
    QVERIFY2(ended < requested, "the daemon received the exit request before the engine had ended");
    QVERIFY(requested < assistantEnded);
}

void TestEnd::quitKillsAnEngineThatIgnoresTheRequest()
{
    BeginCast(QStringLiteral("ignore-terminate\nreport run\n"));
    world->ClickCard(CLOSE_BUTTON);
    ConfirmQuit();
    QCOMPARE(world->AssistantStatus(), 0);
    QCOMPARE(world->CountLog(QStringLiteral("kill process["), ENGINE), 1);
    // The engine writes its event after the request was sent, possibly late.
    constexpr qint64 EVENT_DELAY_NS = 500LL * 1000 * 1000;
    const qint64 waited =
        DaemonTime(QStringLiteral("exit requested")) - EngineTime(QStringLiteral("terminate"));
    QVERIFY2(waited >= 3000LL * 1000 * 1000 - EVENT_DELAY_NS, qPrintable(QString::number(waited)));
}

void TestEnd::quitAfterAStopLeavesNoEngine()
{
    BeginCast(QStringLiteral("report run\n"));
    world->ClickPage(CAST_BUTTON);
    VERIFY_SOON(world->HasLog(QStringLiteral("Process finished, id 0.")));
    world->ClickCard(CLOSE_BUTTON);
    ConfirmQuit();
    QCOMPARE(world->AssistantStatus(), 0);
    QVERIFY(!world->HasLog(QStringLiteral("kill process["), ENGINE));
}

void TestEnd::cancelKeepsTheCast_data()
{
    QTest::addColumn<QPoint>("where");
    QTest::newRow("cancel") << LEFT_BUTTON;
    QTest::newRow("close") << SMALL_CLOSE_BUTTON;
}

void TestEnd::cancelKeepsTheCast()
{
    QFETCH(QPoint, where);
    BeginCast(QStringLiteral("report run\n"));
    world->ClickCard(CLOSE_BUTTON);
    VERIFY_SOON(world->SmallWindow().id != 0);
    world->ClickSmallCard(where);
    VERIFY_SOON(world->SmallWindow().id == 0);
    VERIFY_SOON(world->ShowsCasting());
    QCOMPARE(EngineTime(QStringLiteral("terminate")), -1);
    // The next question is independent and can still be confirmed.
    world->ClickCard(CLOSE_BUTTON);
    ConfirmQuit();
    QCOMPARE(world->DaemonStatus(), 0);
}

void TestEnd::closeCommandShowsTheQuestion()
{
    Begin();
    world->Desktop().CloseWindow(world->BigWindow().id);
    VERIFY_SOON(world->SmallWindow().id != 0);
    QVERIFY(world->BigWindow().id != 0);
    QCOMPARE(world->CountLog(QStringLiteral("Velodesk closeEvent show exit window.")), 1);
    ConfirmQuit();
    QCOMPARE(world->AssistantStatus(), 0);
}

void TestEnd::blockedWindowShowsOneQuestion()
{
    Begin();
    world->Desktop().CloseWindow(world->BigWindow().id);
    VERIFY_SOON(world->SmallWindow().id != 0);
    // The question is modal, so the window below it gets neither the close command nor the click.
    world->Desktop().CloseWindow(world->BigWindow().id);
    world->ClickCard(CLOSE_BUTTON);
    ConfirmQuit();
    QCOMPARE(world->CountLog(QStringLiteral("Velodesk closeEvent show exit window.")), 1);
    QCOMPARE(world->CountLog(QStringLiteral("Velodesk show exit window.")), 0);
}

void TestEnd::minimiseKeepsTheCast()
{
    BeginCast(QStringLiteral("report run\n"));
    const unsigned long id = world->BigWindow().id;
    world->ClickCard(MINIMISE_BUTTON);
    VERIFY_SOON(!world->Desktop().IsShown(id));
    QCOMPARE(world->StartSecond(), 0);
    VERIFY_SOON(world->Desktop().IsShown(id) && world->ShowsCasting());
    QCOMPARE(EngineTime(QStringLiteral("terminate")), -1);
}

void TestEnd::endOfTheSessionStopsTheEngineAndNotTheDaemon_data()
{
    QTest::addColumn<QByteArray>("command");
    QTest::newRow("with interaction") << QByteArray("end\n");
    QTest::newRow("without interaction") << QByteArray("end quietly\n");
}

void TestEnd::endOfTheSessionStopsTheEngineAndNotTheDaemon()
{
    QFETCH(QByteArray, command);
    Begin({}, false);
    sessionManager = std::make_unique<QProcess>();
    sessionManager->setProcessEnvironment(world->Environment());
    sessionManager->start(QStringLiteral(VELODESK_BINARY_DIR "/session-manager"), QStringList());
    const QString id = ReadFromSessionManager();
    QVERIFY(id.contains(QLatin1String("local/")));
    world->SetVariable(QStringLiteral("SESSION_MANAGER"), id);
    QVERIFY(world->StartAssistant());
    QCOMPARE(ReadFromSessionManager(), QStringLiteral("registered"));
    world->WriteEngineScript(QStringLiteral("report run\n"));
    world->ClickPage(CAST_BUTTON);
    VERIFY_SOON(world->ShowsCasting());
    sessionManager->write(command);
    QVERIFY(sessionManager->waitForBytesWritten());
    QVERIFY(world->WaitForDaemonEnd());
    QCOMPARE(world->AssistantStatus(), 0);
    QCOMPARE(world->DaemonStatus(), 1);
    QCOMPARE(DaemonTime(QStringLiteral("exit requested")), -1);
    QVERIFY(EngineTime(QStringLiteral("ended")) > 0);
    QVERIFY(EngineTime(QStringLiteral("ended")) < DaemonTime(QStringLiteral("assistant ended")));
    QVERIFY(world->HasLog(QStringLiteral("Get session manager.")));
    // The window shows the question when the session closes it.
    QVERIFY(world->HasLog(QStringLiteral("Velodesk closeEvent show exit window.")));
    QVERIFY(!world->HasLog(QStringLiteral("Velodesk exit.")));
    // Only the manager's destructor stops the engine.
    QCOMPARE(world->CountLog(QStringLiteral("stop app[0]")), 1);
}

void TestEnd::quitSucceedsWhenTheDaemonDoesNotAnswer()
{
    Begin({}, false);
    QVERIFY(world->StartAssistant({QStringLiteral("--misbehave"), QStringLiteral("silent")}));
    world->ClickCard(CLOSE_BUTTON);
    VERIFY_SOON(world->SmallWindow().id != 0);
    world->ClickSmallCard(RIGHT_BUTTON);
    VERIFY_SOON(world->AssistantStatus() == 0);
    QVERIFY(world->HasLog(QStringLiteral("Failed to call method, reason: ")));
}

void TestEnd::quitSucceedsWhenTheBusDoesNotAnswer()
{
    Begin();
    world->PauseSystemBus();
    world->ClickCard(CLOSE_BUTTON);
    VERIFY_SOON(world->SmallWindow().id != 0);
    QElapsedTimer timer;
    timer.start();
    world->ClickSmallCard(RIGHT_BUTTON);
    VERIFY_SOON(world->AssistantStatus() == 0);
    // The default timeouts of the bus library are 25 and 90 s.
    QVERIFY2(timer.elapsed() < 20000, qPrintable(QString::number(timer.elapsed())));
    QVERIFY(world->HasLog(QStringLiteral("Failed to call method, reason: Connection timed out")));
    QVERIFY(world->HasLog(QStringLiteral("Velodesk exit.")));
}

void TestEnd::signalEndsTheProgramInOrderAtEveryStage_data()
{
    QTest::addColumn<QString>("stage");
    QTest::addColumn<int>("signal");
    QTest::newRow("agreement") << "agreement" << SIGTERM;
    QTest::newRow("cast") << "cast" << SIGHUP;
    QTest::newRow("exit question") << "exit question" << SIGINT;
    QTest::newRow("message box") << "message box" << SIGTERM;
    QTest::newRow("folder dialog") << "folder dialog" << SIGTERM;
    QTest::newRow("menu") << "menu" << SIGTERM;
}

void TestEnd::signalEndsTheProgramInOrderAtEveryStage()
{
    QFETCH(QString, stage);
    QFETCH(int, signal);
    const bool casts = stage != QLatin1String("agreement");
    if (casts) {
        BeginCast(QStringLiteral("report run\n"));
    } else {
        DesktopWorld::Options options;
        options.agreed = false;
        Begin(options);
        // No main window may appear after the signal, even if the settings contain the agreement now.
        world->AppendSettings(QStringLiteral("[VelodeskServer]\nstatement=true\n"));
    }
    if (stage == QLatin1String("exit question")) {
        world->ClickCard(CLOSE_BUTTON);
        VERIFY_SOON(world->SmallWindow().id != 0);
    } else if (stage == QLatin1String("message box")) {
        world->AppendSettings(QStringLiteral("[VelodeskServer]\ntrustNum=2\n"));
        QVERIFY(world->ChooseFromMenu(1));
        world->ClickPage(CLEAR_BUTTON);
        VERIFY_SOON(world->SmallWindow().id != 0);
    } else if (stage == QLatin1String("folder dialog")) {
        QVERIFY(world->ChooseFromMenu(1));
        world->ClickPage(CHANGE_BUTTON);
        VERIFY_SOON(world->FolderDialog().id != 0);
    } else if (stage == QLatin1String("menu")) {
        world->ClickCard(MENU_BUTTON);
        VERIFY_SOON(world->MenuWindow().id != 0);
    }
    QCOMPARE(kill(static_cast<pid_t>(world->AssistantPid()), signal), 0);
    QVERIFY(world->WaitForDaemonEnd());
    QCOMPARE(world->AssistantStatus(), 0);
    QCOMPARE(world->DaemonStatus(), 1);
    QCOMPARE(DaemonTime(QStringLiteral("exit requested")), -1);
    QCOMPARE(EngineTime(QStringLiteral("ended")) > 0, casts);
    QVERIFY(EngineTime(QStringLiteral("ended")) < DaemonTime(QStringLiteral("assistant ended")));
    QCOMPARE(world->CountLog(QStringLiteral("stop app[0]")), casts ? 1 : 0);
    QVERIFY(!world->HasLog(QStringLiteral("Velodesk closeEvent show exit window.")));
}

void TestEnd::secondSignalDoesNotWaitForTheEngine()
{
    BeginCast(QStringLiteral("ignore-terminate\nreport run\n"));
    const auto assistant = static_cast<pid_t>(world->AssistantPid());
    QCOMPARE(kill(assistant, SIGTERM), 0);
    VERIFY_SOON(world->HasLog(QStringLiteral("terminate process["), ENGINE));
    QCOMPARE(kill(assistant, SIGTERM), 0);
    QVERIFY(world->WaitForDaemonEnd());
    QCOMPARE(world->AssistantStatus(), -1);
    QVERIFY(!world->HasLog(QStringLiteral("kill process["), ENGINE));
}

QTEST_GUILESS_MAIN(TestEnd)
#include "TestEnd.moc"
