#include <QLabel>
#include <QLayout>
#include <QMouseEvent>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

#include "shell/VeloMessageBox.h"
#include "support/ModalActor.h"
#include "support/ProgramMain.h"
#include "support/Widgets.h"

class TestVeloMessageBox : public QObject
{
    Q_OBJECT

private slots:
    void widgetsHaveTheirProperties_data();
    void widgetsHaveTheirProperties();
    void appearanceDependsOnShadow_data();
    void appearanceDependsOnShadow();
    void buttonTextsAreSet_data();
    void buttonTextsAreSet();
    void rightButtonTextsAreSet();
    void messageIsSplitAtItsFirstLineFeed_data();
    void messageIsSplitAtItsFirstLineFeed();
    void messageIsPlainText();
    void warningIsShownOnce();
    void existingBoxesAreCounted();
    void buttonEmitsBeforeTheBoxCloses_data();
    void buttonEmitsBeforeTheBoxCloses();
    void closeButtonEmitsNothing();
    void slotWithoutSenderEmitsNothingAndCloses();
    void setDefaultTextFontIgnoresNull();
    void isCentredOnTheMainWindowsCard_data();
    void isCentredOnTheMainWindowsCard();
    void dragAreaIncludesItsCorners_data();
    void dragAreaIncludesItsCorners();
};

void TestVeloMessageBox::widgetsHaveTheirProperties_data()
{
    AddBothAppearances();
}

void TestVeloMessageBox::widgetsHaveTheirProperties()
{
    QFETCH(bool, shadow);
    const Appearance appearance(shadow);
    VeloMessageBox box(nullptr);
    box.show();
    QCOMPARE(static_cast<int>(box.windowFlags()), 10251);
    QCOMPARE(box.windowModality(), Qt::WindowModal);
    QCOMPARE(box.windowTitle(), QStringLiteral("维乐助手"));
    QVERIFY(box.hasMouseTracking());
    QVERIFY(!box.autoFillBackground());
    QCOMPARE(box.property("useStyleWindowManager"), QVariant(false));
    QCOMPARE(Find(box, "widget_bg")->size(), QSize(300, 168));
    QCOMPARE(Find(box, "btnClose")->size(), QSize(46, 32));
    QCOMPARE(Find(box, "btnClose")->mapTo(Find(box, "widget_bg"), QPoint()), QPoint(253, 0));
    QCOMPARE(Find(box, "widgetTitlebar")->height(), 32);
    for (const char* name : {"btnLeft", "btnRight"}) {
        QCOMPARE(Find(box, name)->minimumSize(), QSize(82, 24));
        QCOMPARE(Find(box, name)->maximumSize(), QSize(80, 24));
        QCOMPARE(Find(box, name)->size(), QSize(82, 24));
        QCOMPARE(Find(box, name)->focusPolicy(), Qt::NoFocus);
    }
    QCOMPARE(Find(box, "btnClose")->focusPolicy(), Qt::NoFocus);
    for (const char* name : {"textMsgWarn", "textMsg", "btnLeft"}) {
        QCOMPARE(Find(box, name)->font().family(), QStringLiteral("Noto Sans CJK SC"));
        QCOMPARE(Find(box, name)->font().letterSpacing(), 1.0);
    }
    QCOMPARE(Find(box, "btnRight")->font().letterSpacing(), 1.0);
    QVERIFY(!Find(box, "warnIcon")->isVisible());
    QCOMPARE(Find<QLabel>(box, "textMsg")->alignment(), Qt::AlignHCenter | Qt::AlignTop);
    QCOMPARE(Find<QLabel>(box, "textMsg")->text(), QStringLiteral("提示信息"));
    QCOMPARE(Find<QPushButton>(box, "btnLeft")->text(), QStringLiteral("取消"));
    QCOMPARE(Find<QPushButton>(box, "btnRight")->text(), QStringLiteral("确定"));
    QCOMPARE(Find<QPushButton>(box, "btnClose")->accessibleName(), QStringLiteral("关闭"));
}

void TestVeloMessageBox::appearanceDependsOnShadow_data()
{
    AddBothAppearances();
}

void TestVeloMessageBox::appearanceDependsOnShadow()
{
    QFETCH(bool, shadow);
    const Appearance appearance(shadow);
    VeloMessageBox box(nullptr);
    QCOMPARE(box.testAttribute(Qt::WA_TranslucentBackground), shadow);
    QCOMPARE(Find(box, "widget_bg")->graphicsEffect() != nullptr, shadow);
    QCOMPARE(box.size(), shadow ? QSize(340, 208) : QSize(302, 170));
    QCOMPARE(
        Find(box, "btnClose")->styleSheet(),
        shadow ? CornerButtonStyle(true, "close_normal_shadow", "close_hover_shadow", "close_pressed_shadow")
               : CornerButtonStyle(false, "close_normal", "close_hover", "close_pressed"));
    QCOMPARE(Find(box, "widgetTitlebar")->styleSheet(),
             shadow ? QStringLiteral("border-radius:0px;border-top-left-radius:20px;") : QString());
    QCOMPARE(Find(box, "widget_bg")->styleSheet(),
             shadow ? QStringLiteral("border-radius:20px;background-color: rgb(247, 247, 247);")
                    : QStringLiteral("#widget_bg{\nbackground-color:#F7F7F7;\n}"));
    for (const auto group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled}) {
        QCOMPARE(box.palette().color(group, QPalette::Window) == QColor(0xE2, 0xE2, 0xE2), !shadow);
    }
}

