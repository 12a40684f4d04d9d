#include <QAbstractButton>
#include <QAccessible>
#include <QDir>
#include <QFrame>
#include <QLabel>
#include <QLineEdit>
#include <QMetaMethod>
#include <QPushButton>
#include <QStackedWidget>
#include <QTest>
#include <QWindow>
#include <algorithm>
#include <iterator>
#include <memory>

#include "SettingsFile.h"
#include "multiscreen/MultiScreen.h"
#include "shell/AboutWin.h"
#include "shell/ExitWin.h"
#include "shell/ProtocolWin.h"
#include "shell/VeloMessageBox.h"
#include "shell/VeloWin.h"
#include "support/CapturedLog.h"
#include "support/Widgets.h"

namespace {
const QString GREY_FRAME = QStringLiteral("background-color: rgb(249, 249, 249); border:transparent;");
const QString HEADING = QStringLiteral("color: rgb(31, 31, 31);\nbackground-color:transparent;");
const QString DARK = QStringLiteral("color: rgb(31, 31, 31);");
const QString DARK_HEX = QStringLiteral("color: #1F1F1F;");
const QString NAME = QStringLiteral("color: #000000;\nbackground-color: rgba(0, 0, 0, 0);");
const QString TRANSPARENT_BTN = QStringLiteral("background-color:transparent;border-width:0px;");
const QString HELP_TEXT = QStringLiteral(
    "QPushButton {color: #1F1F1F;}QPushButton:hover {color: #2B6FF2;}QPushButton:pressed {color: #2B6FF2;}");

/// Returns the rules of a style sheet without white space.
QString WithoutSpaces(QString styleSheet)
{
    return styleSheet.remove(QLatin1Char('\n')).remove(QLatin1Char(' '));
}

QString ThreeImages(const char* normal, const char* hover, const char* pressed)
{
    return QStringLiteral("QPushButton{border-image:url(:/velo/%1);}"
                          "QPushButton:hover{border-image:url(:/velo/%2);}"
                          "QPushButton:pressed{border-image:url(:/velo/%3);}")
        .arg(QLatin1String(normal), QLatin1String(hover), QLatin1String(pressed));
}

const QString RETURN_BTN = ThreeImages("normalreturnbtn", "hoverreturnbtn", "pressreturnbtn");
const QString PENCIL = ThreeImages("normaleditbtn", "hovereditbtn", "presseditbtn");
const QString SMALL_BTN = QStringLiteral(
    "QPushButton{background-color:#FFFFFF;border:1pxsolid#DBDBDB;border-radius:12px;color:#1F1F1F;}"
    "QPushButton:hover{border:1pxsolid#959595;}"
    "QPushButton:pressed{border:1pxsolid#1953C4;color:#1953C4;}");
const QString SMALL_BTN_DISABLED =
    QStringLiteral("QPushButton:disabled{border:1pxsolidrgba(0,0,0,0.2);background-color:rgba(0,0,0,0.04);"
                   "color:rgba(0,0,0,0.4);}");

QStringList ChildNames(const QWidget* parent)
{
    QStringList names;
    for (const QObject* child : parent->children()) {
        if (child->isWidgetType()) {
            names.append(child->objectName());
        }
    }
    return names;
}

QStringList Names(const char* names)
{
    return QString::fromLatin1(names).split(QLatin1Char(' '));
}

/// Returns the texts of `all` that are in `known`: what is added to the page does not change their order.
QStringList Known(const QStringList& all, const QStringList& known)
{
    QStringList found;
    std::copy_if(all.begin(), all.end(), std::back_inserter(found),
                 [&known](const QString& text) { return known.contains(text); });
    return found;
}

bool IsChinese(const QString& text)
{
    for (const QChar letter : text) {
        if (letter < QChar(0x4E00) || letter > QChar(0x9FA5)) {
            return false;
        }
    }
    return !text.isEmpty();
}
} // namespace

