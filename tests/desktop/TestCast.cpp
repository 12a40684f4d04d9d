#include <QDir>
#include <QFile>

#include "DesktopTest.h"

class TestCast : public DesktopTest
{
    Q_OBJECT

private slots:
    void cleanup() { world.reset(); }

    void clickStartsAndStopsACast();
    void engineGetsTheDaemonsProcessId();
    void pageShowsCastOnlyAfterTheReport();
    void reportOfTheEngineEndsTheCast();
    void crashEndsTheCast();
    void endedEngineEndsTheCast();
    void engineThatIgnoresTheRequestKeepsRunning();
    void unusableEngineShowsAWarning_data();
    void unusableEngineShowsAWarning();
    void directoryInPlaceOfTheEngineFailsToStart();
    void invalidMessageChangesNothing_data();
    void invalidMessageChangesNothing();
    void repeatedReportReplacesALostOne();
    void closedConnectionIsOpenedAgain();
    void reportOfAnUnsupervisedEngineIsNotShown();
    void closingTheStandInsPhoneEndsTheCast();
    void endOfTheCastClosesTheStandInsPhone();

private:
    void StartCast(const QString& script)
    {
        world->WriteEngineScript(script);
        world->ClickPage(CAST_BUTTON);
        VERIFY_SOON(world->ShowsCasting());
    }
    int CountConnections() const { return world->CountLog(QStringLiteral("New application connected.")); }
    QString EnginePath() const { return world->InstalledDir() + QStringLiteral("/tandra/bin/Tandra"); }
};

void TestCast::clickStartsAndStopsACast()
{
    Begin();
    world->ClickPage(CAST_BUTTON);
    VERIFY_SOON(world->ShowsCasting());
    QCOMPARE(world->CountLog(QStringLiteral("Click start app button.")), 1);
    QCOMPARE(world->CountLog(QStringLiteral("App started.")), 1);
    QVERIFY(world->HasLog(QStringLiteral("started"), ENGINE));
    world->ClickPage(CAST_BUTTON);
    VERIFY_SOON(world->ShowsIdle());
    VERIFY_SOON(EngineTime(QStringLiteral("ended")) > 0);
    QCOMPARE(world->CountLog(QStringLiteral("Click stop app button.")), 1);
    VERIFY_SOON(world->HasLog(QStringLiteral("Process finished, id 0.")));
    QVERIFY(!world->HasLog(QStringLiteral("kill process"), ENGINE));
    // A second cast works in the same way.
    world->ClickPage(CAST_BUTTON);
    VERIFY_SOON(world->ShowsCasting());
}

void TestCast::engineGetsTheDaemonsProcessId()
{
    Begin();
    StartCast(QStringLiteral("report run\n"));
    QString daemonPid;
    for (const DesktopWorld::Event& event : world->DaemonEvents()) {
        if (event.what.startsWith(QLatin1String("serving "))) {
            daemonPid = event.what.section(QLatin1Char(' '), 1);
        }
    }
    QVERIFY(!daemonPid.isEmpty());
    QVERIFY(world->EngineEvents().first().what.endsWith(QStringLiteral(" for ") + daemonPid));
}

void TestCast::pageShowsCastOnlyAfterTheReport()
{
    Begin();
    world->WriteEngineScript(QStringLiteral("report init\nawait phone\nreport run\n"));
    world->ClickPage(CAST_BUTTON);
    VERIFY_SOON(world->HasLog(QStringLiteral("event inited"), ENGINE));
    VERIFY_SOON(world->ShowsIdle());
    Signal(QStringLiteral("phone"));
    VERIFY_SOON(world->ShowsCasting());
}

void TestCast::reportOfTheEngineEndsTheCast()
{
    Begin();
    StartCast(QStringLiteral("report run\nawait phone-disconnected\nreport stop\n"));
    Signal(QStringLiteral("phone-disconnected"));
    VERIFY_SOON(world->ShowsIdle());
    // The process is still running, and the next click starts another one beside it.
    QCOMPARE(EngineTime(QStringLiteral("ended")), -1);
    world->ClickPage(CAST_BUTTON);
    VERIFY_SOON(world->HasLog(QStringLiteral("count is 2")));
}