void TestVeloMessageBox::buttonTextsAreSet_data()
{
    QTest::addColumn<QString>("first");
    QTest::addColumn<QString>("second");
    QTest::addColumn<bool>("leftShown");
    QTest::addColumn<QString>("right");
    // The texts differ from those in the form.
    QTest::newRow("one") << QStringLiteral("是") << QString() << false << QStringLiteral("是");
    QTest::newRow("one, empty text") << QStringLiteral("是") << QStringLiteral("") << false
                                     << QStringLiteral("是");
    QTest::newRow("two") << QStringLiteral("否") << QStringLiteral("是") << true << QStringLiteral("是");
}

void TestVeloMessageBox::buttonTextsAreSet()
{
    QFETCH(QString, first);
    QFETCH(QString, second);
    QFETCH(bool, leftShown);
    QFETCH(QString, right);
    VeloMessageBox box(nullptr);
    box.SetBtnText(first, second);
    QCOMPARE(Find(box, "btnLeft")->isVisibleTo(&box), leftShown);
    QCOMPARE(Find<QPushButton>(box, "btnRight")->text(), right);
    if (leftShown) {
        QCOMPARE(Find<QPushButton>(box, "btnLeft")->text(), first);
    }
}

void TestVeloMessageBox::rightButtonTextsAreSet()
{
    VeloMessageBox box(nullptr);
    box.SetRightBtnText(QStringLiteral("R"), QStringLiteral("L"));
    QCOMPARE(Find<QPushButton>(box, "btnRight")->text(), QStringLiteral("R"));
    QCOMPARE(Find<QPushButton>(box, "btnLeft")->text(), QStringLiteral("L"));
    QVERIFY(Find(box, "btnLeft")->isVisibleTo(&box));
    box.SetRightBtnText(QStringLiteral("R2"), QString());
    QCOMPARE(Find<QPushButton>(box, "btnRight")->text(), QStringLiteral("R2"));
    QVERIFY(!Find(box, "btnLeft")->isVisibleTo(&box));
}

void TestVeloMessageBox::messageIsSplitAtItsFirstLineFeed_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("head");
    QTest::addColumn<QString>("rest");
    QTest::newRow("none") << QStringLiteral("a") << QStringLiteral("a") << QString();
    QTest::newRow("one") << QStringLiteral("a\nb") << QStringLiteral("a") << QStringLiteral("b");
    QTest::newRow("two") << QStringLiteral("a\nb\nc") << QStringLiteral("a") << QStringLiteral("b\nc");
    QTest::newRow("at the end") << QStringLiteral("a\n") << QStringLiteral("a") << QString();
    QTest::newRow("at the start") << QStringLiteral("\nb") << QString() << QStringLiteral("b");
}

void TestVeloMessageBox::messageIsSplitAtItsFirstLineFeed()
{
    QFETCH(QString, text);
    QFETCH(QString, head);
    QFETCH(QString, rest);
    VeloMessageBox box(nullptr);
    box.SetMessageText(text);
    QCOMPARE(Find<QLabel>(box, "textMsgWarn")->text(), head);
    QCOMPARE(Find<QLabel>(box, "textMsg")->text(), rest);
    QVERIFY(!Find<QLabel>(box, "textMsg")->wordWrap());
}

void TestVeloMessageBox::messageIsPlainText()
{
    const QString text = QStringLiteral("/home/<b>folder</b>&amp;<br>");
    VeloMessageBox box(nullptr);
    box.SetMessageText(text + QLatin1Char('\n') + text);
    for (const char* name : {"textMsgWarn", "textMsg"}) {
        auto& label = *Find<QLabel>(box, name);
        label.ensurePolished();
        QVERIFY(label.sizeHint().width() >= label.fontMetrics().horizontalAdvance(text));
    }
}

void TestVeloMessageBox::warningIsShownOnce()
{
    VeloMessageBox box(nullptr);
    box.SetWarning();
    QVERIFY(Find(box, "warnIcon")->isVisibleTo(&box));
    Find(box, "warnIcon")->hide();
    box.SetWarning();
    QVERIFY(!Find(box, "warnIcon")->isVisibleTo(&box));
}

void TestVeloMessageBox::existingBoxesAreCounted()
{
    QCOMPARE(VeloMessageBox::GetWindCount(), 0);
    {
        VeloMessageBox first(nullptr);
        VeloMessageBox second(nullptr);
        QCOMPARE(VeloMessageBox::GetWindCount(), 2);
        first.close();
        QCOMPARE(VeloMessageBox::GetWindCount(), 2);
    }
    QCOMPARE(VeloMessageBox::GetWindCount(), 0);
}