class TestMultiScreenPage : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void pageHasItsProperties();
    void classHasItsSlotsInOrderAndNoSignals();
    void stackHasFivePages();
    void widgetsHaveTheirParentAndGeometry_data();
    void widgetsHaveTheirParentAndGeometry();
    void nameRowIsBuilt();
    void framesHaveTheirShapes_data();
    void framesHaveTheirShapes();
    void fontsAreSet_data();
    void fontsAreSet();
    void fontStyleCreatesFonts();
    void widgetsOnThePageKeepTheApplicationsFontSize();
    void widgetsHaveTheirStackingOrder_data();
    void widgetsHaveTheirStackingOrder();
    void clickOnAnIconReachesTheButtonOverIt();
    void labelBeforeTheNameTakesNoInput();
    void focusPoliciesAreSet();
    void buttonsShowTheirViews_data();
    void buttonsShowTheirViews();
    void constructionConnectsOnce();
    void firstStartStoresTheDesktopPath();
    void laterStartKeepsThePath();
    void folderNameIsPlainText();
    void iconButtonsHaveNames_data();
    void iconButtonsHaveNames();
    void iconButtonsOfAllWindowsHaveChineseNames();

private:
    int Index() { return Find<QStackedWidget>(*page, "ScreenWidget")->currentIndex(); }

    std::unique_ptr<CapturedLog> log;
    std::unique_ptr<MultiScreen> page;
};

void TestMultiScreenPage::init()
{
    SettingsFile::Write("[Tandra]\nfileStorePath=/x\n");
    log = std::make_unique<CapturedLog>();
    page = std::make_unique<MultiScreen>(nullptr);
}

void TestMultiScreenPage::cleanup()
{
    page.reset();
    log.reset();
}

void TestMultiScreenPage::pageHasItsProperties()
{
    QCOMPARE(page->size(), QSize(728, 460));
    QCOMPARE(page->windowTitle(), QStringLiteral("Form"));
    QCOMPARE(page->styleSheet(), QStringLiteral("border:transparent"));
    QCOMPARE(page->property("useStyleWindowManager"), QVariant(false));
    QVERIFY(page->layout() == nullptr);
    QVERIFY(page->parentWidget() == nullptr);
    QCOMPARE(ChildNames(page.get()), QStringList(QStringLiteral("ScreenWidget")));
}

void TestMultiScreenPage::classHasItsSlotsInOrderAndNoSignals()
{
    QStringList slotNames;
    const QMetaObject& meta = MultiScreen::staticMetaObject;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
        QCOMPARE(meta.method(i).methodType(), QMetaMethod::Slot);
        slotNames.append(QString::fromLatin1(meta.method(i).name()));
    }
    const QStringList known =
        Names("ClickPreScreenBtn ClickNameEditBtn ClickHelpBtn ComputerNameEditEditingFinished "
              "ComputerNameTextEdited BackToMainScreen ClickNewHandBtn ClickCommonProblemBtn "
              "ClickNewHandReturnBtn ClickProblemReturnBtn ClickNewHandTextBtn ClickCommonProTextBtn "
              "ProcessStarted ProcessFinished ProcessAppError ProcessEvent ClearTrustDevices TrustOK "
              "ChangePath SetHelpPageBtn");
    QCOMPARE(Known(slotNames, known), known);
}

void TestMultiScreenPage::stackHasFivePages()
{
    const auto* stack = Find<QStackedWidget>(*page, "ScreenWidget");
    QCOMPARE(stack->geometry(), QRect(0, 0, 728, 460));
    QCOMPARE(stack->count(), 5);
    QCOMPARE(stack->currentIndex(), 0);
    QString rules;
    for (int i = 0; i < stack->count(); ++i) {
        QCOMPARE(stack->widget(i)->objectName(), QStringLiteral("page%1").arg(i + 1));
        rules += QStringLiteral("#page%1{border-bottom-right-radius:20px;}").arg(i + 1);
    }
    QCOMPARE(WithoutSpaces(stack->styleSheet()),
             QStringLiteral("#ScreenWidget{border-bottom-right-radius:20px;}") + rules);
    QCOMPARE(stack->font().family(), QStringLiteral("Noto Sans"));
    QCOMPARE(stack->font().weight(), 50);
    QCOMPARE(stack->font().styleStrategy(), QFont::PreferAntialias);
    QCOMPARE(stack->widget(0)->font().family(), QStringLiteral("Noto Sans"));
    QCOMPARE(stack->widget(0)->font().weight(), 75);
}

