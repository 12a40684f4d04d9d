#include "DesktopTest.h"

/// Verifies that the program uses the X server in a Wayland session, although Qt's Wayland plug-in is
/// installed.
class TestWayland : public DesktopTest
{
    Q_OBJECT

private slots:
    void cleanup() { world.reset(); }

    void windowIsOnTheXServer_data();
    void windowIsOnTheXServer();
    void secondStartActivatesTheFirst();

private:
    void BeginSession(bool agreed = true)
    {
        DesktopWorld::Options options;
        options.wayland = true;
        options.agreed = agreed;
        Begin(options, false);
    }
    std::unique_ptr<QProcess> Launch() const
    {
        return world->LaunchProgram({QStringLiteral("Velodesk"), QStringLiteral("1")});
    }
};

void TestWayland::windowIsOnTheXServer_data()
{
    QTest::addColumn<QString>("desktop");
    QTest::addColumn<bool>("agreed");
    QTest::newRow("main window") << QString() << true;
    QTest::newRow("agreement") << QString() << false;
    QTest::newRow("GNOME") << QStringLiteral("GNOME") << true;
    QTest::newRow("KDE") << QStringLiteral("KDE") << true;
}

void TestWayland::windowIsOnTheXServer()
{
    QFETCH(QString, desktop);
    QFETCH(bool, agreed);
    BeginSession(agreed);
    world->SetVariable(QStringLiteral("XDG_CURRENT_DESKTOP"), desktop);
    const auto program = Launch();
    VERIFY_SOON(world->CountBigWindows() == 1);
    program->kill();
    program->waitForFinished();
}

void TestWayland::secondStartActivatesTheFirst()
{
    BeginSession();
    const auto program = Launch();
    VERIFY_SOON(world->CountBigWindows() == 1);
    QCOMPARE(world->StartSecond(), 0);
    VERIFY_SOON(world->HasLog(QStringLiteral("Active application.")));
    QVERIFY(!world->HasLog(QStringLiteral("Get window display failed.")));
    program->kill();
    program->waitForFinished();
}

QTEST_GUILESS_MAIN(TestWayland)
#include "TestWayland.moc"
