#include "DesktopTest.h"

/// Two monitors side by side. The right one is the primary monitor, so its origin is not (0, 0).
class TestMonitors : public DesktopTest
{
    Q_OBJECT

private slots:
    void init()
    {
        DesktopWorld::Options options;
        options.twoMonitors = true;
        Begin(options);
    }
    void cleanup() { world.reset(); }

    void windowIsCentredOnBothMonitors();
    void cardStopsAtThePrimaryMonitorsEdges();
    void questionIsCentredOnTheWindow();
};

void TestMonitors::windowIsCentredOnBothMonitors()
{
    QCOMPARE(world->BigWindow().rect, QRect((2560 - 936) / 2, 128, 936, 544));
}

void TestMonitors::cardStopsAtThePrimaryMonitorsEdges()
{
    const XDesktop& desktop = world->Desktop();
    const QPoint from = world->OnCard(TITLE_STRIP);
    const auto stands = [&](const QRect& rect) {
        const auto windows = desktop.WindowsOf(world->AssistantPid());
        return windows.size() == 1 && windows.first().rect == rect;
    };
    desktop.MoveTo(from);
    desktop.Press();
    // A window that is partly on the other monitor counts as off the desktop and is not clamped. A window
    // inside is.
    desktop.MoveTo(from + QPoint(640, 0));
    VERIFY_SOON(stands(QRect(1452, 128, 936, 544)));
    desktop.MoveTo(from + QPoint(1400, 0));
    VERIFY_SOON(stands(QRect(2560 - 916, 128, 916, 544)));
    // Its shadow crosses the left edge, so the window is off the desktop again.
    desktop.MoveTo(from + QPoint(300, 0));
    VERIFY_SOON(stands(QRect(1260, 128, 936, 544)));
    desktop.Release();
}

void TestMonitors::questionIsCentredOnTheWindow()
{
    const QRect window = world->BigWindow().rect;
    world->ClickCard(CLOSE_BUTTON);
    VERIFY_SOON(world->SmallWindow().rect == QRect(window.center() - QPoint(169, 103), QSize(340, 208)));
    ConfirmQuit();
    QCOMPARE(world->AssistantStatus(), 0);
}

QTEST_GUILESS_MAIN(TestMonitors)
#include "TestMonitors.moc"
