#include <QAccessible>
#include <QCloseEvent>
#include <QDialog>
#include <QGraphicsEffect>
#include <QGridLayout>
#include <QLabel>
#include <QListWidget>
#include <QMouseEvent>
#include <QPushButton>
#include <QScreen>
#include <QStackedWidget>
#include <QTest>
#include <QTimer>
#include <memory>

#include "shell/ExitWin.h"
#include "shell/VeloWin.h"
#include "supervision/AppManager.h"
#include "support/CapturedLog.h"
#include "support/Widgets.h"

namespace {
/// Counts the paint events of the watched widgets.
class PaintCounter : public QObject
{
public:
    int count = 0;

protected:
    bool eventFilter(QObject*, QEvent* event) override
    {
        count += event->type() == QEvent::Paint ? 1 : 0;
        return false;
    }
};
} // namespace

class TestVeloWin : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void widgetsHaveTheirProperties();
    void stackingPutsTheCloseButtonOverItsCover();
    void appearanceDependsOnShadow_data();
    void appearanceDependsOnShadow();
    void coversStayOnAllPagesWithoutShadow();
    void widgetsChangedByReportsAreOpaque();
    void firstRowHasItsImageAndText();
    void deselectedRowChangesNothing();
    void rowResetsBothPages();
    void minimiseButtonMinimises();
    void menuHasItsProperties_data();
    void menuHasItsProperties();
    void menuIsPlacedBelowItsButton_data();
    void menuIsPlacedBelowItsButton();
    void menuFollowsTheWindow();
    void menuHidesOnFocusOut();
    void eventsOfOtherObjectsDoNotHideTheMenu();
    void menuEntriesShowTheirPages_data();
    void menuEntriesShowTheirPages();
    void aboutPageRestoresTheRow();
    void clickOnTheRowLeavesTheSettings();
    void exitButtonShowsTheQuestionOnce();
    void closeShowsTheQuestionAndIsIgnored();
    void questionIsCentred();
    void confirmStopsThenQuitsThenCallsTheHook();
    void exitWorksWithoutAHook();
    void dragKeepsTheCardOnTheScreen();
    void dragIsClampedAtTheLowerRightCorner();
    void menuButtonIsNotHoveredAfterTheMenuHides_data();
    void menuButtonIsNotHoveredAfterTheMenuHides();
    void dragAreaEndsAt895And43_data();
    void dragAreaEndsAt895And43();
    void iconButtonsHaveNames();

private:
    /// The about page is the last of the stack.
    int AboutPage() { return Stack().count() - 1; }
    QStackedWidget& Stack() { return *Find<QStackedWidget>(*window, "appStack"); }
    QStackedWidget& Views() { return *Find<QStackedWidget>(*window, "ScreenWidget"); }
    QListWidget& List() { return *Find<QListWidget>(*window, "appList"); }
    void Click(const char* name) { QTest::mouseClick(Find(*window, name), Qt::LeftButton); }
    static QDialog& Menu();

    std::unique_ptr<CapturedLog> log;
    std::unique_ptr<VeloWin> window;
};

void TestVeloWin::init()
{
    log = std::make_unique<CapturedLog>();
    window = std::make_unique<VeloWin>(nullptr);
    window->show();
    log->Clear();
}

void TestVeloWin::cleanup()
{
    window.reset();
    log.reset();
}

QDialog& TestVeloWin::Menu()
{
    const QWidgetList windows = QApplication::topLevelWidgets();
    for (QWidget* widget : windows) {
        if (widget->objectName() == QLatin1String("PopUpMenu")) {
            return *qobject_cast<QDialog*>(widget);
        }
    }
    qFatal("there is no menu");
}

