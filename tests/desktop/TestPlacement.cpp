#include "DesktopTest.h"
#include "FakeCompositor.h"

class TestPlacement : public DesktopTest
{
    Q_OBJECT

private slots:
    void cleanup()
    {
        world.reset();
        compositor.reset();
    }

    void cardStopsAtTheScreensEdge_data();
    void cardStopsAtTheScreensEdge();
    void windowsStartWithShadowUnderAnyPanel_data();
    void windowsStartWithShadowUnderAnyPanel();
    void shadowCanOverlapAPanelButTheCardCannot();
    void dragFollowsThePointer();
    void dragBeginsOnlyInTheTitleBar();
    void clickOnTheShadowReachesTheWindowBehind();
    void compositorDecidesTheAppearanceOnUos_data();
    void compositorDecidesTheAppearanceOnUos();
    void windowWithoutShadowCanLeaveTheScreen();
    void tourSucceedsWithoutShadow();
    void dialogsCanBeDragged();

private:
    static DesktopWorld::Options UosSystem()
    {
        DesktopWorld::Options options;
        options.lsbRelease = QStringLiteral("DISTRIB_ID=uos\n");
        return options;
    }
    void BeginWithoutShadow(const DesktopWorld::Options& options)
    {
        Begin(options, false);
        compositor = std::make_unique<FakeCompositor>(
            world->Environment().value(QStringLiteral("DBUS_SESSION_BUS_ADDRESS")), false);
        QVERIFY(world->StartAssistant());
        QVERIFY(world->HasLog(QStringLiteral("Don't Use Shadow")));
    }

    std::unique_ptr<FakeCompositor> compositor;
};

void TestPlacement::cardStopsAtTheScreensEdge_data()
{
    QTest::addColumn<QPoint>("by");
    QTest::addColumn<QRect>("window");
    // The card is 896 by 504. The margin of a side shrinks to 0 as the card approaches that edge.
    QTest::newRow("top left") << QPoint(-700, -500) << QRect(0, 0, 896 + 20, 504 + 20);
    QTest::newRow("top right") << QPoint(700, -500) << QRect(1280 - 916, 0, 916, 524);
    // The test reduces these rectangles if the window manager has a task bar.
    QTest::newRow("bottom left") << QPoint(-700, 500) << QRect(0, 800 - 524, 916, 524);
    QTest::newRow("bottom right") << QPoint(700, 500) << QRect(1280 - 916, 800 - 524, 916, 524);
    QTest::newRow("left, seven pixels away") << QPoint(-185, 0) << QRect(0, 128, 7 + 896 + 20, 544);
}

void TestPlacement::cardStopsAtTheScreensEdge()
{
    QFETCH(QPoint, by);
    QFETCH(QRect, window);
    Begin();
    const QPoint from = world->OnCard(TITLE_BAR);
    QCOMPARE(world->BigWindow().rect, QRect(172, 128, 936, 544));
    // Some window managers have a task bar at the bottom. KWin reports no work area without panels.
    const QRect free = world->Desktop().WorkArea();
    if (window.bottom() == 800 - 1 && !free.isEmpty()) {
        window.moveBottom(free.bottom());
    }
    const XDesktop& desktop = world->Desktop();
    desktop.MoveTo(from);
    desktop.Press();
    for (int step = 1; step <= 10; ++step) {
        desktop.MoveTo(from + by * step / 10);
    }
    VERIFY_SOON([&] {
        const auto windows = desktop.WindowsOf(world->AssistantPid());
        return windows.size() == 1 && windows.first().rect == window;
    }());
    desktop.Release();
}

void TestPlacement::windowsStartWithShadowUnderAnyPanel_data()
{
    QTest::addColumn<int>("edge");
    QTest::addColumn<bool>("agreed");
    for (const bool agreed : {true, false}) {
        const QByteArray window = agreed ? ", main window" : ", agreement";
        QTest::newRow(("top" + window).constData()) << int(Qt::TopEdge) << agreed;
        QTest::newRow(("left" + window).constData()) << int(Qt::LeftEdge) << agreed;
        QTest::newRow(("right" + window).constData()) << int(Qt::RightEdge) << agreed;
        QTest::newRow(("bottom" + window).constData()) << int(Qt::BottomEdge) << agreed;
    }
}

