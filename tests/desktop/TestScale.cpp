#include "DesktopTest.h"

/// Verifies sizes, positions and behaviour of the windows with a scale factor of the user.
class TestScale : public DesktopTest
{
    Q_OBJECT

private slots:
    void cleanup() { world.reset(); }

    void windowsAreScaled_data();
    void windowsAreScaled();
    void cardStopsAtTheScreensEdge_data() { windowsAreScaled_data(); }
    void cardStopsAtTheScreensEdge();
    void clickOnTheShadowReachesTheWindowBehind_data() { windowsAreScaled_data(); }
    void clickOnTheShadowReachesTheWindowBehind();

private:
    /// Begins with a screen of 1280 by 800 device-independent pixels.
    void BeginScaled()
    {
        QFETCH(qreal, scale);
        DesktopWorld::Options options;
        options.scale = scale;
        options.screen = QSize(1280, 800) * scale;
        Begin(options);
    }
    QRect Scaled(const QRect& rect) const
    {
        QFETCH(qreal, scale);
        return {rect.topLeft() * scale, rect.size() * scale};
    }
};

void TestScale::windowsAreScaled_data()
{
    QTest::addColumn<qreal>("scale");
    QTest::newRow("1.25") << 1.25;
    QTest::newRow("1.5") << 1.5;
    QTest::newRow("2") << 2.0;
}

void TestScale::windowsAreScaled()
{
    QFETCH(qreal, scale);
    BeginScaled();
    QCOMPARE(world->BigWindow().rect, Scaled(QRect(172, 128, 936, 544)));
    world->ClickPage(CAST_BUTTON);
    VERIFY_SOON(world->ShowsCasting());
    world->ClickPage(CAST_BUTTON);
    VERIFY_SOON(world->ShowsIdle());
    // The menu's card has the right edge of the button and begins directly below it.
    world->ClickCard(MENU_BUTTON);
    VERIFY_SOON(world->MenuWindow().id != 0);
    QCOMPARE(world->MenuWindow().rect, Scaled(QRect(172 + 20 + 784 - 96 - 20, 128 + 20 + 44 - 20, 136, 148)));
    world->Desktop().Key(QStringLiteral("Escape"));
    VERIFY_SOON(world->MenuWindow().id == 0);
    QVERIFY(world->ChooseFromMenu(2));
    VERIFY_SOON(world->HasLog(QStringLiteral("Velodesk show about page.")));
    world->ClickCard(CLOSE_BUTTON);
    VERIFY_SOON(world->SmallWindow().id != 0);
    QCOMPARE(world->SmallWindow().rect.size(), QSize(340, 208) * scale);
    ConfirmQuit();
    QCOMPARE(world->AssistantStatus(), 0);
}

void TestScale::cardStopsAtTheScreensEdge()
{
    QFETCH(qreal, scale);
    BeginScaled();
    const XDesktop& desktop = world->Desktop();
    const QPoint from = world->OnCard(TITLE_BAR);
    desktop.MoveTo(from);
    desktop.Press();
    for (int step = 1; step <= 10; ++step) {
        desktop.MoveTo(from + QPoint(-700, -500) * scale * step / 10);
    }
    VERIFY_SOON([&] {
        const auto windows = desktop.WindowsOf(world->AssistantPid());
        return windows.size() == 1 && windows.first().rect == Scaled(QRect(0, 0, 916, 524));
    }());
    desktop.Release();
}

void TestScale::clickOnTheShadowReachesTheWindowBehind()
{
    BeginScaled();
    const XDesktop& desktop = world->Desktop();
    desktop.MoveTo(world->OnCard(QPoint(300, 300)));
    VERIFY_SOON(desktop.WindowUnderPointer() != 0);
    desktop.MoveTo(world->OnCard(QPoint(300, -12)));
    VERIFY_SOON(desktop.WindowUnderPointer() == 0);
    desktop.MoveTo(world->OnCard(QPoint(300, 300)));
    VERIFY_SOON(desktop.WindowUnderPointer() != 0);
}

QTEST_GUILESS_MAIN(TestScale)
#include "TestScale.moc"