void TestVeloWin::widgetsHaveTheirProperties()
{
    QCOMPARE(static_cast<int>(window->windowFlags()) & 0xFFFF, 10241);
    QCOMPARE(window->windowModality(), Qt::WindowModal);
    QCOMPARE(window->windowTitle(), QStringLiteral("维乐助手"));
    QVERIFY(window->hasMouseTracking());
    QVERIFY(!window->autoFillBackground());
    QCOMPARE(window->property("useStyleWindowManager"), QVariant(false));
    const QMap<QByteArray, QRect> geometry{
        {"menuFrame", QRect(0, 0, 168, 504)},   {"appList", QRect(0, 112, 168, 216)},
        {"logo", QRect(16, 16, 32, 32)},        {"appFrame", QRect(168, 44, 728, 460)},
        {"appStack", QRect(0, 0, 728, 460)},    {"topFrame", QRect(168, 0, 728, 44)},
        {"menu", QRect(560, 0, 56, 44)},        {"minBtn", QRect(616, 0, 56, 44)},
        {"exitBtn", QRect(672, 0, 56, 44)},     {"justCover", QRect(698, 0, 30, 30)},
        {"justCover2", QRect(856, 464, 40, 40)}};
    for (auto at = geometry.cbegin(); at != geometry.cend(); ++at) {
        const QWidget* widget = Find(*window, at.key().constData());
        QCOMPARE(widget->geometry(), at.value());
        QCOMPARE(widget->minimumSize(), at.value().size());
        QCOMPARE(widget->maximumSize(), at.value().size());
    }
    QCOMPARE(Find(*window, "widget_bg")->size(), QSize(896, 504));
    QCOMPARE(window->maximumSize(), QSize(QWIDGETSIZE_MAX, QWIDGETSIZE_MAX));
    for (const char* name : {"menu", "minBtn", "exitBtn", "justCover", "justCover2", "appList"}) {
        QCOMPARE(Find(*window, name)->focusPolicy(), Qt::NoFocus);
    }
    for (const char* name : {"menu", "minBtn", "exitBtn"}) {
        QVERIFY(Find<QPushButton>(*window, name)->isFlat());
        QCOMPARE(Find<QPushButton>(*window, name)->iconSize(), QSize(46, 32));
    }
    QCOMPARE(Stack().widget(0), window->findChild<MultiScreen*>());
    QCOMPARE(Stack().widget(AboutPage()), window->findChild<AboutWin*>());
    QCOMPARE(Stack().currentIndex(), 0);
}

void TestVeloWin::stackingPutsTheCloseButtonOverItsCover()
{
    QStringList order;
    for (const QObject* child : Find(*window, "topFrame")->children()) {
        order.append(child->objectName());
    }
    QCOMPARE(order, QStringList({QStringLiteral("minBtn"), QStringLiteral("menu"),
                                 QStringLiteral("justCover"), QStringLiteral("exitBtn")}));
}

void TestVeloWin::appearanceDependsOnShadow_data()
{
    AddBothAppearances();
}

void TestVeloWin::appearanceDependsOnShadow()
{
    QFETCH(bool, shadow);
    const Appearance appearance(shadow);
    const VeloWin other(nullptr);
    QCOMPARE(other.testAttribute(Qt::WA_TranslucentBackground), shadow);
    QCOMPARE(Find(other, "widget_bg")->graphicsEffect() != nullptr, shadow);
    QCOMPARE(
        Find(other, "widget_bg")->styleSheet(),
        QStringLiteral("#widget_bg{\nbackground-color:white;\nborder-radius:%1px;\n}").arg(shadow ? 20 : 0));
    QCOMPARE(Find(other, "menuFrame")->styleSheet(),
             QStringLiteral("#menuFrame{\nbackground-color:rgba(231,239,252,1);\nborder:none;\n"
                            "border-radius:0px;\n%1}")
                 .arg(shadow
                          ? QStringLiteral("border-top-left-radius:20px;\nborder-bottom-left-radius:20px;\n")
                          : QString()));
    QCOMPARE(Find(other, "exitBtn")->styleSheet(),
             shadow ? CornerButtonStyle(true, "exitNormalShadow", "exitHoverShadow", "exitClickShadow")
                          .replace(QStringLiteral("QPushButton"), QStringLiteral("#exitBtn"))
                    : CornerButtonStyle(false, "exitNormal", "exitHover", "exitClick")
                          .replace(QStringLiteral("QPushButton"), QStringLiteral("#exitBtn"))
                          .remove(QStringLiteral("border-radius:0px;\n")));
    QCOMPARE(Find(other, "justCover")->isVisibleTo(&other), !shadow);
    QCOMPARE(Find(other, "justCover2")->isVisibleTo(&other), !shadow);
    QCOMPARE(other.palette().color(QPalette::Inactive, QPalette::Window) == QColor(0xE2, 0xE2, 0xE2),
             !shadow);
}