void TestPlacement::windowsStartWithShadowUnderAnyPanel()
{
    QFETCH(int, edge);
    QFETCH(bool, agreed);
    DesktopWorld::Options options;
    options.agreed = agreed;
    Begin(options, false);
    QVERIFY(world->AddPanel(static_cast<Qt::Edge>(edge), 40));
    // StartAssistant() waits for pixels of a card of full size, 20 pixels from the window's corner.
    QVERIFY2(world->StartAssistant(), qPrintable(world->Describe()));
    QCOMPARE(world->BigWindow().rect, QRect(172, 128, 936, 544));
    // The pixels beside the card show shadow. The first column of the card has the card's colour.
    const QRect card(world->OnCard(QPoint(0, 0)), QSize(896, 504));
    const QRgb left = agreed ? qRgb(231, 239, 252) : qRgb(0xF9, 0xF9, 0xF9);
    VERIFY_SOON(world->Desktop().PixelAt(card.topLeft() + QPoint(0, 250)) == left);
    QVERIFY(world->Desktop().PixelAt(card.topLeft() + QPoint(-1, 250)) != left);
    QVERIFY(world->Desktop().PixelAt(card.bottomLeft() + QPoint(450, 1)) !=
            world->Desktop().PixelAt(card.bottomLeft() + QPoint(450, 0)));
    if (agreed) {
        world->ClickCard(CLOSE_BUTTON);
        VERIFY_SOON(world->SmallWindow().id != 0);
        QCOMPARE(world->SmallWindow().rect.size(), QSize(340, 208));
    }
}

void TestPlacement::shadowCanOverlapAPanelButTheCardCannot()
{
    constexpr int PANEL_HEIGHT = 30;
    Begin({}, false);
    QVERIFY(world->AddPanel(Qt::TopEdge, PANEL_HEIGHT));
    QVERIFY(world->StartAssistant());
    const QPoint from = world->OnCard(TITLE_BAR);
    // Moves in one step, because a window that is already under the panel is not clamped.
    world->Desktop().MoveTo(from);
    world->Desktop().Press();
    world->Desktop().MoveTo(from - QPoint(0, 133));
    // Some window managers clamp the whole window.
    const int top = world->ManagerKeepsOffPanels() ? PANEL_HEIGHT : PANEL_HEIGHT - 20;
    VERIFY_SOON([&] {
        const auto windows = world->Desktop().WindowsOf(world->AssistantPid());
        return windows.size() == 1 && windows.first().rect == QRect(172, top, 936, 544);
    }());
    world->Desktop().Release();
}

void TestPlacement::dragFollowsThePointer()
{
    Begin();
    const QRect before = world->BigWindow().rect;
    const QPoint from = world->OnCard(TITLE_BAR);
    world->Desktop().Drag(from, from + QPoint(60, -40));
    VERIFY_SOON(world->BigWindow().rect == before.translated(60, -40));
    // After the release the window does not follow the pointer.
    world->Desktop().MoveTo(from);
    world->Desktop().Drag(world->OnCard(TITLE_BAR), world->OnCard(TITLE_BAR) + QPoint(-60, 40));
    VERIFY_SOON(world->BigWindow().rect == before);
}

void TestPlacement::dragBeginsOnlyInTheTitleBar()
{
    Begin();
    const QRect before = world->BigWindow().rect;
    world->Desktop().Drag(world->OnCard(QPoint(300, 44)), world->OnCard(QPoint(400, 100)));
    world->Desktop().Drag(world->OnCard(TITLE_BAR), world->OnCard(TITLE_BAR) + QPoint(1, 0));
    // The second drag verifies that the first had no effect.
    VERIFY_SOON(world->BigWindow().rect == before.translated(1, 0));
}

void TestPlacement::clickOnTheShadowReachesTheWindowBehind()
{
    Begin();
    const XDesktop& desktop = world->Desktop();
    const QPoint onCard = world->OnCard(QPoint(300, 300));
    const QPoint onShadow = world->BigWindow().rect.topLeft() + QPoint(300, 8);
    desktop.MoveTo(onCard);
    VERIFY_SOON(desktop.WindowUnderPointer() != 0);
    // The first move over the shadow removes the pixel under the pointer from the mask.
    desktop.MoveTo(onShadow);
    VERIFY_SOON(desktop.WindowUnderPointer() == 0);
    desktop.MoveTo(onCard);
    VERIFY_SOON(desktop.WindowUnderPointer() != 0);
}

