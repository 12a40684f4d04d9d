#include <QGraphicsDropShadowEffect>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QMouseEvent>
#include <QScreen>
#include <QTemporaryDir>
#include <QTest>
#include <functional>

#include "shell/CardWindow.h"
#include "shell/Shadow.h"
#include "support/CapturedLog.h"
#include "support/Environment.h"
#include "support/Files.h"
#include "support/Widgets.h"

Q_DECLARE_METATYPE(QMargins)

namespace {
/// A window of 302 by 170 pixels with a card, which is constructed like the windows of the program.
class Probe : public CardWindow<QWidget>
{
public:
    Probe() : cardWidget(new QWidget(this)), shadowLayout(new QHBoxLayout(this))
    {
        resize(302, 170);
        shadowLayout->setSpacing(0);
        shadowLayout->setContentsMargins(1, 1, 1, 1);
        shadowLayout->addWidget(cardWidget);
        SetCard(shadowLayout, cardWidget, QPoint(299, 31));
    }

    void AddShadow()
    {
        setAttribute(Qt::WA_TranslucentBackground);
        cardWidget->setObjectName(QStringLiteral("card"));
        cardWidget->setStyleSheet(QStringLiteral("#card{background-color:white;border-radius:20px;}"));
        Shadow::AddShadowEffect(this, cardWidget);
    }

    int Place(const QRect& cardRect, bool fixedSize = false)
    {
        const int result = Shadow::ShadowWinAdjust(this, shadowLayout, cardWidget, cardRect, fixedSize);
        shadowLayout->activate();
        return result;
    }
    int Build(const QRect& cardRect)
    {
        const int result = Shadow::ShadowWinPlace(this, shadowLayout, cardWidget, cardRect);
        shadowLayout->activate();
        // The first placement must not fix the size.
        return maximumSize() == QSize(QWIDGETSIZE_MAX, QWIDGETSIZE_MAX) ? result : -1;
    }
    QRect CardOnScreen() const { return QRect(mapToGlobal(cardWidget->pos()), cardWidget->size()); }
    QRegion Mask() const { return mask(); }
    bool IsDragging() const { return dragging; }

    QWidget* cardWidget;
    QHBoxLayout* shadowLayout;
};

constexpr QSize CARD(300, 168);

QRect Area()
{
    return QGuiApplication::primaryScreen()->availableGeometry();
}
} // namespace

class TestShadow : public QObject
{
    Q_OBJECT

private slots:
    void appearanceDependsOnDistributionAndCompositor_data();
    void appearanceDependsOnDistributionAndCompositor();
    void addEffectRejectsNull();
    void effectIsCreatedOnceAndSetUpAgain();
    void adjustChangesOnlyWhatDiffers();
    void checkRectMovesTheRectangleInside_data();
    void checkRectMovesTheRectangleInside();
    void adjustRejectsNull();
    void windowWithoutEffectHasNoMargins();
    void cardInTheMiddleHasFullMargins();
    void cardAtAnEdgeLosesThatMargin_data();
    void cardAtAnEdgeLosesThatMargin();
    void windowOffTheDesktopIsNotClamped();
    void firstPlacementClampsOffTheDesktop();
    void firstPlacementOfATooLargeWindowKeepsItsMargins_data();
    void firstPlacementOfATooLargeWindowKeepsItsMargins();
    void firstPlacementAtTheSizeOfTheDesktopHasNoMargins();
    void firstPlacementWithoutEffectHasNoMargins();
    void fixedSizeIsClampedOffTheDesktop();
    void moveKeepsTheCardsSize();
    void maskHasHoleUnderTheCursorOutsideOfTheCard();
    void nullPointersAreIgnored();
    void pressInTheDragAreaDrags_data();
    void pressInTheDragAreaDrags();
    void anyReleaseEndsTheDrag();
    void dragIsClampedWithShadowOnly_data();
    void dragIsClampedWithShadowOnly();
    void pointerOverTheShadowCutsAHoleIntoTheMask();
    void mouseEventsAreIgnored();
    void centringTruncatesTowardZero();
};