void TestVeloWin::coversStayOnAllPagesWithoutShadow()
{
    const Appearance appearance(false);
    VeloWin other(nullptr);
    other.show();
    other.ShowAboutWin();
    QVERIFY(Find(other, "justCover")->isVisible() && Find(other, "justCover2")->isVisible());
    other.ShowSetWin();
    QVERIFY(Find(other, "justCover")->isVisible() && Find(other, "justCover2")->isVisible());
}

void TestVeloWin::widgetsChangedByReportsAreOpaque()
{
    // For opaque widgets Qt does not paint the card below.
    for (const char* name : {"PreScreenBtn", "ScreenLabel", "StatusFrame"}) {
        QVERIFY(Find(*window, name)->testAttribute(Qt::WA_OpaquePaintEvent));
    }
    QVERIFY(!window->findChild<MultiScreen*>()->testAttribute(Qt::WA_OpaquePaintEvent));
}

void TestVeloWin::firstRowHasItsImageAndText()
{
    QCOMPARE(List().currentRow(), 0);
    QCOMPARE(List().item(0)->sizeHint(), QSize(168, 36));
    const auto labels = List().itemWidget(List().item(0))->findChildren<QLabel*>();
    QCOMPARE(labels.size(), 2);
    QCOMPARE(labels.at(1)->text(), QStringLiteral("多屏协同"));
    const auto* grid = qobject_cast<QGridLayout*>(List().itemWidget(List().item(0))->layout());
    QCOMPARE(grid->itemAtPosition(0, 0)->widget(), static_cast<QWidget*>(labels.at(0)));
    QCOMPARE(grid->itemAtPosition(0, 1)->widget(), static_cast<QWidget*>(labels.at(1)));
    QCOMPARE(labels.at(1)->font().pixelSize(), 14);
    QCOMPARE(labels.at(1)->font().letterSpacing(), 1.0);
    QCOMPARE(labels.at(1)->font().family(), QStringLiteral("NotoSansCJKsc-Regular"));
    QCOMPARE(labels.at(1)->font().styleStrategy(), QFont::NoFontMerging);
    QCOMPARE(labels.at(1)->font().families(), QStringList(QStringLiteral("Noto Sans CJK SC")));
    QCOMPARE(labels.at(1)->styleSheet(), QStringLiteral("color:rgba(31,31,31,1);"));
    QCOMPARE(labels.at(1)->textFormat(), Qt::PlainText);
    QVERIFY(labels.at(0)->pixmap(Qt::ReturnByValue).toImage() ==
            QPixmap(QStringLiteral(":/velo/tandra")).toImage());
    QCOMPARE(List().styleSheet(),
             QStringLiteral(
                 "QListWidget{\nbackground-color:transparent;\ncolor:rgba(31,31,31,1);\noutline:0px;\n}\n"
                 "QListWidget::item{\nbackground-color:rgba(239,245,255,1);\n}\n"
                 "QListWidget::item:hover{\nbackground-color:rgba(215,229,255,1);\n}\n"
                 "QListWidget::item:selected{\nbackground-color:rgba(206,224,255,1);\n}"));
    QCOMPARE(List().itemWidget(List().item(0))->layout()->contentsMargins(), QMargins(16, 0, 64, 0));
    const int rows = List().count();
    window->AddAppListItem(QStringLiteral(":/velo/tandra"), QStringLiteral("二"));
    QCOMPARE(List().count(), rows + 1);
    List().setCurrentRow(rows);
    window->ShowAboutWin();
    window->CloseAboutWin();
    QCOMPARE(List().currentRow(), rows);
}