void TestCast::crashEndsTheCast()
{
    Begin();
    StartCast(QStringLiteral("report run\nawait bang\ncrash\n"));
    Signal(QStringLiteral("bang"));
    VERIFY_SOON(world->ShowsIdle());
    VERIFY_SOON(world->HasLog(QStringLiteral("error: 1"), ENGINE));
    VERIFY_SOON(world->HasLog(QStringLiteral("Process finished, id 9.")));
    QVERIFY(!world->HasLog(QStringLiteral("Tandra startup failed.")));
    QVERIFY(!world->HasLog(QStringLiteral("event stopped"), ENGINE));
}

void TestCast::endedEngineEndsTheCast()
{
    Begin();
    StartCast(QStringLiteral("report run\nawait end\nexit 7\n"));
    Signal(QStringLiteral("end"));
    VERIFY_SOON(world->ShowsIdle());
    VERIFY_SOON(world->HasLog(QStringLiteral("Process finished, id 7.")));
    QVERIFY(!world->HasLog(QStringLiteral("error:"), ENGINE));
}

void TestCast::engineThatIgnoresTheRequestKeepsRunning()
{
    Begin();
    StartCast(QStringLiteral("ignore-terminate\nreport run\n"));
    world->ClickPage(CAST_BUTTON);
    QVERIFY(EngineDid(QStringLiteral("terminate")));
    VERIFY_SOON(world->ShowsCasting());
    world->ClickPage(CAST_BUTTON);
    VERIFY_SOON(world->CountLog(QStringLiteral("terminate process["), ENGINE) == 2);
    QVERIFY(!world->HasLog(QStringLiteral("kill process["), ENGINE));
    VERIFY_SOON(world->ShowsCasting());
}

void TestCast::unusableEngineShowsAWarning_data()
{
    QTest::addColumn<bool>("isPresent");
    QTest::newRow("missing") << false;
    QTest::newRow("not executable") << true;
}

void TestCast::unusableEngineShowsAWarning()
{
    QFETCH(bool, isPresent);
    Begin();
    if (isPresent) {
        QVERIFY(QFile::setPermissions(EnginePath(), QFile::ReadOwner | QFile::WriteOwner));
    } else {
        QVERIFY(QFile::remove(EnginePath()));
    }
    world->ClickPage(CAST_BUTTON);
    VERIFY_SOON(world->SmallWindow().id != 0);
    QCOMPARE(world->CountLog(QStringLiteral("Tandra file corrupted.")), 1);
    world->ClickSmallCard(ONLY_BUTTON);
    VERIFY_SOON(world->SmallWindow().id == 0);
    VERIFY_SOON(world->ShowsIdle());
    QVERIFY(!world->HasLog(QStringLiteral("start app[0]")));
}

void TestCast::directoryInPlaceOfTheEngineFailsToStart()
{
    Begin();
    QVERIFY(QFile::remove(EnginePath()));
    // The check of the file succeeds, because a directory is executable (searchable).
    QVERIFY(QDir().mkdir(EnginePath()));
    world->ClickPage(CAST_BUTTON);
    VERIFY_SOON(world->HasLog(QStringLiteral("Tandra startup failed.")));
    VERIFY_SOON(world->ShowsIdle());
    QCOMPARE(world->SmallWindow().id, 0UL);
}

void TestCast::invalidMessageChangesNothing_data()
{
    QTest::addColumn<QString>("message");
    QTest::addColumn<QString>("errorLine");
    const QString json = QStringLiteral("Json parse error ");
    const QString form = QStringLiteral("UTILS: Message error");
    QTest::newRow("two messages") << R"({"status":"init"}{"status":"run"})" << json;
    QTest::newRow("incomplete") << R"({"status":"ru)" << json;
    QTest::newRow("no JSON") << "run" << json;
    QTest::newRow("array") << R"(["run"])" << form;
    QTest::newRow("no status") << R"({"state":"run"})" << form;
    QTest::newRow("number") << R"({"status":1})" << form;
    QTest::newRow("empty object") << "{}" << form;
    QTest::newRow("unknown status") << R"({"status":"RUN"})" << QString();
}