void TestPlacement::compositorDecidesTheAppearanceOnUos_data()
{
    const QString uosRelease = QStringLiteral("DISTRIB_ID=uos\n");
    QTest::addColumn<QString>("system");
    QTest::addColumn<QString>("reply");
    QTest::addColumn<bool>("shadow");
    QTest::newRow("on") << uosRelease << "true" << true;
    QTest::newRow("off") << uosRelease << "false" << false;
    QTest::newRow("no reply") << uosRelease << QString() << true;
    QTest::newRow("off, in capitals, line 10")
        << QString(9, QLatin1Char('\n')) + uosRelease.toUpper() << "false" << false;
    // The program does not read line 11 and does not query the compositor.
    QTest::newRow("off, in line 11") << QString(10, QLatin1Char('\n')) + uosRelease << "false" << true;
    QTest::newRow("off, on another system") << "DISTRIB_ID=other\n"
                                            << "false" << true;
}

void TestPlacement::compositorDecidesTheAppearanceOnUos()
{
    QFETCH(QString, system);
    QFETCH(QString, reply);
    QFETCH(bool, shadow);
    DesktopWorld::Options options;
    // KWin would reply in place of FakeCompositor.
    options.windowManager = QStringLiteral("openbox");
    options.lsbRelease = system;
    Begin(options, false);
    if (!reply.isEmpty()) {
        compositor = std::make_unique<FakeCompositor>(
            world->Environment().value(QStringLiteral("DBUS_SESSION_BUS_ADDRESS")),
            reply == QLatin1String("true"));
    }
    QVERIFY(world->StartAssistant());
    QVERIFY(world->HasLog(shadow ? QStringLiteral("VELODESK: Use Shadow")
                                 : QStringLiteral("VELODESK: Don't Use Shadow")));
    QCOMPARE(world->BigWindow().rect.size(), shadow ? QSize(936, 544) : QSize(898, 506));
}

void TestPlacement::windowWithoutShadowCanLeaveTheScreen()
{
    BeginWithoutShadow(UosSystem());
    const QRect before = world->BigWindow().rect;
    const QPoint from = world->OnCard(TITLE_BAR);
    world->Desktop().Drag(from, from + QPoint(-500, 0));
    // The press position is relative to the card, but the move is applied to the window. The difference is
    // the frame of one pixel.
    QRect after = before.translated(-500 + 1, 1);
    QVERIFY(after.left() < 0);
    if (world->ManagerKeepsOnScreen()) {
        after.moveLeft(0);
    }
    VERIFY_SOON(world->BigWindow().rect == after);
}

void TestPlacement::tourSucceedsWithoutShadow()
{
    DesktopWorld::Options options = UosSystem();
    options.agreed = false;
    BeginWithoutShadow(options);
    // The window shows the frame around the card.
    const QPoint corner = world->BigWindow().rect.topLeft();
    VERIFY_SOON(world->Desktop().PixelAt(corner + QPoint(0, 200)) == qRgb(0xE2, 0xE2, 0xE2));
    world->ClickCard(AGREE_TICK);
    VERIFY_SOON(world->Desktop().PixelAt(world->OnCard(BEGIN_EDGE)) == BLUE);
    world->ClickCard(BEGIN_BUTTON);
    VERIFY_SOON(world->HasLog(QStringLiteral("Mainwindow start.")) && world->ShowsIdle());
    // The corners of the card are square.
    VERIFY_SOON(world->Desktop().PixelAt(world->OnCard(QPoint(895, 503))) == qRgb(0xFF, 0xFF, 0xFF));
    world->ClickPage(CAST_BUTTON);
    VERIFY_SOON(world->ShowsCasting());
    QVERIFY(world->ChooseFromMenu(1));
    VERIFY_SOON(world->HasLog(QStringLiteral("Velodesk show set page.")));
    world->ClickCard(CLOSE_BUTTON);
    ConfirmQuit();
    QCOMPARE(world->AssistantStatus(), 0);
    QCOMPARE(world->DaemonStatus(), 0);
}

void TestPlacement::dialogsCanBeDragged()
{
    Begin();
    world->ClickCard(CLOSE_BUTTON);
    VERIFY_SOON(world->SmallWindow().id != 0);
    const QRect before = world->SmallWindow().rect;
    world->Desktop().Drag(world->OnSmallCard(QPoint(50, 31)), world->OnSmallCard(QPoint(80, 61)));
    VERIFY_SOON(world->SmallWindow().rect == before.translated(30, 30));
    // A press below the drag area does not move the window. The next drag verifies this.
    world->Desktop().Drag(world->OnSmallCard(QPoint(50, 40)), world->OnSmallCard(QPoint(80, 61)));
    world->Desktop().Drag(world->OnSmallCard(QPoint(50, 10)), world->OnSmallCard(QPoint(20, -20)));
    VERIFY_SOON(world->SmallWindow().rect == before);
}

QTEST_GUILESS_MAIN(TestPlacement)
#include "TestPlacement.moc"