void TestVeloWin::deselectedRowChangesNothing()
{
    Stack().setCurrentIndex(1);
    List().setCurrentRow(-1);
    QCOMPARE(Stack().currentIndex(), 1);
    window->CloseAboutWin();
    QCOMPARE(Stack().currentIndex(), 0);
    QVERIFY(log->Contains(QStringLiteral("INFO"), QStringLiteral("VELODESK"),
                          QStringLiteral("Velodesk back to app index: 0.")));
}

void TestVeloWin::rowResetsBothPages()
{
    window->ShowAboutWin();
    QTest::mouseClick(Find(*window, "proBtn"), Qt::LeftButton);
    Views().setCurrentIndex(3);
    List().setCurrentRow(0);
    QCOMPARE(Find<QStackedWidget>(*window, "aboutStack")->currentIndex(), 0);
    QCOMPARE(Views().currentIndex(), 0);
}

void TestVeloWin::minimiseButtonMinimises()
{
    Click("minBtn");
    QVERIFY(window->isMinimized());
}

void TestVeloWin::menuHasItsProperties_data()
{
    AddBothAppearances();
}

void TestVeloWin::menuHasItsProperties()
{
    QFETCH(bool, shadow);
    window.reset();
    const Appearance appearance(shadow);
    window = std::make_unique<VeloWin>(nullptr);
    const QDialog& menu = Menu();
    QCOMPARE(static_cast<int>(menu.windowFlags()), 264201);
    QCOMPARE(menu.windowTitle(), QStringLiteral("Dialog"));
    QCOMPARE(menu.size(), shadow ? QSize(136, 148) : QSize(98, 110));
    QCOMPARE(menu.minimumSize(), menu.maximumSize());
    QCOMPARE(menu.testAttribute(Qt::WA_TranslucentBackground), shadow);
    QCOMPARE(Find(menu, "widget_bg")->size(), QSize(96, 108));
    QCOMPARE(Find(menu, "widget_bg")->graphicsEffect() != nullptr, shadow);
    const struct
    {
        const char* name;
        const char* text;
    } entries[] = {{"help", "   使用帮助"}, {"set", "   设置"}, {"about", "   关于"}};
    for (const auto& entry : entries) {
        QCOMPARE(Find<QPushButton>(menu, entry.name)->text(), QString::fromUtf8(entry.text));
        QCOMPARE(Find(menu, entry.name)->maximumSize(), QSize(96, 36));
        QCOMPARE(Find(menu, entry.name)->focusPolicy(), Qt::NoFocus);
    }
    if (shadow) {
        const QString corners =
            QStringLiteral("QPushButton{border-%1-left-radius:8px;border-%1-right-radius:8px;"
                           "border-%2-left-radius:0px;border-%2-right-radius:0px;}");
        const QString top = QStringLiteral("top");
        const QString bottom = QStringLiteral("bottom");
        QVERIFY(Find(menu, "help")->styleSheet().endsWith(QLatin1Char('}') + corners.arg(top, bottom)));
        QVERIFY(Find(menu, "about")->styleSheet().endsWith(QLatin1Char('}') + corners.arg(bottom, top)));
        QCOMPARE(Find(menu, "widget_bg")->styleSheet(), QStringLiteral("#widget_bg{border-radius:8px;}"));
    } else {
        QVERIFY(!Find(menu, "help")->styleSheet().contains(QStringLiteral("radius")));
        QVERIFY(!Find(menu, "about")->styleSheet().contains(QStringLiteral("radius")));
    }
    QVERIFY(!Find(menu, "set")->styleSheet().contains(QStringLiteral("radius")));
}

void TestVeloWin::menuIsPlacedBelowItsButton_data()
{
    AddBothAppearances();
}