void TestMultiScreenPage::widgetsHaveTheirParentAndGeometry_data()
{
    QTest::addColumn<QByteArray>("className");
    QTest::addColumn<QString>("parent");
    QTest::addColumn<QRect>("geometry");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("styleSheet");
    const QByteArray button = "QPushButton";
    const QByteArray label = "QLabel";
    const QByteArray frame = "QFrame";
    QString parent;
    const auto row = [&parent](const char* name, const QByteArray& className, const QRect& geometry,
                               const char* text, const QString& styleSheet) {
        QTest::newRow(name) << className << parent << geometry << QString::fromUtf8(text) << styleSheet;
    };
    parent = QStringLiteral("page1");
    row("PreScreenBtn", button, {560, 20, 112, 32}, "开始投屏", QString());
    row("line", frame, {56, 68, 616, 2}, "", QStringLiteral("border-top: 2px solid #F0F0F0;"));
    row("ScreenIntroduce", label, {204, 26, 144, 24}, "极速投屏，无缝连接",
        QStringLiteral("color: #6D6D6D;\nfont:16px Noto Sans CJK SC"));
    row("ScreenTitle", label, {56, 12, 132, 40}, "多屏协同", DARK);
    row("StatusFrame", frame, {207, 118, 306, 192}, "", QString());
    row("frame", frame, {152, 361, 416, 22}, "", QStringLiteral("border:none;"));
    row("ScreenLabel", label, {340, 318, 48, 28}, "未投屏", DARK);
    parent = QStringLiteral("page2");
    row("ReturnBtn", button, {56, 16, 40, 40}, "", RETURN_BTN);
    row("TitleLabel", label, {104, 16, 132, 40}, "使用帮助", HEADING);
    row("NewHandBtn", button, {188, 184, 64, 72}, "", TRANSPARENT_BTN);
    row("CommonProblemBtn", button, {480, 184, 64, 72}, "", TRANSPARENT_BTN);
    row("NewHandIcon", label, {196, 188, 49, 48}, "", QStringLiteral("border-image: url(:/velo/new_hand);"));
    row("ProblemIcon", label, {488, 188, 50, 49}, "",
        QStringLiteral("border-image: url(:/velo/common_problem);"));
    row("NewHandTextBtn", button, {188, 257, 64, 24}, "新手指引", HELP_TEXT);
    row("CommonProTextBtn", button, {480, 257, 64, 24}, "常见问题", HELP_TEXT);
    parent = QStringLiteral("page3");
    row("NewHandReturnBtn", button, {56, 16, 40, 40}, "", RETURN_BTN);
    row("NewHandLabel", label, {104, 16, 132, 40}, "新手指引", HEADING);
    row("NewHandFrame", frame, {56, 72, 616, 368}, "", GREY_FRAME);
    parent = QStringLiteral("page4");
    row("ProblemReturnBtn", button, {56, 16, 40, 40}, "", RETURN_BTN);
    row("CommonProblemLabel", label, {104, 16, 132, 40}, "常见问题", HEADING);
    row("CommonProblemFrame", frame, {56, 72, 616, 368}, "", GREY_FRAME);
    parent = QStringLiteral("page5");
    row("setTitle", label, {104, 16, 132, 40}, "设置", DARK_HEX);
    row("setBack", button, {56, 16, 40, 40}, "", RETURN_BTN);
    row("saveFilePath", label, {56, 92, 181, 21}, "文件默认保存路径", DARK_HEX);
    row("change", button, {590, 92, 82, 24}, "修改", SMALL_BTN);
    row("savePath", label, {59, 124, 531, 24}, "/home/zelmora/Velodesk", QStringLiteral("color: #6D6D6D;"));
    row("line_2", label, {56, 168, 616, 2}, "", QStringLiteral("background-color:#F0F0F0;"));
    row("labelDevide", label, {56, 190, 181, 21}, "多屏协同已信任设备", DARK_HEX);
    row("numDevice", label, {56, 222, 181, 21}, "当前信任设备台数：0", DARK_HEX);
    row("clear", button, {590, 190, 82, 24}, "全部清除", SMALL_BTN + SMALL_BTN_DISABLED);
}