void TestShadow::appearanceDependsOnDistributionAndCompositor_data()
{
    QTest::addColumn<QByteArray>("release");
    QTest::addColumn<QByteArray>("output");
    QTest::addColumn<bool>("shadow");
    QTest::addColumn<QStringList>("lines");
    const QByteArray uosRelease("DISTRIB_ID=UoS\n");
    const QByteArray reply("method return\n   variant       boolean ");
    const auto check = [](const char* active) {
        return QStringLiteral("INFO TANDRA_UI check KWinSpecialEffect , ") + QLatin1String(active);
    };
    const QString off = QStringLiteral("INFO TANDRA_UI WinSpecialEffect is not open");
    QTest::newRow("another distribution") << QByteArray("DISTRIB_ID=other\n") << reply + "false\n"
                                          << true << QStringList();
    QTest::newRow("compositing active") << uosRelease << reply + "true\n"
                                        << true << QStringList(check("true"));
    QTest::newRow("compositing inactive") << uosRelease << reply + "false\n"
                                          << false << QStringList({check("false"), off});
    QTest::newRow("unknown value") << uosRelease << reply + "False\n" << true << QStringList(check("False"));
    QTest::newRow("no output") << uosRelease << QByteArray() << true << QStringList(check(""));
}

void TestShadow::appearanceDependsOnDistributionAndCompositor()
{
    QFETCH(QByteArray, release);
    QFETCH(QByteArray, output);
    // Replace the commands that read the file and query the compositor.
    const QTemporaryDir commands;
    const auto stub = [&commands](const char* name, const QByteArray& text) {
        const QString path = commands.filePath(QLatin1String(name));
        WriteAll(path + QStringLiteral(".output"), text);
        WriteAll(path, "#!/bin/sh\nprintf '%s ' \"$@\" > \"$0.arguments\"\ncat \"$0.output\"\n");
        SetMode(path, 0700);
        return path + QStringLiteral(".arguments");
    };
    const QString head = stub("head", release);
    const QString dbusSend = stub("dbus-send", output);
    const Variable path("PATH", commands.path().toLocal8Bit() + ':' + qgetenv("PATH"));
    const CapturedLog log;
    QTEST(Shadow::IsShadowEffectEnable(), "shadow");
    QStringList lines;
    for (const CapturedLog::Line& line : log.Lines()) {
        lines.append(line.level + QLatin1Char(' ') + line.module + QLatin1Char(' ') + line.message);
    }
    QTEST(lines, "lines");
    QCOMPARE(ReadAll(head), QByteArray("/etc/lsb-release "));
    QCOMPARE(QFile::exists(dbusSend), !lines.isEmpty());
    if (!lines.isEmpty()) {
        QCOMPARE(ReadAll(dbusSend), QByteArray("--session --dest=org.kde.KWin --print-reply /Compositor "
                                               "org.freedesktop.DBus.Properties.Get "
                                               "string:org.kde.kwin.Compositing string:active "));
    }
}

void TestShadow::addEffectRejectsNull()
{
    QWidget widget;
    QCOMPARE(Shadow::AddShadowEffect(nullptr, &widget), 1);
    QCOMPARE(Shadow::AddShadowEffect(&widget, nullptr), 1);
    QVERIFY(widget.graphicsEffect() == nullptr);
}

void TestShadow::effectIsCreatedOnceAndSetUpAgain()
{
    Probe probe;
    QCOMPARE(Shadow::AddShadowEffect(&probe, probe.cardWidget), 0);
    auto* effect = qobject_cast<QGraphicsDropShadowEffect*>(probe.cardWidget->graphicsEffect());
    QVERIFY(effect != nullptr);
    QCOMPARE(effect->offset(), QPointF(0.0, 2.0));
    QCOMPARE(effect->color(), QColor(0, 0, 0, 51));
    QCOMPARE(effect->blurRadius(), 20.0);
    effect->setBlurRadius(3.0);
    QCOMPARE(Shadow::AddShadowEffect(&probe, probe.cardWidget), 0);
    QCOMPARE(static_cast<QGraphicsEffect*>(effect), probe.cardWidget->graphicsEffect());
    QCOMPARE(effect->blurRadius(), 20.0);
}