void TestVeloWin::menuIsPlacedBelowItsButton()
{
    QFETCH(bool, shadow);
    window.reset();
    const Appearance appearance(shadow);
    window = std::make_unique<VeloWin>(nullptr);
    window->show();
    Click("menu");
    const QDialog& menu = Menu();
    QVERIFY(menu.isVisible());
    const QPoint button = Find(*window, "menu")->mapToGlobal(QPoint(0, 0));
    const QWidget* card = Find(menu, "widget_bg");
    const QPoint corner = menu.pos() + card->pos();
    // The right edges are aligned, and the menu's top is directly below the button. Without shadow, the frame
    // is outside.
    QCOMPARE(corner.x() + 96, button.x() + 56 + (shadow ? 0 : -1));
    QCOMPARE(corner.y(), button.y() + 44 + (shadow ? 0 : 1));
    Menu().hide();
}

void TestVeloWin::menuFollowsTheWindow()
{
    Click("menu");
    const QPoint before = Menu().pos();
    Menu().hide();
    window->move(window->pos() + QPoint(13, -17));
    Click("menu");
    QCOMPARE(Menu().pos(), before + QPoint(13, -17));
    Menu().hide();
    // The menu is not clamped to the screen.
    window->move(window->pos() + QPoint(2000, 1500));
    Click("menu");
    QCOMPARE(Menu().pos(), before + QPoint(2013, 1483));
    Menu().hide();
}

void TestVeloWin::menuHidesOnFocusOut()
{
    window->ShowMenu();
    QVERIFY(Menu().isVisible());
    QFocusEvent out(QEvent::FocusOut);
    QCoreApplication::sendEvent(&Menu(), &out);
    QVERIFY(!Menu().isVisible());
}

void TestVeloWin::eventsOfOtherObjectsDoNotHideTheMenu()
{
    window->ShowMenu();
    auto* button = Find<QPushButton>(*window, "menu");
    QCursor::setPos(window->mapToGlobal(QPoint(5, 5)));
    button->setAttribute(Qt::WA_UnderMouse);
    QObject other;
    other.installEventFilter(window.get());
    QFocusEvent out(QEvent::FocusOut);
    QCoreApplication::sendEvent(&other, &out);
    QVERIFY(Menu().isVisible());
    QHideEvent hidden;
    QCoreApplication::sendEvent(&other, &hidden);
    QVERIFY(button->underMouse());
    Menu().hide();
}

void TestVeloWin::menuEntriesShowTheirPages_data()
{
    QTest::addColumn<QByteArray>("entry");
    QTest::addColumn<int>("view");
    QTest::addColumn<int>("row");
    QTest::addColumn<QString>("line");
    QTest::newRow("help") << QByteArray("help") << 1 << 0 << QString();
    QTest::newRow("set") << QByteArray("set") << 4 << -1 << QStringLiteral("Velodesk show set page.");
    QTest::newRow("about") << QByteArray("about") << 0 << -1 << QStringLiteral("Velodesk show about page.");
}

void TestVeloWin::menuEntriesShowTheirPages()
{
    QFETCH(QByteArray, entry);
    QFETCH(int, view);
    QFETCH(int, row);
    QFETCH(QString, line);
    // The entries "help" and "set" must leave the about page.
    Stack().setCurrentIndex(entry == "about" ? 0 : AboutPage());
    Views().setCurrentIndex(3);
    Click("menu");
    QTest::mouseClick(Find(Menu(), entry.constData()), Qt::LeftButton);
    QVERIFY(!Menu().isVisible());
    QCOMPARE(Stack().currentIndex(), entry == "about" ? AboutPage() : 0);
    QCOMPARE(Views().currentIndex(), view);
    QCOMPARE(List().currentRow(), row);
    QVERIFY(line.isEmpty() || log->Contains(QStringLiteral("INFO"), QStringLiteral("VELODESK"), line));
}

void TestVeloWin::aboutPageRestoresTheRow()
{
    window->ShowAboutWin();
    QCOMPARE(List().currentRow(), -1);
    QCOMPARE(Stack().currentIndex(), AboutPage());
    window->CloseAboutWin();
    QCOMPARE(List().currentRow(), 0);
    QCOMPARE(Stack().currentIndex(), 0);
}

