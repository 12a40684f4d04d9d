#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>
#include <csignal>

#include "DesktopTest.h"

class TestStart : public DesktopTest
{
    Q_OBJECT

private slots:
    void cleanup() { world.reset(); }

    void wrongCommandLineEndsTheStart_data();
    void wrongCommandLineEndsTheStart();
    void homeUnsetEndsTheStart();
    void acceptedAgreementIsNotShownAgain();
    void windowsHaveTheProgramsIcon_data();
    void windowsHaveTheProgramsIcon();
    void acceptingIsStoredAndShowsTheMainWindow();
    void secondTickDisablesTheButton();
    void closeButtonOfTheAgreementEndsTheDaemonToo();
    void closeCommandOfTheAgreementDoesNotEndTheDaemon();
    void minimisedAgreementKeepsItsTick();
    void secondStartRaisesTheWindow_data();
    void secondStartRaisesTheWindow();
    void staleSocketIsReplaced();
    void programStartsWithUnwritableSettings();
    void noOpenGlIsLoaded_data();
    void noOpenGlIsLoaded();
    void noOtherFontsAreRead();
    void openGlChoiceOfTheUserIsKept();

private:
    QByteArray ProcFile(qint64 pid, const char* name) const
    {
        QFile file(QStringLiteral("/proc/%1/%2").arg(pid).arg(QLatin1String(name)));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    /// Starts the engine and returns its environment.
    QByteArray EngineEnvironment()
    {
        world->ClickPage(CAST_BUTTON);
        DesktopWorld::WaitFor([this] { return world->ShowsCasting(); });
        const qint64 pid = world->EngineEvents().value(0).what.section(QLatin1Char(' '), 1, 1).toLongLong();
        return ProcFile(pid, "environ");
    }
};

void TestStart::wrongCommandLineEndsTheStart_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("message");
    const QString name = QStringLiteral("Velodesk");
    QTest::newRow("none") << QStringList{name} << "param number error!";
    QTest::newRow("two") << QStringList{name, "1", "2"} << "param number error!";
    QTest::newRow("path") << QStringList{"/usr/bin/Velodesk", "1234"} << "command analyze error!";
    QTest::newRow("case") << QStringList{"velodesk", "1234"} << "command analyze error!";
    QTest::newRow("letters") << QStringList{name, "abc"} << "param analyze error!";
    QTest::newRow("too large") << QStringList{name, "4294967296"} << "param analyze error!";
}

void TestStart::wrongCommandLineEndsTheStart()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, message);
    Begin({}, false);
    // The program fails before it needs the display.
    QCOMPARE(world->RunProgram(arguments, {QStringLiteral("DISPLAY")}), 1);
    QVERIFY(world->Log().last().endsWith(QStringLiteral("VELODESK: ") + message));
    QVERIFY(world->Log().last().startsWith(QLatin1String("[ERROR] [VeloMain.cpp:")));
    QCOMPARE(world->BigWindow().id, 0UL);
}

void TestStart::homeUnsetEndsTheStart()
{
    Begin({}, false);
    QCOMPARE(world->RunProgram({QStringLiteral("Velodesk"), QStringLiteral("1")}, {QStringLiteral("HOME")}),
             1);
    QVERIFY(!QFileInfo::exists(QStringLiteral("/Velodesk")));
}

void TestStart::acceptedAgreementIsNotShownAgain()
{
    Begin();
    VERIFY_SOON(world->ShowsIdle());
    QCOMPARE(world->CountLog(QStringLiteral("Mainwindow start.")), 1);
    const QRect rect = world->BigWindow().rect;
    QCOMPARE(rect.topLeft(), QPoint((1280 - rect.width()) / 2, (800 - rect.height()) / 2));
}

void TestStart::windowsHaveTheProgramsIcon_data()
{
    QTest::addColumn<bool>("agreed");
    QTest::newRow("agreement") << false;
    QTest::newRow("main window") << true;
}

void TestStart::windowsHaveTheProgramsIcon()
{
    QFETCH(bool, agreed);
    DesktopWorld::Options options;
    options.agreed = agreed;
    Begin(options);
    const QImage icon = world->Desktop().IconOf(world->BigWindow().id);
    QCOMPARE(icon.convertToFormat(QImage::Format_ARGB32_Premultiplied),
             QImage(QStringLiteral(VELODESK_SOURCE_DIR "/src/resources/pictures/logo.png"))
                 .convertToFormat(QImage::Format_ARGB32_Premultiplied));
}