void TestMultiScreenPage::widgetsHaveTheirParentAndGeometry()
{
    QFETCH(QByteArray, className);
    QFETCH(QString, parent);
    QFETCH(QRect, geometry);
    QFETCH(QString, text);
    QFETCH(QString, styleSheet);
    const QWidget* widget = Find(*page, QTest::currentDataTag());
    QCOMPARE(QByteArray(widget->metaObject()->className()), className);
    QCOMPARE(widget->parentWidget()->objectName(), parent);
    QCOMPARE(widget->geometry(), geometry);
    QCOMPARE(widget->property("text").toString(), text);
    if (!styleSheet.isEmpty()) {
        QCOMPARE(WithoutSpaces(widget->styleSheet()), WithoutSpaces(styleSheet));
    }
}

void TestMultiScreenPage::nameRowIsBuilt()
{
    const QWidget* row = Find(*page, "frame");
    QCOMPARE(ChildNames(row), Names("ComputerNameEdit NameEditBtn NameEditLabel"));
    const auto* field = Find<QLineEdit>(*page, "ComputerNameEdit");
    const auto* label = Find<QLineEdit>(*page, "NameEditLabel");
    QCOMPARE(field->height(), 20);
    QCOMPARE(label->size(), QSize(82, 20));
    QCOMPARE(Find(*page, "NameEditBtn")->size(), QSize(16, 16));
    QCOMPARE(field->styleSheet(), NAME);
    QCOMPARE(label->styleSheet(), NAME);
    QCOMPARE(WithoutSpaces(Find(*page, "NameEditBtn")->styleSheet()), PENCIL);
    QCOMPARE(field->alignment() & Qt::AlignHorizontal_Mask, Qt::AlignLeft);
    QCOMPARE(label->alignment() & Qt::AlignHorizontal_Mask, Qt::AlignRight);
    QCOMPARE(label->text(), QStringLiteral("PC设备名称："));
    QVERIFY(!label->isEnabled());
}

void TestMultiScreenPage::framesHaveTheirShapes_data()
{
    QTest::addColumn<int>("shape");
    QTest::addColumn<int>("shadow");
    for (const char* name : {"StatusFrame", "frame", "NewHandFrame", "CommonProblemFrame"}) {
        QTest::newRow(name) << static_cast<int>(QFrame::StyledPanel) << static_cast<int>(QFrame::Raised);
    }
    QTest::newRow("line") << static_cast<int>(QFrame::HLine) << static_cast<int>(QFrame::Sunken);
}

void TestMultiScreenPage::framesHaveTheirShapes()
{
    QFETCH(int, shape);
    QFETCH(int, shadow);
    const auto* frame = Find<QFrame>(*page, QTest::currentDataTag());
    QCOMPARE(static_cast<int>(frame->frameShape()), shape);
    QCOMPARE(static_cast<int>(frame->frameShadow()), shadow);
}