void TestShadow::adjustChangesOnlyWhatDiffers()
{
    QWidget window;
    window.setGeometry(10, 10, 100, 100);
    // AdjustWindow() compares the two given rectangles, not the window's geometry. Equal rectangles change
    // nothing.
    Shadow::AdjustWindow(&window, QRect(0, 0, 50, 50), QRect(0, 0, 50, 50), false);
    QCOMPARE(window.geometry(), QRect(10, 10, 100, 100));
    Shadow::AdjustWindow(&window, QRect(0, 0, 50, 50), QRect(30, 40, 50, 50), true);
    QCOMPARE(window.geometry(), QRect(30, 40, 100, 100));
    QCOMPARE(window.maximumSize(), QSize(QWIDGETSIZE_MAX, QWIDGETSIZE_MAX));
    Shadow::AdjustWindow(&window, window.geometry(), QRect(5, 6, 70, 80), false);
    QCOMPARE(window.geometry(), QRect(5, 6, 70, 80));
    Shadow::AdjustWindow(&window, window.geometry(), QRect(7, 8, 90, 95), true);
    QCOMPARE(window.geometry(), QRect(7, 8, 90, 95));
    QCOMPARE(window.minimumSize(), QSize(90, 95));
    QCOMPARE(window.maximumSize(), QSize(90, 95));
}

void TestShadow::checkRectMovesTheRectangleInside_data()
{
    QTest::addColumn<QRect>("rect");
    QTest::addColumn<QRect>("expected");
    QTest::newRow("inside") << QRect(20, 20, 50, 50) << QRect(20, 20, 50, 50);
    QTest::newRow("touching") << QRect(10, 10, 100, 80) << QRect(10, 10, 100, 80);
    QTest::newRow("left, top") << QRect(-5, 0, 50, 50) << QRect(10, 10, 50, 50);
    QTest::newRow("right, bottom") << QRect(100, 80, 50, 50) << QRect(60, 40, 50, 50);
    QTest::newRow("as large") << QRect(0, 0, 100, 80) << QRect(10, 10, 100, 80);
    QTest::newRow("too wide") << QRect(0, 0, 101, 10) << QRect(0, 0, 101, 10);
    QTest::newRow("too tall") << QRect(0, 0, 10, 81) << QRect(0, 0, 10, 81);
}

void TestShadow::checkRectMovesTheRectangleInside()
{
    QFETCH(QRect, rect);
    QFETCH(QRect, expected);
    Shadow::CheckRect(rect, QRect(10, 10, 100, 80));
    QCOMPARE(rect, expected);
}

void TestShadow::adjustRejectsNull()
{
    Probe probe;
    QCOMPARE(Shadow::ShadowWinAdjust(nullptr, probe.shadowLayout, probe.cardWidget, QRect(), false), 1);
    QCOMPARE(Shadow::ShadowWinAdjust(&probe, nullptr, probe.cardWidget, QRect(), false), 1);
    QCOMPARE(Shadow::ShadowWinAdjust(&probe, probe.shadowLayout, nullptr, QRect(), false), 1);
    QCOMPARE(Shadow::ShadowWinMove(&probe, probe.shadowLayout, nullptr, QPoint(), false), 1);
    QCOMPARE(probe.geometry().size(), QSize(302, 170));
}

void TestShadow::windowWithoutEffectHasNoMargins()
{
    Probe probe;
    QCOMPARE(probe.Place(QRect(-40, 50, 222, 111)), 0);
    QCOMPARE(probe.geometry(), QRect(-40, 50, 222, 111));
    QCOMPARE(probe.shadowLayout->contentsMargins(), QMargins(1, 1, 1, 1));
}

void TestShadow::cardInTheMiddleHasFullMargins()
{
    Probe probe;
    Shadow::AddShadowEffect(&probe, probe.cardWidget);
    const QRect rect(Area().center() - QPoint(150, 84), CARD);
    QCOMPARE(probe.Place(rect), 0);
    QCOMPARE(probe.geometry(), rect.adjusted(-20, -20, 20, 20));
    QCOMPARE(probe.shadowLayout->contentsMargins(), QMargins(20, 20, 20, 20));
    QCOMPARE(probe.CardOnScreen(), rect);
}