void TestStart::acceptingIsStoredAndShowsTheMainWindow()
{
    DesktopWorld::Options options;
    options.agreed = false;
    Begin(options);
    // The program creates the status channel only after the user has accepted the agreement.
    const QString channel = world->Home() + QStringLiteral("/Velodesk/TandraIpc");
    QVERIFY(!QFileInfo::exists(channel));
    QCOMPARE(world->SettingsText(), QString());
    world->ClickCard(AGREE_TEXT);
    VERIFY_SOON(world->Desktop().PixelAt(world->OnCard(BEGIN_EDGE)) == BLUE);
    world->ClickCard(BEGIN_BUTTON);
    VERIFY_SOON(world->HasLog(QStringLiteral("Mainwindow start.")) && world->ShowsIdle());
    QVERIFY(QFileInfo::exists(channel));
    QVERIFY(world->SettingsText().contains(QStringLiteral("[VelodeskServer]\nstatement=true\n")));
    QVERIFY(world->SettingsText().contains(QStringLiteral("devicename=Tandra\n")));
    QVERIFY(world->SettingsText().contains(QStringLiteral("fileStorePath=%1/Desktop\n").arg(world->Home())));
    world->ClickCard(CLOSE_BUTTON);
    ConfirmQuit();
    QCOMPARE(world->AssistantStatus(), 0);
    QCOMPARE(world->DaemonStatus(), 0);
    // The next run does not show the agreement.
    QVERIFY(world->StartAssistant());
    VERIFY_SOON(world->CountLog(QStringLiteral("Mainwindow start.")) == 2 && world->ShowsIdle());
}

void TestStart::secondTickDisablesTheButton()
{
    DesktopWorld::Options options;
    options.agreed = false;
    Begin(options);
    VERIFY_SOON(world->Desktop().PixelAt(world->OnCard(BEGIN_EDGE)) == GREY_BUTTON);
    world->ClickCard(AGREE_TICK);
    VERIFY_SOON(world->Desktop().PixelAt(world->OnCard(BEGIN_EDGE)) == BLUE);
    world->ClickCard(AGREE_TEXT);
    VERIFY_SOON(world->Desktop().PixelAt(world->OnCard(BEGIN_EDGE)) == GREY_BUTTON);
    world->ClickCard(BEGIN_BUTTON);
    // The second click has an effect, which verifies that the first click was handled and had none.
    world->ClickCard(AGREE_TICK);
    VERIFY_SOON(world->Desktop().PixelAt(world->OnCard(BEGIN_EDGE)) == BLUE);
    QVERIFY(!world->HasLog(QStringLiteral("Mainwindow start.")));
}

void TestStart::closeButtonOfTheAgreementEndsTheDaemonToo()
{
    DesktopWorld::Options options;
    options.agreed = false;
    Begin(options);
    world->ClickCard(CLOSE_BUTTON);
    QVERIFY(world->WaitForDaemonEnd());
    QCOMPARE(world->AssistantStatus(), 0);
    QCOMPARE(world->DaemonStatus(), 0);
    QVERIFY(!world->HasLog(QStringLiteral("Mainwindow start.")));
    QVERIFY(!world->HasLog(QStringLiteral("AppManager ReAllocResource")));
    QCOMPARE(world->SettingsText(), QString());
}

void TestStart::closeCommandOfTheAgreementDoesNotEndTheDaemon()
{
    DesktopWorld::Options options;
    options.agreed = false;
    Begin(options);
    world->Desktop().CloseWindow(world->BigWindow().id);
    QVERIFY(world->WaitForDaemonEnd());
    QCOMPARE(world->AssistantStatus(), 0);
    QCOMPARE(world->DaemonStatus(), 1);
    QCOMPARE(DaemonTime(QStringLiteral("exit requested")), -1);
    QVERIFY(!world->HasLog(QStringLiteral("Mainwindow start.")));
}

void TestStart::minimisedAgreementKeepsItsTick()
{
    DesktopWorld::Options options;
    options.agreed = false;
    Begin(options);
    world->ClickCard(AGREE_TICK);
    VERIFY_SOON(world->Desktop().PixelAt(world->OnCard(BEGIN_EDGE)) == BLUE);
    const unsigned long id = world->BigWindow().id;
    world->ClickCard(MINIMISE_BUTTON);
    VERIFY_SOON(!world->Desktop().IsShown(id));
    QCOMPARE(world->StartSecond(), 0);
    VERIFY_SOON(world->BigWindow().id == id && world->Desktop().PixelAt(world->OnCard(BEGIN_EDGE)) == BLUE);
}

void TestStart::secondStartRaisesTheWindow_data()
{
    QTest::addColumn<bool>("agreed");
    QTest::newRow("agreement") << false;
    QTest::newRow("main window") << true;
}