void TestVeloMessageBox::buttonEmitsBeforeTheBoxCloses_data()
{
    QTest::addColumn<QByteArray>("button");
    QTest::addColumn<int>("left");
    QTest::addColumn<int>("right");
    QTest::newRow("left") << QByteArray("btnLeft") << 1 << 0;
    QTest::newRow("right") << QByteArray("btnRight") << 0 << 1;
}

void TestVeloMessageBox::buttonEmitsBeforeTheBoxCloses()
{
    QFETCH(QByteArray, button);
    QFETCH(int, left);
    QFETCH(int, right);
    VeloMessageBox box(nullptr);
    QSignalSpy leftSpy(&box, &VeloMessageBox::SignalLeftBtnClick);
    QSignalSpy rightSpy(&box, &VeloMessageBox::SignalRightBtnClick);
    bool openAtSignal = false;
    const auto recordVisibility = [&box, &openAtSignal] {
        openAtSignal = box.isVisible();
    };
    connect(&box, &VeloMessageBox::SignalLeftBtnClick, this, recordVisibility);
    connect(&box, &VeloMessageBox::SignalRightBtnClick, this, recordVisibility);
    const ModalActor actor(
        [button](QWidget* dialog) { QTest::mouseClick(Find(*dialog, button.constData()), Qt::LeftButton); });
    box.exec();
    QVERIFY(actor.HasActed());
    QCOMPARE(leftSpy.count(), left);
    QCOMPARE(rightSpy.count(), right);
    QVERIFY(openAtSignal);
    QVERIFY(!box.isVisible());
}

void TestVeloMessageBox::closeButtonEmitsNothing()
{
    VeloMessageBox box(nullptr);
    QSignalSpy leftSpy(&box, &VeloMessageBox::SignalLeftBtnClick);
    QSignalSpy rightSpy(&box, &VeloMessageBox::SignalRightBtnClick);
    const ModalActor actor(
        [](QWidget* dialog) { QTest::mouseClick(Find(*dialog, "btnClose"), Qt::LeftButton); });
    box.exec();
    QCOMPARE(leftSpy.count() + rightSpy.count(), 0);
    QVERIFY(!box.isVisible());
}

void TestVeloMessageBox::slotWithoutSenderEmitsNothingAndCloses()
{
    VeloMessageBox box(nullptr);
    QSignalSpy leftSpy(&box, &VeloMessageBox::SignalLeftBtnClick);
    QSignalSpy rightSpy(&box, &VeloMessageBox::SignalRightBtnClick);
    box.show();
    QVERIFY(QMetaObject::invokeMethod(&box, "SlotButtonEvent"));
    QCOMPARE(leftSpy.count() + rightSpy.count(), 0);
    QVERIFY(!box.isVisible());
}

void TestVeloMessageBox::setDefaultTextFontIgnoresNull()
{
    VeloMessageBox box(nullptr);
    box.SetDefaultTextFont(nullptr, 3);
    QLabel label;
    box.SetDefaultTextFont(&label, 3);
    QCOMPARE(label.font().letterSpacing(), 3.0);
    QCOMPARE(label.font().letterSpacingType(), QFont::AbsoluteSpacing);
}

void TestVeloMessageBox::isCentredOnTheMainWindowsCard_data()
{
    QTest::addColumn<QSize>("pageSize");
    // The centre is rounded differently for even and odd sizes.
    QTest::newRow("even size") << QSize(468, 302);
    QTest::newRow("odd size") << QSize(469, 303);
}

void TestVeloMessageBox::isCentredOnTheMainWindowsCard()
{
    QFETCH(QSize, pageSize);
    const Appearance appearance(true);
    // The page's position in the card is (168, 44).
    QWidget page;
    page.setGeometry(QRect(QPoint(250, 150), pageSize));
    VeloMessageBox box(&page);
    box.show();
    const QPoint corner = page.mapToGlobal(QPoint(-168, -44));
    const QRect area(corner, corner + QPoint(168 + pageSize.width() - 1, 44 + pageSize.height() - 1));
    // The offset is half of the card's size, 300 by 168.
    const QPoint expected((area.left() + area.right()) / 2 - 150, (area.top() + area.bottom()) / 2 - 84);
    QCOMPARE(box.mapToGlobal(Find(box, "widget_bg")->pos()), expected);
}

void TestVeloMessageBox::dragAreaIncludesItsCorners_data()
{
    AddBothAppearances();
}

void TestVeloMessageBox::dragAreaIncludesItsCorners()
{
    QFETCH(bool, shadow);
    const Appearance appearance(shadow);
    VeloMessageBox box(nullptr);
    box.show();
    QVERIFY(Drags(box, QPoint(0, 0)));
    QVERIFY(Drags(box, QPoint(299, 31)));
    QVERIFY(!Drags(box, QPoint(300, 31)));
    QVERIFY(!Drags(box, QPoint(299, 32)));
}

PROGRAM_TEST_MAIN(TestVeloMessageBox)
#include "TestVeloMessageBox.moc"
