#include <QAccessible>
#include <QCheckBox>
#include <QListWidget>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <memory>

#include "multiscreen/MultiScreen.h"
#include "shell/Accessibility.h"
#include "shell/ExitWin.h"
#include "shell/ProtocolWin.h"
#include "shell/SerProEdit.h"
#include "shell/VeloMessageBox.h"
#include "shell/VeloWin.h"
#include "support/Widgets.h"

namespace {
const QString PRESS = QAccessibleActionInterface::pressAction();
const QString TOGGLE = QAccessibleActionInterface::toggleAction();

QAccessibleInterface& InterfaceOf(QWidget* widget)
{
    return *QAccessible::queryAccessibleInterface(widget);
}

QString Name(QAccessibleInterface& control)
{
    return control.text(QAccessible::Name);
}

void Press(QWidget* widget)
{
    InterfaceOf(widget).actionInterface()->doAction(PRESS);
}

bool CanBePressed(QAccessible::Role role)
{
    return role == QAccessible::Button || role == QAccessible::ButtonMenu || role == QAccessible::CheckBox ||
           role == QAccessible::RadioButton || role == QAccessible::MenuItem || role == QAccessible::ListItem;
}

bool NeedsName(QAccessible::Role role)
{
    return CanBePressed(role) || role == QAccessible::EditableText || role == QAccessible::List ||
           role == QAccessible::Window || role == QAccessible::Dialog || role == QAccessible::Pane ||
           role == QAccessible::PopupMenu;
}

bool IsCover(const QPushButton* button)
{
    return button->objectName().startsWith(QLatin1String("justCover"));
}
} // namespace

/// Verifies the accessible interfaces of all windows.
class TestAccessibility : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { Accessibility::Install(); }
    void init();
    void cleanup();

    void everyControlHasNameAndAction_data() { AddBothAppearances(); }
    void everyControlHasNameAndAction();
    void pressEmitsClickedOnce();
    void widgetHasExpectedRoleAndName_data();
    void widgetHasExpectedRoleAndName();
    void tickReportsItsState();
    void exitQuestionIsAnsweredByPress();
    void menuIsChildOfItsButton();
    void rowIsSelectedByPress();
    void documentIsReadOnlyText_data();
    void documentIsReadOnlyText();
    void nameFieldIsEnabledByThePencil();
    void coversHaveNoAction();

private:
    QWidgetList Windows() const { return {agreement.get(), window.get(), question, box.get()}; }
    /// Verifies an object and its descendants, and adds their widgets to `visited`.
    void VerifySubtree(QAccessibleInterface& top);
    QWidget* FindAnywhere(const char* name) const;
    QPushButton* Button(const char* name) const { return qobject_cast<QPushButton*>(FindAnywhere(name)); }

    std::unique_ptr<ProtocolWin> agreement;
    std::unique_ptr<VeloWin> window;
    std::unique_ptr<VeloMessageBox> box;
    ExitWin* question = nullptr;
    QObjectList visited;
};

void TestAccessibility::init()
{
    agreement = std::make_unique<ProtocolWin>(nullptr);
    window = std::make_unique<VeloWin>(nullptr);
    window->ShowExitWin();
    question = window->findChild<ExitWin*>();
    box = std::make_unique<VeloMessageBox>(nullptr);
    box->SetWarning();
    agreement->show();
    window->show();
    box->show();
    visited.clear();
}

void TestAccessibility::cleanup()
{
    box.reset();
    window.reset();
    agreement.reset();
}

QWidget* TestAccessibility::FindAnywhere(const char* name) const
{
    const QWidgetList widgets = QApplication::allWidgets();
    for (QWidget* widget : widgets) {
        if (widget->objectName() == QLatin1String(name)) {
            return widget;
        }
    }
    qFatal("there is no %s", name);
}

void TestAccessibility::VerifySubtree(QAccessibleInterface& top)
{
    const QString what = top.object()->objectName() + QLatin1Char(' ') + Name(top);
    visited.append(top.object());
    QVERIFY2(!NeedsName(top.role()) || !Name(top).isEmpty(), qPrintable(what));
    if (CanBePressed(top.role())) {
        const QString action = qobject_cast<QCheckBox*>(top.object()) != nullptr ? TOGGLE : PRESS;
        const QStringList expected = top.state().disabled ? QStringList() : QStringList(action);
        QVERIFY2(top.actionInterface()->actionNames() == expected, qPrintable(what));
    }
    for (int i = 0; i < top.childCount(); ++i) {
        QAccessibleInterface* child = top.child(i);
        QVERIFY2(child->parent() == &top, qPrintable(what));
        QCOMPARE(top.indexOfChild(child), i);
        VerifySubtree(*child);
    }
}