void TestStart::secondStartRaisesTheWindow()
{
    QFETCH(bool, agreed);
    DesktopWorld::Options options;
    options.agreed = agreed;
    Begin(options);
    const unsigned long id = world->BigWindow().id;
    world->Desktop().Minimise(id);
    VERIFY_SOON(!world->Desktop().IsShown(id));
    QCOMPARE(world->StartSecond(), 0);
    VERIFY_SOON(world->Desktop().IsShown(id) && world->Desktop().ActiveWindow() == id);
    QCOMPARE(world->CountLog(QStringLiteral("Application already running.")), 2);
    QCOMPARE(world->CountLog(QStringLiteral("Active application.")), 1);
}

void TestStart::staleSocketIsReplaced()
{
    Begin();
    QCOMPARE(kill(static_cast<pid_t>(world->AssistantPid()), SIGKILL), 0);
    QVERIFY(world->WaitForDaemonEnd());
    QVERIFY(QFileInfo::exists(world->Environment().value(QStringLiteral("TMPDIR")) +
                              QStringLiteral("/VelodeskServer")));
    QVERIFY(world->StartAssistant());
    // Both sockets work again.
    QCOMPARE(world->StartSecond(), 0);
    VERIFY_SOON(world->HasLog(QStringLiteral("Active application.")));
    world->ClickPage(CAST_BUTTON);
    VERIFY_SOON(world->ShowsCasting());
}

void TestStart::programStartsWithUnwritableSettings()
{
    DesktopWorld::Options options;
    options.agreed = false;
    Begin(options, false);
    // A directory with the file's name can be neither read nor written.
    QVERIFY(QDir(world->Home()).mkpath(QStringLiteral("Velodesk/velodesk.conf")));
    QVERIFY(world->StartAssistant());
    world->ClickCard(AGREE_TICK);
    VERIFY_SOON(world->Desktop().PixelAt(world->OnCard(BEGIN_EDGE)) == BLUE);
    world->ClickCard(BEGIN_BUTTON);
    VERIFY_SOON(world->HasLog(QStringLiteral("Mainwindow start.")) && world->ShowsIdle());
}

void TestStart::noOpenGlIsLoaded_data()
{
    QTest::addColumn<bool>("agreed");
    QTest::newRow("main window first") << true;
    QTest::newRow("agreement first") << false;
}

void TestStart::noOpenGlIsLoaded()
{
    QFETCH(bool, agreed);
    DesktopWorld::Options options;
    options.agreed = agreed;
    Begin(options);
    if (!agreed) {
        world->ClickCard(AGREE_TICK);
        VERIFY_SOON(world->Desktop().PixelAt(world->OnCard(BEGIN_EDGE)) == BLUE);
        world->ClickCard(BEGIN_BUTTON);
        VERIFY_SOON(world->HasLog(QStringLiteral("Mainwindow start.")) && world->ShowsIdle());
    }
    const QByteArray maps = ProcFile(world->AssistantPid(), "maps");
    QVERIFY(maps.contains("libqxcb"));
    // Qt itself loads the dispatch library, but no driver may be loaded.
    QVERIFY(!maps.contains("libGLX_"));
    QVERIFY(!maps.contains("glx-integration"));
    const QByteArray environment = EngineEnvironment();
    QVERIFY(environment.contains("HOME="));
    for (const char* name :
         {"QT_XCB_GL_INTEGRATION", "QT_QPA_PLATFORM", "QT_FONT_DPI", "QT_STYLE_OVERRIDE"}) {
        QVERIFY2(!environment.contains(name), name);
    }
}

void TestStart::noOtherFontsAreRead()
{
    Begin();
    VERIFY_SOON(world->ShowsIdle());
    const QString maps = QString::fromUtf8(ProcFile(world->AssistantPid(), "maps"));
    const QStringList fonts =
        maps.split(QLatin1Char('\n')).filter(QRegularExpression(QStringLiteral("\\.(ttf|ttc|otf|pfb|pcf)")));
    QVERIFY(!fonts.isEmpty());
    QCOMPARE(fonts.filter(QStringLiteral("/NotoSansCJK-")), fonts);
}

void TestStart::openGlChoiceOfTheUserIsKept()
{
    Begin({}, false);
    world->SetVariable(QStringLiteral("QT_XCB_GL_INTEGRATION"), QStringLiteral("xcb_glx"));
    QVERIFY(world->StartAssistant());
    VERIFY_SOON(world->ShowsIdle());
    QVERIFY(ProcFile(world->AssistantPid(), "maps").contains("glx-integration"));
    QVERIFY(EngineEnvironment().contains("QT_XCB_GL_INTEGRATION=xcb_glx"));
}

QTEST_GUILESS_MAIN(TestStart)
#include "TestStart.moc"
