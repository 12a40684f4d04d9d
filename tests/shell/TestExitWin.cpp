#include <QMouseEvent>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>

#include "shell/ExitWin.h"
#include "support/Widgets.h"

class TestExitWin : public QObject
{
    Q_OBJECT

private slots:
    void widgetsHaveTheirProperties_data();
    void widgetsHaveTheirProperties();
    void appearanceDependsOnShadow_data();
    void appearanceDependsOnShadow();
    void startsWithExitChecked();
    void quitEmitsOnlyWhileExitIsChecked();
    void cancelHidesOnlyWhileCancelIsChecked();
    void clickChecksButtonBeforeItsSlotRuns();
    void closeHides();
    void dragAreaIsTheTop32Rows();
    void dragAreaIncludesItsCorners_data();
    void dragAreaIncludesItsCorners();
    void isCentredOnItsParent_data();
    void isCentredOnItsParent();
    void isNotShownDuringConstruction();
};

void TestExitWin::widgetsHaveTheirProperties_data()
{
    AddBothAppearances();
}

void TestExitWin::widgetsHaveTheirProperties()
{
    QFETCH(bool, shadow);
    const Appearance appearance(shadow);
    ExitWin window(nullptr);
    QCOMPARE(static_cast<int>(window.windowFlags()), 10251);
    QCOMPARE(window.windowModality(), Qt::WindowModal);
    QCOMPARE(window.windowTitle(), QStringLiteral("维乐助手"));
    QVERIFY(window.hasMouseTracking());
    QVERIFY(!window.isVisible());
    QVERIFY(!window.testAttribute(Qt::WA_DontShowOnScreen));
    QVERIFY(!window.autoFillBackground());
    QCOMPARE(window.property("useStyleWindowManager"), QVariant(false));
    QCOMPARE(Find(window, "exitBtn")->geometry(), QRect(158, 120, 82, 24));
    QCOMPARE(Find(window, "cancelBtn")->geometry(), QRect(60, 120, 82, 24));
    QCOMPARE(Find(window, "closeBtn")->geometry(), QRect(254, 0, 46, 32));
    QCOMPARE(Find(window, "confirmMsg")->geometry(), QRect(85, 48, 130, 20));
    for (const char* name : {"exitBtn", "cancelBtn", "closeBtn"}) {
        QCOMPARE(Find(window, name)->focusPolicy(), Qt::NoFocus);
    }
    window.show();
    QCOMPARE(Find(window, "widget_bg")->size(), QSize(300, 168));
}

void TestExitWin::appearanceDependsOnShadow_data()
{
    AddBothAppearances();
}

void TestExitWin::appearanceDependsOnShadow()
{
    QFETCH(bool, shadow);
    const Appearance appearance(shadow);
    ExitWin window(nullptr);
    QCOMPARE(window.testAttribute(Qt::WA_TranslucentBackground), shadow);
    QCOMPARE(window.size(), shadow ? QSize(340, 208) : QSize(302, 170));
    QCOMPARE(Find(window, "widget_bg")->styleSheet(),
             shadow ? QStringLiteral("border-radius:20px;background-color: rgb(247, 247, 247);")
                    : QStringLiteral("background-color: rgb(247, 247, 247);"));
    QCOMPARE(
        Find(window, "closeBtn")->styleSheet(),
        shadow ? CornerButtonStyle(true, "close_normal_shadow", "close_hover_shadow", "close_pressed_shadow")
               : CornerButtonStyle(false, "close_normal", "close_hover", "close_pressed"));
    QCOMPARE(window.palette().color(QPalette::Window) == QColor(0xE2, 0xE2, 0xE2), !shadow);
}

void TestExitWin::startsWithExitChecked()
{
    ExitWin window(nullptr);
    QVERIFY(Find<QPushButton>(window, "exitBtn")->isChecked());
    QVERIFY(!Find<QPushButton>(window, "cancelBtn")->isChecked());
    QVERIFY(!Find<QPushButton>(window, "closeBtn")->isCheckable());
}

void TestExitWin::quitEmitsOnlyWhileExitIsChecked()
{
    ExitWin window(nullptr);
    QSignalSpy quit(&window, &ExitWin::CloseVeloApp);
    Find<QPushButton>(window, "cancelBtn")->setChecked(true);
    window.QuitExitWin();
    QCOMPARE(quit.count(), 0);
    Find<QPushButton>(window, "exitBtn")->setChecked(true);
    window.QuitExitWin();
    QCOMPARE(quit.count(), 1);
}