void TestMultiScreenPage::fontsAreSet_data()
{
    QTest::addColumn<int>("pixelSize");
    QTest::addColumn<int>("weight");
    QTest::addColumn<double>("spacing");
    for (const char* name : {"ScreenTitle", "TitleLabel", "NewHandLabel", "CommonProblemLabel", "setTitle"}) {
        QTest::newRow(name) << 32 << 75 << 0.7;
    }
    for (const char* name :
         {"ScreenLabel", "NewHandTextBtn", "CommonProTextBtn", "saveFilePath", "labelDevide"}) {
        QTest::newRow(name) << 16 << 75 << 0.0;
    }
    for (const char* name : {"ComputerNameEdit", "NameEditLabel", "change", "clear"}) {
        QTest::newRow(name) << 12 << 50 << 0.7;
    }
    for (const char* name : {"savePath", "numDevice"}) {
        QTest::newRow(name) << 14 << 50 << 0.0;
    }
}

void TestMultiScreenPage::fontsAreSet()
{
    QFETCH(int, pixelSize);
    QFETCH(int, weight);
    QFETCH(double, spacing);
    const QFont font = Find(*page, QTest::currentDataTag())->font();
    QCOMPARE(font.family(), QStringLiteral("Noto Sans CJK SC"));
    QCOMPARE(font.pixelSize(), pixelSize);
    QCOMPARE(font.weight(), weight);
    // QFont stores the spacing in 64ths of a pixel.
    QVERIFY2(qAbs(font.letterSpacing() - spacing) < 1.0 / 64,
             qPrintable(QString::number(font.letterSpacing())));
    QCOMPARE(font.letterSpacingType(), QFont::AbsoluteSpacing);
}

void TestMultiScreenPage::fontStyleCreatesFonts()
{
    const QFont font = page->FontStyle(QStringLiteral("Somewhere"), 21, 63, 1.5);
    QCOMPARE(font.family(), QStringLiteral("Somewhere"));
    QCOMPARE(font.pixelSize(), 21);
    QCOMPARE(font.weight(), 63);
    QCOMPARE(font.letterSpacing(), 1.5);
    QCOMPARE(font.letterSpacingType(), QFont::AbsoluteSpacing);
}

void TestMultiScreenPage::widgetsOnThePageKeepTheApplicationsFontSize()
{
    const QFont before = QApplication::font();
    QFont font = before;
    font.setPixelSize(13);
    QApplication::setFont(font);
    MultiScreen inPixels(nullptr);
    inPixels.show();
    QCOMPARE(Find(inPixels, "ScreenWidget")->font().pixelSize(), 13);
    font.setPointSizeF(11.5);
    QApplication::setFont(font);
    MultiScreen inPoints(nullptr);
    inPoints.show();
    QCOMPARE(Find(inPoints, "ScreenWidget")->font().pointSizeF(), 11.5);
    QApplication::setFont(before);
}

void TestMultiScreenPage::widgetsHaveTheirStackingOrder_data()
{
    QTest::addColumn<QStringList>("names");
    QTest::newRow("page1") << Names("PreScreenBtn line ScreenIntroduce ScreenTitle StatusFrame frame "
                                    "ScreenLabel");
    QTest::newRow("page2") << Names("ReturnBtn TitleLabel NewHandTextBtn CommonProTextBtn NewHandIcon "
                                    "ProblemIcon NewHandBtn CommonProblemBtn");
    QTest::newRow("page3") << Names("NewHandReturnBtn NewHandLabel NewHandFrame");
    QTest::newRow("page4") << Names("ProblemReturnBtn CommonProblemLabel CommonProblemFrame");
    QTest::newRow("page5") << Names("setTitle setBack saveFilePath change savePath line_2 labelDevide "
                                    "numDevice clear");
}

void TestMultiScreenPage::widgetsHaveTheirStackingOrder()
{
    QFETCH(QStringList, names);
    QCOMPARE(Known(ChildNames(Find(*page, QTest::currentDataTag())), names), names);
}

void TestMultiScreenPage::clickOnAnIconReachesTheButtonOverIt()
{
    page->show();
    page->ClickHelpBtn();
    const QWidget* menu = Find(*page, "page2");
    QCOMPARE(menu->childAt(Find(*page, "NewHandIcon")->geometry().center()), Find(*page, "NewHandBtn"));
    QCOMPARE(menu->childAt(Find(*page, "ProblemIcon")->geometry().center()), Find(*page, "CommonProblemBtn"));
}