void TestShadow::cardAtAnEdgeLosesThatMargin_data()
{
    QTest::addColumn<QPoint>("corner");
    QTest::addColumn<QPoint>("expected");
    QTest::addColumn<QMargins>("margins");
    const QRect area = Area();
    const int right = area.right() - 299;
    const int bottom = area.bottom() - 167;
    QTest::newRow("top left") << QPoint(-100, -100) << QPoint(0, 0) << QMargins(0, 0, 20, 20);
    QTest::newRow("near the top left") << QPoint(7, 3) << QPoint(7, 3) << QMargins(7, 3, 20, 20);
    QTest::newRow("right") << QPoint(right + 50, 100) << QPoint(right, 100) << QMargins(20, 20, 0, 20);
    QTest::newRow("near the right") << QPoint(right - 6, 100) << QPoint(right - 6, 100)
                                    << QMargins(20, 20, 6, 20);
    QTest::newRow("bottom") << QPoint(100, bottom + 1) << QPoint(100, bottom) << QMargins(20, 20, 20, 0);
    QTest::newRow("bottom right") << QPoint(5000, 5000) << QPoint(right, bottom) << QMargins(20, 20, 0, 0);
}

void TestShadow::cardAtAnEdgeLosesThatMargin()
{
    QFETCH(QPoint, corner);
    QFETCH(QPoint, expected);
    QFETCH(QMargins, margins);
    Probe probe;
    Shadow::AddShadowEffect(&probe, probe.cardWidget);
    probe.Place(QRect(corner, CARD));
    QCOMPARE(probe.CardOnScreen(), QRect(expected, CARD));
    QCOMPARE(probe.shadowLayout->contentsMargins(), margins);
    QVERIFY(Area().contains(probe.geometry()));
}

void TestShadow::windowOffTheDesktopIsNotClamped()
{
    Probe probe;
    Shadow::AddShadowEffect(&probe, probe.cardWidget);
    probe.move(-500, 100);
    QCOMPARE(probe.Place(QRect(-100, 50, 300, 168)), 0);
    QCOMPARE(probe.geometry(), QRect(-120, 30, 340, 208));
    QCOMPARE(probe.shadowLayout->contentsMargins(), QMargins(1, 1, 1, 1));
    // The window is still outside, so it is not clamped. The next placement starts inside and clamps.
    probe.Place(QRect(100, 60, 300, 168));
    QCOMPARE(probe.geometry(), QRect(80, 40, 340, 208));
    probe.Place(QRect(-100, 60, 300, 168));
    QCOMPARE(probe.geometry(), QRect(0, 40, 320, 208));
    QCOMPARE(probe.shadowLayout->contentsMargins(), QMargins(0, 20, 20, 20));
}

void TestShadow::firstPlacementClampsOffTheDesktop()
{
    Probe probe;
    Shadow::AddShadowEffect(&probe, probe.cardWidget);
    probe.move(-500, -500);
    QCOMPARE(probe.Build(QRect(QPoint(200, 100), CARD)), 0);
    QCOMPARE(probe.geometry(), QRect(180, 80, 340, 208));
    QCOMPARE(probe.shadowLayout->contentsMargins(), QMargins(20, 20, 20, 20));
    QCOMPARE(probe.cardWidget->size(), CARD);
    // At an edge, it is clamped like any other window.
    probe.move(-500, -500);
    QCOMPARE(probe.Build(QRect(QPoint(-30, 7), CARD)), 0);
    QCOMPARE(probe.geometry(), QRect(0, 0, 320, 195));
    QCOMPARE(probe.shadowLayout->contentsMargins(), QMargins(0, 7, 20, 20));
}

void TestShadow::firstPlacementOfATooLargeWindowKeepsItsMargins_data()
{
    QTest::addColumn<QRect>("large");
    QTest::newRow("too wide") << Area().adjusted(-50, 10, 50, -10);
    QTest::newRow("too high") << Area().adjusted(10, -50, -10, 50);
}

void TestShadow::firstPlacementOfATooLargeWindowKeepsItsMargins()
{
    QFETCH(QRect, large);
    Probe probe;
    Shadow::AddShadowEffect(&probe, probe.cardWidget);
    QCOMPARE(probe.Build(large), 0);
    QCOMPARE(probe.geometry(), large.adjusted(-20, -20, 20, 20));
    QCOMPARE(probe.shadowLayout->contentsMargins(), QMargins(20, 20, 20, 20));
}

void TestShadow::firstPlacementAtTheSizeOfTheDesktopHasNoMargins()
{
    Probe probe;
    Shadow::AddShadowEffect(&probe, probe.cardWidget);
    QCOMPARE(probe.Build(Area()), 0);
    QCOMPARE(probe.geometry(), Area());
    QCOMPARE(probe.shadowLayout->contentsMargins(), QMargins(0, 0, 0, 0));
}

