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
    const QPoint from = world->OnCard(TITLE_BAR);
    const auto windowIsAt = [&](const QRect& rect) {
        const auto windows = desktop.WindowsOf(world->AssistantPid());
        return windows.size() == 1 && windows.first().rect == rect;
    };
    desktop.MoveTo(from);
    desktop.Press();
    // Only a window that is completely on the primary monitor is clamped.
    desktop.MoveTo(from + QPoint(640, 0));
    VERIFY_SOON(windowIsAt(QRect(1452, 128, 936, 544)));
    desktop.MoveTo(from + QPoint(1400, 0));
    VERIFY_SOON(windowIsAt(QRect(2560 - 916, 128, 916, 544)));
    // The shadow crosses the left edge of the primary monitor, so the window is not clamped.
    desktop.MoveTo(from + QPoint(300, 0));
    VERIFY_SOON(windowIsAt(QRect(1260, 128, 936, 544)));
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