void TestVeloWin::clickOnTheRowLeavesTheSettings()
{
    window->ShowSetWin();
    QCOMPARE(Views().currentIndex(), 4);
    QTest::mouseClick(List().viewport(), Qt::LeftButton, Qt::NoModifier,
                      List().visualItemRect(List().item(0)).center());
    QCOMPARE(Views().currentIndex(), 0);
    QCOMPARE(List().currentRow(), 0);
}

void TestVeloWin::exitButtonShowsTheQuestionOnce()
{
    Click("exitBtn");
    QPointer<ExitWin> first = window->findChild<ExitWin*>();
    QVERIFY(first != nullptr && first->isVisible());
    window->ShowExitWin();
    QVERIFY(first == nullptr);
    QCOMPARE(window->findChildren<ExitWin*>().size(), 1);
    QCOMPARE(log->Count(QStringLiteral("Velodesk show exit window.")), 2);
    QVERIFY(log->Contains(QStringLiteral("INFO"), QStringLiteral("VELODESK"),
                          QStringLiteral("Velodesk show exit window.")));
}

void TestVeloWin::closeShowsTheQuestionAndIsIgnored()
{
    QVERIFY(!window->close());
    QVERIFY(window->isVisible());
    QVERIFY(window->findChild<ExitWin*>()->isVisible());
    QVERIFY(log->Contains(QStringLiteral("INFO"), QStringLiteral("VELODESK"),
                          QStringLiteral("Velodesk closeEvent show exit window.")));
}

void TestVeloWin::questionIsCentred()
{
    window->ShowExitWin();
    const QRect around = window->geometry();
    const auto* question = window->findChild<ExitWin*>();
    const QPoint corner((around.left() + around.right()) / 2 - (question->width() - 1) / 2,
                        (around.top() + around.bottom()) / 2 - (question->height() - 1) / 2);
    QCOMPARE(question->pos(), corner);
}

void TestVeloWin::confirmStopsThenQuitsThenCallsTheHook()
{
    QStringList order;
    window->exitHook = [this, &order] {
        order.append(log->Messages().filter(QStringLiteral("stop app[0]")));
        order.append(QStringLiteral("exit hook"));
    };
    connect(qApp, &QCoreApplication::aboutToQuit, this, [&order] { order.append(QStringLiteral("quit")); });
    QTimer::singleShot(0, this, [this] {
        Click("exitBtn");
        QTest::mouseClick(Find(*window->findChild<ExitWin*>(), "exitBtn"), Qt::LeftButton);
    });
    QApplication::exec();
    // The hook is called immediately, before the event loop has ended.
    QCOMPARE(order, QStringList({QStringLiteral("stop app[0]"), QStringLiteral("exit hook"),
                                 QStringLiteral("quit")}));
    QCOMPARE(log->Messages().last(), QStringLiteral("Velodesk exit."));
    disconnect(qApp, nullptr, this, nullptr);
}

void TestVeloWin::exitWorksWithoutAHook()
{
    window->ExitVeloWin();
    QCOMPARE(log->Messages().last(), QStringLiteral("Velodesk exit."));
    QVERIFY(
        log->Contains(QStringLiteral("INFO"), QStringLiteral("VELODESK"), QStringLiteral("Velodesk exit.")));
}

void TestVeloWin::dragKeepsTheCardOnTheScreen()
{
    const Appearance appearance(true);
    QWidget* card = Find(*window, "widget_bg");
    SendMouse(*window, QEvent::MouseButtonPress, card->pos() + QPoint(300, 10));
    SendMouse(*window, QEvent::MouseMove, card->pos() - QPoint(3000, 3000));
    QCoreApplication::processEvents();
    QCOMPARE(card->size(), QSize(896, 504));
}