void TestMultiScreenPage::labelBeforeTheNameTakesNoInput()
{
    page->show();
    auto* label = Find<QLineEdit>(*page, "NameEditLabel");
    QVERIFY(QTest::qWaitForWindowExposed(page.get()));
    QTest::mouseClick(page->windowHandle(), Qt::LeftButton, Qt::NoModifier,
                      label->mapTo(page.get(), label->rect().center()));
    QVERIFY(!label->hasFocus());
    QTest::keyClick(page->windowHandle(), Qt::Key_A);
    QCOMPARE(label->text(), QStringLiteral("PC设备名称："));
}

void TestMultiScreenPage::focusPoliciesAreSet()
{
    const auto buttons = page->findChildren<QPushButton*>();
    QVERIFY(buttons.size() >= 12);
    for (const QPushButton* button : buttons) {
        QVERIFY2(button->focusPolicy() == Qt::NoFocus, qPrintable(button->objectName()));
    }
    QCOMPARE(Find(*page, "page3")->focusPolicy(), Qt::WheelFocus);
    for (const char* name : {"page1", "page2", "page4", "page5"}) {
        QCOMPARE(Find(*page, name)->focusPolicy(), Qt::NoFocus);
    }
}

void TestMultiScreenPage::buttonsShowTheirViews_data()
{
    QTest::addColumn<int>("from");
    QTest::addColumn<int>("to");
    QTest::newRow("ReturnBtn") << 1 << 0;
    QTest::newRow("NewHandBtn") << 1 << 2;
    QTest::newRow("NewHandTextBtn") << 1 << 2;
    QTest::newRow("CommonProblemBtn") << 1 << 3;
    QTest::newRow("CommonProTextBtn") << 1 << 3;
    QTest::newRow("NewHandReturnBtn") << 2 << 1;
    QTest::newRow("ProblemReturnBtn") << 3 << 1;
    QTest::newRow("setBack") << 4 << 0;
}

void TestMultiScreenPage::buttonsShowTheirViews()
{
    QFETCH(int, from);
    QFETCH(int, to);
    page->show();
    Find<QStackedWidget>(*page, "ScreenWidget")->setCurrentIndex(from);
    QTest::mouseClick(Find(*page, QTest::currentDataTag()), Qt::LeftButton);
    QCOMPARE(Index(), to);
    page->BackToMainScreen();
    QCOMPARE(Index(), 0);
    for (const auto slot : {&MultiScreen::ClickHelpBtn, &MultiScreen::ClickNewHandReturnBtn,
                            &MultiScreen::ClickProblemReturnBtn}) {
        page->BackToMainScreen();
        (page.get()->*slot)();
        QCOMPARE(Index(), 1);
    }
}

void TestMultiScreenPage::constructionConnectsOnce()
{
    log->Clear();
    emit Singleton<AppManager>::GetInstance()->AppStarted(AppManager::TANDRA_APP);
    emit Singleton<AppManager>::GetInstance()->AppFinished(AppManager::TANDRA_APP, 4);
    emit Singleton<AppManager>::GetInstance()->AppError(AppManager::TANDRA_APP, QProcess::FailedToStart);
    COMPARE_LISTS(log->Messages(),
                  QStringList({QStringLiteral("App started."), QStringLiteral("Process finished, id 4."),
                               QStringLiteral("Tandra startup failed.")}));
    log->Clear();
    page.reset();
    emit Singleton<AppManager>::GetInstance()->AppStarted(AppManager::TANDRA_APP);
    COMPARE_LISTS(log->Messages(), QStringList());
}

