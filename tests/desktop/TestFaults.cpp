#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLocalSocket>
#include <QProcess>
#include <csignal>
#include <sys/resource.h>

#include "DesktopTest.h"
#include "support/Lists.h"

class TestFaults : public DesktopTest
{
    Q_OBJECT

private slots:
    void cleanup() { world.reset(); }

    void engineThatCrashesImmediatelyLeavesThePageIdle();
    void quitSucceedsWhenTheEngineLeavesAChildBehind();
    void programSurvivesAFloodOfMessages_data();
    void programSurvivesAFloodOfMessages();
    void programSurvivesALackOfDescriptors();
    void programSurvivesAnEngineThatPrints();
    void engineReceivesEndOfInputWhenTheProgramIsKilled();
    void programSurvivesAThousandConnections();
    void quitSucceedsWithoutABus();
    void quitSucceedsWhenReplyComesFromAnotherProcess_data();
    void quitSucceedsWhenReplyComesFromAnotherProcess();
    void unusableSettingsAreNotChanged_data();
    void unusableSettingsAreNotChanged();
    void settingsAreWrittenToTheTargetOfALink();
    void permissionsOfTheSettingsAreRestored_data();
    void permissionsOfTheSettingsAreRestored();
    void removedLogDirectoryDoesNotStopTheProgram();
    void homeWithoutPermissionsEndsTheStart();
    void socketOfAnotherUserEndsTheStart();
    void lostDisplayEndsTheProgramAndTheEngine();
    void programSurvivesTheEndOfTheWindowManager();
    void simultaneousStartsEndInOrder();

private:
    void WriteSettings(const QByteArray& content) const
    {
        QVERIFY(QDir().mkpath(world->Home() + QStringLiteral("/Velodesk")));
        QFile file(SettingsPath());
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(content);
    }
    QByteArray Settings() const
    {
        QFile file(SettingsPath());
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    QString SettingsPath() const { return world->Home() + QStringLiteral("/Velodesk/velodesk.conf"); }
    void QuitThroughTheWindow()
    {
        world->ClickCard(CLOSE_BUTTON);
        VERIFY_SOON(world->SmallWindow().id != 0);
        world->ClickSmallCard(RIGHT_BUTTON);
        VERIFY_SOON(world->AssistantStatus() == 0);
    }
    void VerifyThatACastStarts()
    {
        world->WriteEngineScript(QStringLiteral("report run\n"));
        world->ClickPage(CAST_BUTTON);
        VERIFY_SOON(world->ShowsCasting());
    }
    static bool HasEnded(qint64 pid) { return kill(static_cast<pid_t>(pid), 0) != 0; }
    qint64 EnginePid() const
    {
        return world->EngineEvents().value(0).what.section(QLatin1Char(' '), 1, 1).toLongLong();
    }
};

void TestFaults::engineThatCrashesImmediatelyLeavesThePageIdle()
{
    Begin();
    world->WriteEngineScript(QStringLiteral("crash\n"));
    for (int i = 1; i <= 3; ++i) {
        world->ClickPage(CAST_BUTTON);
        VERIFY_SOON(world->CountLog(QStringLiteral("Process finished, id 9.")) == i);
        VERIFY_SOON(world->ShowsIdle());
    }
    QCOMPARE(world->SmallWindow().id, 0UL);
    VerifyThatACastStarts();
}

void TestFaults::quitSucceedsWhenTheEngineLeavesAChildBehind()
{
    Begin();
    world->WriteEngineScript(QStringLiteral("report run\nlinger\n"));
    world->ClickPage(CAST_BUTTON);
    VERIFY_SOON(world->ShowsCasting());
    QVERIFY(EngineDid(QStringLiteral("left behind")));
    QuitThroughTheWindow();
    QVERIFY(EngineTime(QStringLiteral("ended")) > 0);
    QVERIFY(!world->HasLog(QStringLiteral("kill process["), ENGINE));
    for (const DesktopWorld::Event& event : world->EngineEvents()) {
        if (event.what.startsWith(QLatin1String("left behind "))) {
            kill(event.what.section(QLatin1Char(' '), 2).toInt(), SIGKILL);
        }
    }
}

void TestFaults::programSurvivesAFloodOfMessages_data()
{
    QTest::addColumn<QString>("script");
    QTest::newRow("messages") << R"(flood 20000 {"status":"run"})";
    QTest::newRow("a megabyte") << "bulk 1048576";
    QTest::newRow("nested brackets") << "flood 100000 [";
}

void TestFaults::programSurvivesAFloodOfMessages()
{
    QFETCH(QString, script);
    Begin();
    world->WriteEngineScript(script + QStringLiteral("\nawait go\nreport run\n"));
    world->ClickPage(CAST_BUTTON);
    VERIFY_SOON(world->HasLog(QStringLiteral("Json parse error ")));
    Signal(QStringLiteral("go"));
    VERIFY_SOON(world->ShowsCasting());
    world->ClickPage(CAST_BUTTON);
    VERIFY_SOON(world->ShowsIdle());
}

void TestFaults::programSurvivesALackOfDescriptors()
{
    Begin();
    const auto pid = static_cast<pid_t>(world->AssistantPid());
    const QString status = world->Home() + QStringLiteral("/Velodesk/TandraIpc");
    const QString instance =
        world->Environment().value(QStringLiteral("TMPDIR")) + QStringLiteral("/VelodeskServer");
    rlimit before{};
    QCOMPARE(prlimit(pid, RLIMIT_NOFILE, nullptr, &before), 0);
    // Leaves no free descriptor. Only the closing of a listening socket makes one free.
    rlim_t first = 0;
    while (QFileInfo(QStringLiteral("/proc/%1/fd/%2").arg(pid).arg(first)).isSymLink()) {
        ++first;
    }
    const rlimit few{first, before.rlim_max};
    QCOMPARE(prlimit(pid, RLIMIT_NOFILE, &few, nullptr), 0);
    int closed = 0;
    for (const QString& path : {status, instance}) {
        QLocalSocket client;
        client.connectToServer(path);
        ++closed;
        VERIFY_SOON(world->CountLog(QStringLiteral("Local server closed, listen again.")) == closed);
    }
    QCOMPARE(prlimit(pid, RLIMIT_NOFILE, &before, nullptr), 0);
    VerifyThatACastStarts();
    QCOMPARE(world->StartSecond(), 0);
    VERIFY_SOON(world->HasLog(QStringLiteral("Active application.")));
}

void TestFaults::programSurvivesAnEngineThatPrints()
{
    Begin();
    const int before = world->AssistantMemory();
    world->WriteEngineScript(QStringLiteral("print 104857600\nreport run\n"));
    world->ClickPage(CAST_BUTTON);
    VERIFY_SOON(world->ShowsCasting());
    const int grown = world->AssistantMemory() - before;
    QVERIFY2(grown < 16384, qPrintable(QString::number(grown)));
}

void TestFaults::engineReceivesEndOfInputWhenTheProgramIsKilled()
{
    Begin();
    world->WriteEngineScript(QStringLiteral("report run\nawait-end-of-input\n"));
    world->ClickPage(CAST_BUTTON);
    VERIFY_SOON(world->ShowsCasting());
    QCOMPARE(kill(static_cast<pid_t>(world->AssistantPid()), SIGKILL), 0);
    QVERIFY(EngineDid(QStringLiteral("end of input")));
}

void TestFaults::programSurvivesAThousandConnections()
{
    Begin();
    world->WriteEngineScript(QStringLiteral("connections 1000\nreport run\n"));
    world->ClickPage(CAST_BUTTON);
    QVERIFY(EngineDid(QStringLiteral("connections made")));
    VERIFY_SOON(world->ShowsCasting());
    VERIFY_SOON(world->CountLog(QStringLiteral("App close the connect.")) == 1000);
    // Closed connections use no descriptors.
    const QDir descriptors(QStringLiteral("/proc/%1/fd").arg(world->AssistantPid()));
    QVERIFY(descriptors.entryList(QDir::NoDotAndDotDot | QDir::AllEntries | QDir::System).size() < 100);
}

void TestFaults::quitSucceedsWithoutABus()
{
    Begin();
    VerifyThatACastStarts();
    world->EndSystemBus();
    QuitThroughTheWindow();
    QVERIFY(EngineTime(QStringLiteral("ended")) > 0);
    QVERIFY(world->HasLog(QStringLiteral("Failed to connect to system bus: ")));
    QVERIFY(world->HasLog(QStringLiteral("Velodesk exit.")));
}

void TestFaults::quitSucceedsWhenReplyComesFromAnotherProcess_data()
{
    QTest::addColumn<QString>("how");
    QTest::addColumn<QString>("line");
    QTest::newRow("another process") << "other-process"
                                     << "Failed to msg reply id: ";
    QTest::newRow("wrong type") << "wrong-type"
                                << "sd_bus_message_read failed.";
}

void TestFaults::quitSucceedsWhenReplyComesFromAnotherProcess()
{
    QFETCH(QString, how);
    QFETCH(QString, line);
    Begin({}, false);
    QVERIFY(world->StartAssistant({QStringLiteral("--misbehave"), how}));
    VERIFY_SOON(world->ShowsIdle());
    world->ClickCard(CLOSE_BUTTON);
    ConfirmQuit();
    QCOMPARE(world->AssistantStatus(), 0);
    QVERIFY2(world->HasLog(line), qPrintable(world->Log().join(QLatin1Char('\n'))));
    QVERIFY(world->HasLog(QStringLiteral("Velodesk exit.")));
}

void TestFaults::unusableSettingsAreNotChanged_data()
{
    QTest::addColumn<QByteArray>("content");
    const QByteArray agreed = "[VelodeskServer]\nstatement=true\n";
    QTest::newRow("blank line") << agreed + "\n[Tandra]\ndevicename=a\n";
    QTest::newRow("line that begins with =") << agreed + "=x\n";
    QTest::newRow("empty section") << agreed + "[]\na=b\n";
    QByteArray large = agreed + "[x]\nk=";
    large += QByteArray(1048577 - large.size(), 'v');
    QTest::newRow("one byte too large") << large;
}

void TestFaults::unusableSettingsAreNotChanged()
{
    QFETCH(QByteArray, content);
    DesktopWorld::Options options;
    options.agreed = false;
    Begin(options, false);
    WriteSettings(content);
    // The program shows the agreement again. Accepting it is effective in this run but not stored.
    QVERIFY(world->StartAssistant());
    VERIFY_SOON(world->Desktop().PixelAt(world->OnCard(BEGIN_EDGE)) == GREY_BUTTON);
    world->ClickCard(AGREE_TICK);
    VERIFY_SOON(world->Desktop().PixelAt(world->OnCard(BEGIN_EDGE)) == BLUE);
    world->ClickCard(BEGIN_BUTTON);
    VERIFY_SOON(world->HasLog(QStringLiteral("Mainwindow start.")) && world->ShowsIdle());
    VerifyThatACastStarts();
    QuitThroughTheWindow();
    QCOMPARE(Settings(), content);
}

void TestFaults::settingsAreWrittenToTheTargetOfALink()
{
    Begin({}, false);
    const QString target = world->Home() + QStringLiteral("/real.conf");
    QVERIFY(QFile::rename(SettingsPath(), target));
    QVERIFY(QFile::link(target, SettingsPath()));
    QVERIFY(world->StartAssistant());
    VERIFY_SOON(world->SettingsText().contains(QStringLiteral("devicename=Tandra")));
    QVERIFY(QFileInfo(SettingsPath()).isSymLink());
    // The file is written line by line.
    VERIFY_SOON(Settings().contains("statement=true"));
}

void TestFaults::permissionsOfTheSettingsAreRestored_data()
{
    QTest::addColumn<int>("mode");
    QTest::newRow("readable by all") << 0x6644;
    QTest::newRow("read only") << 0x4400;
    QTest::newRow("no permission") << 0;
}

void TestFaults::permissionsOfTheSettingsAreRestored()
{
    QFETCH(int, mode);
    Begin({}, false);
    QVERIFY(QFile::setPermissions(SettingsPath(), static_cast<QFile::Permissions>(mode)));
    QVERIFY(world->StartAssistant());
    VERIFY_SOON(world->SettingsText().contains(QStringLiteral("devicename=Tandra")));
    QCOMPARE(QFileInfo(SettingsPath()).permissions() & ~(QFile::ReadUser | QFile::WriteUser),
             QFile::ReadOwner | QFile::WriteOwner);
}

void TestFaults::removedLogDirectoryDoesNotStopTheProgram()
{
    Begin();
    QVERIFY(QDir(world->Home() + QStringLiteral("/Velodesk/log")).removeRecursively());
    VerifyThatACastStarts();
    world->ClickPage(CAST_BUTTON);
    VERIFY_SOON(world->ShowsIdle());
    QuitThroughTheWindow();
    COMPARE_LISTS(world->Log(), QStringList());
}

void TestFaults::homeWithoutPermissionsEndsTheStart()
{
    DesktopWorld::Options options;
    options.agreed = false;
    Begin(options, false);
    const QFile::Permissions all = QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner;
    QVERIFY(QFile::setPermissions(world->Home(), QFile::ReadOwner | QFile::ExeOwner));
    const int status = world->RunProgram({QStringLiteral("Velodesk"), QStringLiteral("1")});
    QVERIFY(QFile::setPermissions(world->Home(), all));
    QCOMPARE(status, 1);
    QVERIFY(!QFileInfo::exists(world->Home() + QStringLiteral("/Velodesk")));
}

void TestFaults::socketOfAnotherUserEndsTheStart()
{
    Begin({}, false);
    // No process listens on the socket, and the program cannot remove it, as in a sticky folder.
    const QString folder = world->Environment().value(QStringLiteral("TMPDIR"));
    QFile socket(folder + QStringLiteral("/VelodeskServer"));
    QVERIFY(socket.open(QIODevice::WriteOnly));
    QVERIFY(QFile::setPermissions(folder, QFile::ReadOwner | QFile::ExeOwner));
    const int status = world->RunProgram({QStringLiteral("Velodesk"), QStringLiteral("1")});
    QVERIFY(QFile::setPermissions(folder, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    QCOMPARE(status, 1);
    QVERIFY(world->HasLog(QStringLiteral("Start localserver failed.")));
    QVERIFY(world->HasLog(QStringLiteral("Init application connection failed.")));
}

void TestFaults::lostDisplayEndsTheProgramAndTheEngine()
{
    Begin();
    VerifyThatACastStarts();
    const qint64 engine = EnginePid();
    world->EndServer();
    QVERIFY(world->WaitForDaemonEnd());
    // Qt calls exit(), so the singletons are destroyed in order and the engine is stopped.
    QVERIFY(EngineTime(QStringLiteral("ended")) > 0);
    QVERIFY(HasEnded(engine));
    QCOMPARE(DaemonTime(QStringLiteral("exit requested")), -1);
}

void TestFaults::programSurvivesTheEndOfTheWindowManager()
{
    Begin();
    world->EndWindowManager();
    VerifyThatACastStarts();
    QuitThroughTheWindow();
}

void TestFaults::simultaneousStartsEndInOrder()
{
    Begin({}, false);
    constexpr int ROUNDS = 50;
    const QStringList command{QStringLiteral("Velodesk"), QStringLiteral("1")};
    int failedStarts = 0;
    for (int round = 0; round < ROUNDS; ++round) {
        // Writes the file in each round, because killing a program can leave it empty.
        WriteSettings("[VelodeskServer]\nstatement=true\n");
        const auto one = world->LaunchProgram(command);
        const auto other = world->LaunchProgram(command);
        // Each program has one of three results: it shows its window; it finds the other instance and exits
        // with 0; or it cannot listen on the socket and exits with 1. Both can show a window, but at least
        // one must. A program that reads the settings while the other writes them shows the agreement.
        const auto bothHaveDecided = [&] {
            one->waitForFinished(0);
            other->waitForFinished(0);
            const int ended = (one->state() == QProcess::NotRunning ? 1 : 0) +
                              (other->state() == QProcess::NotRunning ? 1 : 0);
            return world->CountBigWindows() + ended == 2;
        };
        VERIFY_SOON(bothHaveDecided());
        int running = 0;
        for (QProcess* process : {one.get(), other.get()}) {
            if (process->state() == QProcess::NotRunning) {
                QCOMPARE(process->exitStatus(), QProcess::NormalExit);
                failedStarts += process->exitCode();
            } else {
                ++running;
            }
        }
        QVERIFY2(running >= 1, qPrintable(QString::number(round)));
        QCOMPARE(world->CountLog(QStringLiteral("Init application connection failed.")), failedStarts);
        for (QProcess* process : {one.get(), other.get()}) {
            process->kill();
            process->waitForFinished();
        }
        VERIFY_SOON(world->CountBigWindows() == 0);
    }
}

QTEST_GUILESS_MAIN(TestFaults)
#include "TestFaults.moc"