void TestExitWin::cancelHidesOnlyWhileCancelIsChecked()
{
    ExitWin window(nullptr);
    window.show();
    window.CancelExitWin();
    QVERIFY(window.isVisible());
    Find<QPushButton>(window, "cancelBtn")->setChecked(true);
    window.CancelExitWin();
    QVERIFY(!window.isVisible());
}

void TestExitWin::clickChecksButtonBeforeItsSlotRuns()
{
    ExitWin window(nullptr);
    window.show();
    QSignalSpy quit(&window, &ExitWin::CloseVeloApp);
    QTest::mouseClick(Find(window, "cancelBtn"), Qt::LeftButton);
    QVERIFY(!window.isVisible());
    QVERIFY(!Find<QPushButton>(window, "exitBtn")->isChecked());
    window.show();
    QTest::mouseClick(Find(window, "exitBtn"), Qt::LeftButton);
    QCOMPARE(quit.count(), 1);
}

void TestExitWin::closeHides()
{
    ExitWin window(nullptr);
    window.show();
    QSignalSpy quit(&window, &ExitWin::CloseVeloApp);
    QTest::mouseClick(Find(window, "closeBtn"), Qt::LeftButton);
    QVERIFY(!window.isVisible());
    QCOMPARE(quit.count(), 0);
}

void TestExitWin::dragAreaIsTheTop32Rows()
{
    const Appearance appearance(false);
    ExitWin window(nullptr);
    window.show();
    const QPoint card = Find(window, "widget_bg")->pos();
    const QPoint before = window.pos();
    SendMouse(window, QEvent::MouseButtonPress, card + QPoint(30, 32));
    SendMouse(window, QEvent::MouseMove, card + QPoint(40, 52));
    QCOMPARE(window.pos(), before);
    SendMouse(window, QEvent::MouseButtonRelease, card);
    SendMouse(window, QEvent::MouseButtonPress, card + QPoint(30, 31));
    // Without shadow the press position is relative to the card, and the move is applied to the window's
    // corner.
    const QPoint expected = window.mapToGlobal(card + QPoint(40, 51)) - QPoint(30, 31);
    SendMouse(window, QEvent::MouseMove, card + QPoint(40, 51));
    QCOMPARE(window.pos(), expected);
}

void TestExitWin::dragAreaIncludesItsCorners_data()
{
    AddBothAppearances();
}

void TestExitWin::dragAreaIncludesItsCorners()
{
    QFETCH(bool, shadow);
    const Appearance appearance(shadow);
    ExitWin window(nullptr);
    window.show();
    QVERIFY(Drags(window, QPoint(0, 0)));
    QVERIFY(Drags(window, QPoint(299, 31)));
    QVERIFY(!Drags(window, QPoint(300, 31)));
    QVERIFY(!Drags(window, QPoint(299, 32)));
}

void TestExitWin::isCentredOnItsParent_data()
{
    AddBothAppearances();
}

void TestExitWin::isCentredOnItsParent()
{
    QFETCH(bool, shadow);
    const Appearance appearance(shadow);
    QWidget parent;
    parent.setGeometry(150, 100, 500, 400);
    ExitWin window(&parent);
    window.show();
    const QPoint middle((150 + 649) / 2, (100 + 499) / 2);
    if (shadow) {
        QCOMPARE(window.mapToGlobal(Find(window, "widget_bg")->pos()), middle - QPoint(299 / 2, 167 / 2));
    } else {
        QCOMPARE(window.pos(), middle - QPoint(301 / 2, 169 / 2));
    }
}

void TestExitWin::isNotShownDuringConstruction()
{
    // Counts the show events of windows.
    class ShowCounter : public QObject
    {
    public:
        int count = 0;

    protected:
        bool eventFilter(QObject* object, QEvent* event) override
        {
            count += object->isWindowType() && event->type() == QEvent::Show ? 1 : 0;
            return false;
        }
    } shows;
    qApp->installEventFilter(&shows);
    ExitWin window(nullptr);
    QCOMPARE(shows.count, 0);
    window.show();
    QCOMPARE(shows.count, 1);
}

QTEST_MAIN(TestExitWin)
#include "TestExitWin.moc"