void TestAccessibility::everyControlHasNameAndAction()
{
    QFETCH(bool, shadow);
    cleanup();
    const Appearance appearance(shadow);
    init();
    for (QWidget* top : Windows()) {
        VerifySubtree(InterfaceOf(top));
    }
    const QWidgetList widgets = QApplication::allWidgets();
    for (QWidget* widget : widgets) {
        if (qobject_cast<QPushButton*>(widget) != nullptr || qobject_cast<SerProEdit*>(widget) != nullptr) {
            // The help view has no parent frame before a document is opened.
            const bool expected = widget->parentWidget() != nullptr;
            QVERIFY2(visited.count(widget) == (expected ? 1 : 0), qPrintable(widget->objectName()));
        }
    }
    cleanup();
}

void TestAccessibility::pressEmitsClickedOnce()
{
    FindAnywhere("BeginBtn")->setEnabled(true);
    std::vector<std::unique_ptr<QSignalSpy>> clicks;
    QStringList names;
    const QWidgetList widgets = QApplication::allWidgets();
    for (QWidget* widget : widgets) {
        auto* button = qobject_cast<QPushButton*>(widget);
        if (button == nullptr || IsCover(button)) {
            continue;
        }
        button->setEnabled(true);
        QVERIFY(QObject::disconnect(button, SIGNAL(clicked()), nullptr, nullptr));
        clicks.push_back(std::make_unique<QSignalSpy>(button, SIGNAL(clicked())));
        names.append(button->objectName());
        Press(button);
    }
    QVERIFY(clicks.size() > 20);
    for (std::size_t i = 0; i < clicks.size(); ++i) {
        QTRY_VERIFY2(clicks[i]->count() == 1, qPrintable(names.at(static_cast<int>(i))));
    }
}

void TestAccessibility::widgetHasExpectedRoleAndName_data()
{
    QTest::addColumn<int>("role");
    QTest::addColumn<QString>("name");
    const auto add = [](const char* widget, QAccessible::Role role, const char* name) {
        QTest::newRow(widget) << static_cast<int>(role) << QString::fromUtf8(name);
    };
    add("VeloWin", QAccessible::Window, "维乐助手");
    add("ProtocolWin", QAccessible::Window, "维乐助手");
    add("ExitWin", QAccessible::Dialog, "维乐助手");
    add("VeloMessageBox", QAccessible::Dialog, "维乐助手");
    add("page1", QAccessible::Pane, "多屏协同");
    add("page2", QAccessible::Pane, "使用帮助");
    add("page3", QAccessible::Pane, "新手指引");
    add("page4", QAccessible::Pane, "常见问题");
    add("page5", QAccessible::Pane, "设置");
    add("aboutPage", QAccessible::Pane, "关于");
    add("serProPage", QAccessible::Pane, "服务协议");
    add("appList", QAccessible::List, "应用列表");
    add("warnIcon", QAccessible::StaticText, "警告");
    add("NameEditLabel", QAccessible::StaticText, "PC设备名称：");
    add("ComputerNameEdit", QAccessible::EditableText, "PC设备名称");
    add("PreScreenBtn", QAccessible::Button, "开始投屏");
    add("AgreeLabel", QAccessible::Button, "我同意以上条款");
    add("btnRight", QAccessible::Button, "确定");
}

void TestAccessibility::widgetHasExpectedRoleAndName()
{
    QFETCH(int, role);
    QFETCH(QString, name);
    QAccessibleInterface& interface = InterfaceOf(FindAnywhere(QTest::currentDataTag()));
    QCOMPARE(static_cast<int>(interface.role()), role);
    QCOMPARE(Name(interface), name);
}

void TestAccessibility::tickReportsItsState()
{
    QAccessibleInterface& tick = InterfaceOf(Button("AgreeBtn"));
    QCOMPARE(tick.role(), QAccessible::CheckBox);
    QCOMPARE(Name(tick), QStringLiteral("同意条款"));
    QVERIFY(tick.state().checkable);
    QVERIFY(!tick.state().checked);
    QVERIFY(InterfaceOf(Button("BeginBtn")).state().disabled);
    Press(Button("AgreeBtn"));
    QTRY_VERIFY(tick.state().checked);
    QVERIFY(!InterfaceOf(Button("BeginBtn")).state().disabled);
    Press(Button("AgreeLabel"));
    QTRY_VERIFY(!tick.state().checked);
}