void TestCast::invalidMessageChangesNothing()
{
    QFETCH(QString, message);
    QFETCH(QString, errorLine);
    Begin();
    world->WriteEngineScript(QStringLiteral("send %1\nawait go\nreport run\n").arg(message));
    const int connected = CountConnections();
    world->ClickPage(CAST_BUTTON);
    VERIFY_SOON(CountConnections() > connected);
    if (!errorLine.isEmpty()) {
        VERIFY_SOON(world->HasLog(errorLine));
    }
    QVERIFY(!world->HasLog(QStringLiteral(" event "), ENGINE));
    VERIFY_SOON(world->ShowsIdle());
    Signal(QStringLiteral("go"));
    VERIFY_SOON(world->ShowsCasting());
    QCOMPARE(world->CountLog(QStringLiteral("[ERROR]")), errorLine.isEmpty() ? 0 : 1);
}

void TestCast::repeatedReportReplacesALostOne()
{
    Begin();
    // Two reports without a pause arrive in one read and are lost. The repeated report a second later is not
    // lost.
    StartCast(QStringLiteral("report init\nreport run\n"));
    VERIFY_SOON(world->ShowsCasting());
}

void TestCast::closedConnectionIsOpenedAgain()
{
    Begin();
    StartCast(QStringLiteral("report run\nawait drop\ndrop\n"));
    const int connected = CountConnections();
    Signal(QStringLiteral("drop"));
    VERIFY_SOON(world->HasLog(QStringLiteral("App close the connect.")));
    VERIFY_SOON(CountConnections() > connected);
    VERIFY_SOON(world->ShowsCasting());
    // The report after the reconnection is no change.
    QCOMPARE(world->CountLog(QStringLiteral("TandraApp.cpp")), 1);
}

void TestCast::reportOfAnUnsupervisedEngineIsNotShown()
{
    Begin();
    // The assistant did not start this engine. The status channel stores its first report, but the page does
    // not show it. The repeated reports are no change.
    QProcess unsupervised;
    unsupervised.setProcessEnvironment(world->Environment());
    world->WriteEngineScript(QStringLiteral("report run\n"));
    unsupervised.start(EnginePath(), {QStringLiteral("1")});
    VERIFY_SOON(world->HasLog(QStringLiteral("TandraApp.cpp")) &&
                world->HasLog(QStringLiteral("count is 0")));
    VERIFY_SOON(world->ShowsIdle());
    const int connected = CountConnections();
    world->ClickPage(CAST_BUTTON);
    VERIFY_SOON(world->HasLog(QStringLiteral("App started.")));
    VERIFY_SOON(CountConnections() > connected);
    VERIFY_SOON(world->ShowsIdle());
    unsupervised.terminate();
    QVERIFY(unsupervised.waitForFinished());
}

void TestCast::closingTheStandInsPhoneEndsTheCast()
{
    Begin();
    StartCast(QStringLiteral("report run\nshow\n"));
    VERIFY_SOON(world->EngineWindow().id != 0);
    world->Desktop().CloseWindow(world->EngineWindow().id);
    VERIFY_SOON(world->ShowsIdle());
    VERIFY_SOON(EngineTime(QStringLiteral("ended")) > 0);
    QVERIFY(EngineTime(QStringLiteral("window closed")) > 0);
}

void TestCast::endOfTheCastClosesTheStandInsPhone()
{
    Begin();
    StartCast(QStringLiteral("report run\nshow\n"));
    VERIFY_SOON(world->EngineWindow().id != 0);
    world->ClickPage(CAST_BUTTON);
    VERIFY_SOON(world->ShowsIdle());
    VERIFY_SOON(world->EngineWindow().id == 0);
    QVERIFY(EngineTime(QStringLiteral("window closed")) < 0);
}

QTEST_GUILESS_MAIN(TestCast)
#include "TestCast.moc"