void TestMultiScreenPage::firstStartStoresTheDesktopPath()
{
    qunsetenv("XDG_CONFIG_HOME");
    SettingsFile::Write(QByteArray());
    page = std::make_unique<MultiScreen>(nullptr);
    const QString desktop = QDir::homePath() + QStringLiteral("/Desktop");
    QCOMPARE(SettingsFile::SavePath(), desktop.toUtf8());
    QCOMPARE(SettingsFile::DeviceName(), QByteArray("Tandra"));
    page->ShowSetView();
    QCOMPARE(Find<QLabel>(*page, "savePath")->text(), desktop);
}

void TestMultiScreenPage::laterStartKeepsThePath()
{
    QCOMPARE(SettingsFile::SavePath(), QByteArray("/x"));
    // The label has the form's text until the settings view is shown.
    QCOMPARE(Find<QLabel>(*page, "savePath")->text(), QStringLiteral("/home/zelmora/Velodesk"));
}

void TestMultiScreenPage::folderNameIsPlainText()
{
    const QString path = QStringLiteral("/home/<b>folder</b>&amp<br>");
    SettingsFile::Write("[Tandra]\nfileStorePath=" + path.toUtf8() + "\n");
    page->ShowSetView();
    auto& label = *Find<QLabel>(*page, "savePath");
    QCOMPARE(label.text(), path);
    label.ensurePolished();
    QVERIFY(label.sizeHint().width() >= label.fontMetrics().horizontalAdvance(path));
}

void TestMultiScreenPage::iconButtonsHaveNames_data()
{
    QTest::addColumn<QString>("accessible");
    QTest::newRow("NameEditBtn") << QStringLiteral("修改设备名称");
    QTest::newRow("NewHandBtn") << QStringLiteral("新手指引");
    QTest::newRow("CommonProblemBtn") << QStringLiteral("常见问题");
    for (const char* name : {"ReturnBtn", "NewHandReturnBtn", "ProblemReturnBtn", "setBack"}) {
        QTest::newRow(name) << QStringLiteral("返回");
    }
}

void TestMultiScreenPage::iconButtonsHaveNames()
{
    QFETCH(QString, accessible);
    QAccessibleInterface* button =
        QAccessible::queryAccessibleInterface(Find(*page, QTest::currentDataTag()));
    QVERIFY(button != nullptr);
    QCOMPARE(button->role(), QAccessible::PushButton);
    QCOMPARE(button->text(QAccessible::Name), accessible);
}

void TestMultiScreenPage::iconButtonsOfAllWindowsHaveChineseNames()
{
    VeloWin mainWindow(nullptr);
    mainWindow.ShowExitWin();
    const ProtocolWin agreement(nullptr);
    const VeloMessageBox box(nullptr);
    const AboutWin about(nullptr);
    QMap<QString, int> counts;
    for (const QWidget* window : QApplication::allWidgets()) {
        const auto* button = qobject_cast<const QAbstractButton*>(window);
        // Skips the two covers, which make the corners square without shadow and have no action.
        if (button == nullptr || !button->text().isEmpty() ||
            button->objectName().startsWith(QLatin1String("justCover"))) {
            continue;
        }
        QAccessibleInterface* accessible =
            QAccessible::queryAccessibleInterface(const_cast<QAbstractButton*>(button));
        const QString name = accessible->text(QAccessible::Name);
        QVERIFY2(IsChinese(name), qPrintable(button->objectName() + QLatin1Char(' ') + name));
        ++counts[name];
    }
    // One button each in the main window, the agreement, the message box and the exit question.
    QCOMPARE(counts.value(QStringLiteral("关闭")), 4);
    QCOMPARE(counts.value(QStringLiteral("最小化")), 2);
    QCOMPARE(counts.value(QStringLiteral("菜单")), 1);
    QCOMPARE(counts.value(QStringLiteral("同意条款")), 1);
    QVERIFY(counts.value(QStringLiteral("返回")) >= 4);
    QVERIFY(counts.value(QStringLiteral("修改设备名称")) >= 1);
}

QTEST_MAIN(TestMultiScreenPage)
#include "TestMultiScreenPage.moc"