void TestAccessibility::exitQuestionIsAnsweredByPress()
{
    QSignalSpy quit(question, &ExitWin::CloseVeloApp);
    QObject::disconnect(question, &ExitWin::CloseVeloApp, window.get(), nullptr);
    auto* exit = Find<QPushButton>(*question, "exitBtn");
    auto* cancel = Find<QPushButton>(*question, "cancelBtn");
    for (QPushButton* button : {exit, cancel}) {
        QCOMPARE(InterfaceOf(button).role(), QAccessible::Button);
        QCOMPARE(Name(InterfaceOf(button)), button->text());
        QVERIFY(!InterfaceOf(button).state().checkable);
    }
    Press(cancel);
    QTRY_VERIFY(!question->isVisible());
    QCOMPARE(quit.count(), 0);
    question->show();
    Press(exit);
    QTRY_COMPARE(quit.count(), 1);
    exit->setEnabled(false);
    QVERIFY(InterfaceOf(exit).actionInterface()->actionNames().isEmpty());
}

void TestAccessibility::menuIsChildOfItsButton()
{
    QAccessibleInterface& button = InterfaceOf(Find(*window, "menu"));
    QCOMPARE(button.role(), QAccessible::ButtonMenu);
    QVERIFY(button.state().hasPopup);
    QCOMPARE(button.childCount(), 1);
    QAccessibleInterface& menu = *button.child(0);
    QCOMPARE(menu.role(), QAccessible::PopupMenu);
    QCOMPARE(Name(menu), QStringLiteral("菜单"));
    QVERIFY(menu.state().invisible);
    QStringList entries;
    for (int i = 0; i < menu.childCount(); ++i) {
        QCOMPARE(menu.child(i)->role(), QAccessible::MenuItem);
        entries.append(Name(*menu.child(i)));
    }
    QCOMPARE(entries,
             QStringList({QStringLiteral("使用帮助"), QStringLiteral("设置"), QStringLiteral("关于")}));

    Press(Find(*window, "menu"));
    QTRY_VERIFY(!menu.state().invisible);
    menu.child(2)->actionInterface()->doAction(PRESS);
    QTRY_VERIFY(menu.state().invisible);
    QVERIFY(!InterfaceOf(Find(*window, "aboutPage")).state().invisible);
}

void TestAccessibility::rowIsSelectedByPress()
{
    QAccessibleInterface& list = InterfaceOf(Find(*window, "appList"));
    QCOMPARE(list.childCount(), Find<QListWidget>(*window, "appList")->count());
    QAccessibleInterface& row = *list.child(0);
    QCOMPARE(row.role(), QAccessible::ListItem);
    QCOMPARE(Name(row), QStringLiteral("多屏协同"));
    QVERIFY(row.state().selectable);
    QVERIFY(row.state().selected);
    window->ShowSetWin();
    QVERIFY(!row.state().selected);
    row.actionInterface()->doAction(PRESS);
    QVERIFY(row.state().selected);
    QVERIFY(Find(*window, "page1")->isVisible());
}

void TestAccessibility::documentIsReadOnlyText_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("ContentFrame") << QStringLiteral("服务协议");
    QTest::newRow("protocal") << QStringLiteral("服务协议");
    QTest::newRow("NewHandFrame") << QStringLiteral("新手指引");
    QTest::newRow("CommonProblemFrame") << QStringLiteral("常见问题");
}

void TestAccessibility::documentIsReadOnlyText()
{
    QFETCH(QString, name);
    auto* page = window->findChild<MultiScreen*>();
    page->ClickCommonProblemBtn();
    if (qstrcmp(QTest::currentDataTag(), "NewHandFrame") == 0) {
        page->ClickNewHandBtn();
    }
    QAccessibleInterface& view = InterfaceOf(FindAnywhere(QTest::currentDataTag())->findChild<SerProEdit*>());
    QCOMPARE(view.role(), QAccessible::EditableText);
    QCOMPARE(Name(view), name);
    QVERIFY(view.state().readOnly);
    QVERIFY(view.textInterface()->characterCount() > 100);
}

void TestAccessibility::nameFieldIsEnabledByThePencil()
{
    QAccessibleInterface& field = InterfaceOf(Find(*window, "ComputerNameEdit"));
    QVERIFY(field.state().disabled);
    Press(Find(*window, "NameEditBtn"));
    QTRY_VERIFY(!field.state().disabled);
    QCOMPARE(field.text(QAccessible::Value), QStringLiteral("Tandra"));
}

void TestAccessibility::coversHaveNoAction()
{
    for (const char* name : {"justCover", "justCover2"}) {
        QAccessibleInterface& cover = InterfaceOf(Find(*window, name));
        QCOMPARE(cover.role(), QAccessible::Whitespace);
        QVERIFY(cover.actionInterface()->actionNames().isEmpty());
    }
}

QTEST_MAIN(TestAccessibility)
#include "TestAccessibility.moc"