void TestShadow::firstPlacementWithoutEffectHasNoMargins()
{
    Probe probe;
    const QRect rect(QPoint(200, 100), CARD);
    QCOMPARE(probe.Build(rect), 0);
    QCOMPARE(probe.geometry(), rect);
    QCOMPARE(Shadow::ShadowWinPlace(nullptr, probe.shadowLayout, probe.cardWidget, rect), 1);
    QCOMPARE(Shadow::ShadowWinPlace(&probe, nullptr, probe.cardWidget, rect), 1);
    QCOMPARE(Shadow::ShadowWinPlace(&probe, probe.shadowLayout, nullptr, rect), 1);
}

void TestShadow::fixedSizeIsClampedOffTheDesktop()
{
    Probe probe;
    Shadow::AddShadowEffect(&probe, probe.cardWidget);
    probe.move(-500, 100);
    QCOMPARE(probe.Place(QRect(QPoint(-100, 60), CARD), true), 0);
    QCOMPARE(probe.geometry(), QRect(0, 40, 320, 208));
    QCOMPARE(probe.maximumSize(), QSize(320, 208));
}

void TestShadow::moveKeepsTheCardsSize()
{
    Probe probe;
    Shadow::AddShadowEffect(&probe, probe.cardWidget);
    probe.Place(QRect(QPoint(100, 100), CARD));
    QCOMPARE(Shadow::ShadowWinMove(&probe, probe.shadowLayout, probe.cardWidget, QPoint(150, 160), false), 0);
    QCOMPARE(probe.CardOnScreen(), QRect(QPoint(150, 160), CARD));
}

void TestShadow::maskHasHoleUnderTheCursorOutsideOfTheCard()
{
    Probe probe;
    Shadow::AddShadowEffect(&probe, probe.cardWidget);
    probe.Place(QRect(QPoint(100, 100), CARD));
    const QRegion whole(QRect(0, 0, 340, 208));
    Shadow::ShadowWinMask(&probe, probe.cardWidget, probe.mapToGlobal(QPoint(5, 6)));
    QCOMPARE(probe.Mask(), whole - QRegion(5, 6, 1, 1));
    Shadow::ShadowWinMask(&probe, probe.cardWidget, probe.mapToGlobal(QPoint(20, 20)));
    QCOMPARE(probe.Mask(), whole);
    Shadow::ShadowWinMask(&probe, probe.cardWidget, probe.mapToGlobal(QPoint(339, 207)));
    QCOMPARE(probe.Mask(), whole - QRegion(339, 207, 1, 1));
    Shadow::ShadowWinMask(&probe, probe.cardWidget, probe.mapToGlobal(QPoint(340, 207)));
    QCOMPARE(probe.Mask(), whole);
}

void TestShadow::nullPointersAreIgnored()
{
    QWidget widget;
    Shadow::AdjustWindow(nullptr, QRect(), QRect(1, 1, 5, 5), false);
    Shadow::ShadowWinMask(nullptr, &widget, QPoint());
    Shadow::ShadowWinMask(&widget, nullptr, QPoint());
    QVERIFY(widget.mask().isEmpty());
}

void TestShadow::pressInTheDragAreaDrags_data()
{
    QTest::addColumn<QPoint>("offset");
    QTest::addColumn<int>("button");
    QTest::addColumn<bool>("drags");
    QTest::newRow("corner") << QPoint(0, 0) << int(Qt::LeftButton) << true;
    QTest::newRow("last pixel") << QPoint(299, 31) << int(Qt::LeftButton) << true;
    QTest::newRow("below the area") << QPoint(10, 32) << int(Qt::LeftButton) << false;
    QTest::newRow("right of the area") << QPoint(300, 10) << int(Qt::LeftButton) << false;
    QTest::newRow("no lower limit") << QPoint(-15, -15) << int(Qt::LeftButton) << true;
    QTest::newRow("right button") << QPoint(10, 10) << int(Qt::RightButton) << false;
}

void TestShadow::pressInTheDragAreaDrags()
{
    QFETCH(QPoint, offset);
    QFETCH(int, button);
    QFETCH(bool, drags);
    Probe probe;
    Shadow::AddShadowEffect(&probe, probe.cardWidget);
    probe.Place(QRect(QPoint(100, 100), CARD));
    SendMouse(probe, QEvent::MouseButtonPress, probe.cardWidget->pos() + offset, Qt::MouseButton(button));
    QCOMPARE(probe.IsDragging(), drags);
}