void TestVeloWin::dragIsClampedAtTheLowerRightCorner()
{
    // The clamping uses the card's size at the press, which the window does not store elsewhere.
    window.reset();
    const Appearance appearance(true);
    window = std::make_unique<VeloWin>(nullptr);
    window->show();
    QWidget* card = Find(*window, "widget_bg");
    SendMouse(*window, QEvent::MouseButtonPress, card->pos() + QPoint(300, 10));
    SendMouse(*window, QEvent::MouseMove, card->pos() + QPoint(3000, 3000));
    QCoreApplication::processEvents();
    const QRect area = QGuiApplication::primaryScreen()->availableGeometry();
    QCOMPARE(QRect(card->mapToGlobal(QPoint()), card->size()).bottomRight(), area.bottomRight());
    QCOMPARE(window->maximumSize(), QSize(QWIDGETSIZE_MAX, QWIDGETSIZE_MAX));
}

void TestVeloWin::menuButtonIsNotHoveredAfterTheMenuHides_data()
{
    QTest::addColumn<bool>("leaves");
    QTest::newRow("pointer has left") << true;
    QTest::newRow("pointer is on the button") << false;
}

void TestVeloWin::menuButtonIsNotHoveredAfterTheMenuHides()
{
    QFETCH(bool, leaves);
    auto* button = Find<QPushButton>(*window, "menu");
    QCursor::setPos(button->mapToGlobal(button->rect().center()));
    button->setAttribute(Qt::WA_UnderMouse);
    window->ShowMenu();
    if (leaves) {
        QCursor::setPos(window->mapToGlobal(QPoint(5, 5)));
    }
    button->setAttribute(Qt::WA_UnderMouse);
    QEvent other(QEvent::User);
    QCoreApplication::sendEvent(&Menu(), &other);
    QVERIFY(button->underMouse());
    QCoreApplication::processEvents();
    PaintCounter paints;
    button->installEventFilter(&paints);
    Menu().hide();
    QCOMPARE(button->underMouse(), !leaves);
    if (leaves) {
        QTRY_VERIFY(paints.count > 0);
    }
}

void TestVeloWin::dragAreaEndsAt895And43_data()
{
    QTest::addColumn<QPoint>("offset");
    QTest::addColumn<bool>("drags");
    QTest::newRow("last pixel") << QPoint(895, 43) << true;
    QTest::newRow("beside") << QPoint(896, 10) << false;
    QTest::newRow("below") << QPoint(300, 44) << false;
}

void TestVeloWin::dragAreaEndsAt895And43()
{
    QFETCH(QPoint, offset);
    QFETCH(bool, drags);
    window.reset();
    const Appearance appearance(false);
    window = std::make_unique<VeloWin>(nullptr);
    window->show();
    const QPoint before = window->pos();
    const QPoint press = Find(*window, "widget_bg")->pos() + offset;
    SendMouse(*window, QEvent::MouseButtonPress, press);
    SendMouse(*window, QEvent::MouseMove, press + QPoint(40, 40));
    QCOMPARE(window->pos() != before, drags);
}

void TestVeloWin::iconButtonsHaveNames()
{
    const QMap<QByteArray, QString> names{{"exitBtn", QStringLiteral("关闭")},
                                          {"minBtn", QStringLiteral("最小化")},
                                          {"menu", QStringLiteral("菜单")},
                                          {"abtBackBtn", QStringLiteral("返回")},
                                          {"proBackBtn", QStringLiteral("返回")},
                                          {"ReturnBtn", QStringLiteral("返回")},
                                          {"NewHandReturnBtn", QStringLiteral("返回")},
                                          {"ProblemReturnBtn", QStringLiteral("返回")},
                                          {"setBack", QStringLiteral("返回")},
                                          {"NameEditBtn", QStringLiteral("修改设备名称")}};
    for (auto at = names.cbegin(); at != names.cend(); ++at) {
        QAccessibleInterface* accessible =
            QAccessible::queryAccessibleInterface(Find(*window, at.key().constData()));
        QVERIFY(accessible != nullptr);
        QCOMPARE(accessible->text(QAccessible::Name), at.value());
        QCOMPARE(accessible->role(), QAccessible::PushButton);
    }
}

QTEST_MAIN(TestVeloWin)
#include "TestVeloWin.moc"