void TestShadow::anyReleaseEndsTheDrag()
{
    Probe probe;
    SendMouse(probe, QEvent::MouseButtonPress, QPoint(5, 5));
    QVERIFY(probe.IsDragging());
    SendMouse(probe, QEvent::MouseButtonRelease, QPoint(5, 5), Qt::RightButton);
    QVERIFY(!probe.IsDragging());
}

void TestShadow::dragIsClampedWithShadowOnly_data()
{
    AddBothAppearances();
}

void TestShadow::dragIsClampedWithShadowOnly()
{
    QFETCH(bool, shadow);
    const Appearance appearance(shadow);
    Probe probe;
    probe.move(200, 200);
    if (shadow) {
        Shadow::AddShadowEffect(&probe, probe.cardWidget);
        probe.Place(QRect(QPoint(200, 200), CARD));
    }
    probe.shadowLayout->activate();
    const QPoint press = probe.cardWidget->pos() + QPoint(10, 10);
    const QSize largest = probe.maximumSize();
    SendMouse(probe, QEvent::MouseButtonPress, press);
    const QPoint expected = probe.mapToGlobal(press) + QPoint(20, 30) - QPoint(10, 10);
    SendMouse(probe, QEvent::MouseMove, press + QPoint(20, 30));
    probe.shadowLayout->activate();
    // Without shadow the window itself is placed at the card's position.
    QCOMPARE(shadow ? probe.CardOnScreen().topLeft() : probe.pos(), expected);
    SendMouse(probe, QEvent::MouseMove, press - QPoint(500, 500));
    probe.shadowLayout->activate();
    if (shadow) {
        QCOMPARE(probe.CardOnScreen(), QRect(QPoint(0, 0), CARD));
    } else {
        QCOMPARE(probe.pos(), probe.mapToGlobal(QPoint(0, 0)));
        QVERIFY2(probe.x() < -200 && probe.y() < -200, "the window stays on the desktop");
    }
    QCOMPARE(probe.maximumSize(), largest);
    SendMouse(probe, QEvent::MouseButtonRelease, QPoint(1, 1));
    const QRect ended = probe.geometry();
    SendMouse(probe, QEvent::MouseMove, QPoint(150, 90));
    QCOMPARE(probe.geometry(), ended);
}

void TestShadow::pointerOverTheShadowCutsAHoleIntoTheMask()
{
    Probe probe;
    Shadow::AddShadowEffect(&probe, probe.cardWidget);
    probe.Place(QRect(QPoint(100, 100), CARD));
    SendMouse(probe, QEvent::MouseMove, QPoint(5, 6));
    QCOMPARE(probe.Mask(), QRegion(0, 0, 340, 208) - QRegion(5, 6, 1, 1));
    // Entering the card restores the mask. Then the card's widgets receive the moves.
    const QPoint onCard = probe.cardWidget->rect().center();
    QEnterEvent enter(onCard, probe.cardWidget->mapTo(&probe, onCard), probe.cardWidget->mapToGlobal(onCard));
    QCoreApplication::sendEvent(probe.cardWidget, &enter);
    QCOMPARE(probe.Mask(), QRegion(0, 0, 340, 208));
}

void TestShadow::mouseEventsAreIgnored()
{
    Probe probe;
    for (const auto type : {QEvent::MouseButtonPress, QEvent::MouseMove, QEvent::MouseButtonRelease}) {
        QMouseEvent event(type, QPointF(5, 5), Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
        static_cast<QObject&>(probe).event(&event);
        QVERIFY2(!event.isAccepted(), qPrintable(QString::number(type)));
    }
}

void TestShadow::centringTruncatesTowardZero()
{
    QCOMPARE(CentredCorner(QRect(0, 0, 800, 600), QPoint(301, 169)), QPoint(399 - 150, 299 - 84));
    QCOMPARE(CentredCorner(QRect(-801, 0, 801, 600), QPoint(0, 0)), QPoint(-401, 299));
    QCOMPARE(CentredCorner(QRect(-800, 0, 800, 600), QPoint(0, 0)), QPoint(-400, 299));
}

QTEST_MAIN(TestShadow)
#include "TestShadow.moc"
