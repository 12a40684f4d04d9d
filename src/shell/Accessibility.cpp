#include "shell/Accessibility.h"

#include <QAbstractButton>
#include <QAccessibleWidget>
#include <QApplication>
#include <QListWidget>
#include <algorithm>
#include <iterator>

namespace {
struct Kind
{
    const char* objectName;
    QAccessible::Role role;
};

/// Widgets of which only the role is corrected.
constexpr Kind PLAIN[] = {
    {"VeloWin", QAccessible::Window},
    {"ProtocolWin", QAccessible::Window},
    {"ExitWin", QAccessible::Dialog},
    {"page1", QAccessible::Pane},
    {"page2", QAccessible::Pane},
    {"page3", QAccessible::Pane},
    {"page4", QAccessible::Pane},
    {"page5", QAccessible::Pane},
    {"aboutPage", QAccessible::Pane},
    {"serProPage", QAccessible::Pane},
    // Two buttons that only cover corners of the card, and a text field that the user cannot edit.
    {"justCover", QAccessible::Whitespace},
    {"justCover2", QAccessible::Whitespace},
    {"NameEditLabel", QAccessible::StaticText},
};

/// Widgets whose accessible object is a Control.
constexpr Kind CONTROLS[] = {
    {"appRow", QAccessible::ListItem},
    {"menu", QAccessible::ButtonMenu},
    {"PopUpMenu", QAccessible::PopupMenu},
    {"help", QAccessible::MenuItem},
    {"set", QAccessible::MenuItem},
    {"about", QAccessible::MenuItem},
    // The buttons of the exit question. They are checkable, so Qt would report check boxes and toggle them
    // without a click.
    {"exitBtn", QAccessible::Button},
    {"cancelBtn", QAccessible::Button},
    {"AgreeBtn", QAccessible::CheckBox},
};

/// Returns a top-level widget with the object name `objectName`; null if there is none.
QWidget* TopLevel(const char* objectName)
{
    const QWidgetList widgets = QApplication::topLevelWidgets();
    for (QWidget* widget : widgets) {
        if (widget->objectName() == QLatin1String(objectName)) {
            return widget;
        }
    }
    return nullptr;
}

/// The accessible object of a widget whose parent, children, state or actions are corrected. Its only action,
/// Press, has the same effect as a click.
class Control : public QAccessibleWidget
{
public:
    using QAccessibleWidget::QAccessibleWidget;

    QAccessibleInterface* parent() const override;
    int childCount() const override { return Children().size(); }
    QAccessibleInterface* child(int index) const override;
    int indexOfChild(const QAccessibleInterface* child) const override;
    QString text(QAccessible::Text kind) const override;
    QAccessible::State state() const override;
    QStringList actionNames() const override;
    void doAction(const QString& action) override;

private:
    /// Returns the widget that is reported as the parent; null for the widget's own parent.
    QWidget* Owner() const;
    QWidgetList Children() const;
    QListWidget* ListOfRow() const;
    QListWidgetItem* ItemOfRow() const;
};

QAccessibleInterface* Control::parent() const
{
    QAccessibleInterface* owner = QAccessible::queryAccessibleInterface(Owner());
    return owner == nullptr ? QAccessibleWidget::parent() : owner;
}

QAccessibleInterface* Control::child(int index) const
{
    return QAccessible::queryAccessibleInterface(Children().value(index));
}

int Control::indexOfChild(const QAccessibleInterface* child) const
{
    return child == nullptr ? -1 : Children().indexOf(qobject_cast<QWidget*>(child->object()));
}

QString Control::text(QAccessible::Text kind) const
{
    const QString text = QAccessibleWidget::text(kind);
    const auto* button = qobject_cast<const QAbstractButton*>(widget());
    // The texts of the menu entries begin with blanks, which indent them.
    return kind == QAccessible::Name && text.isEmpty() && button != nullptr ? button->text().trimmed() : text;
}

QAccessible::State Control::state() const
{
    QAccessible::State state = QAccessibleWidget::state();
    if (role() == QAccessible::CheckBox) {
        // The tick button does not store its state. The agreement is ticked while the start button is
        // enabled.
        const auto* begin = widget()->window()->findChild<QWidget*>(QStringLiteral("BeginBtn"));
        state.checkable = true;
        state.checked = begin != nullptr && begin->isEnabled();
    } else if (role() == QAccessible::ListItem) {
        const QListWidgetItem* item = ItemOfRow();
        state.selectable = true;
        state.selected = item != nullptr && item->isSelected();
    } else if (role() == QAccessible::ButtonMenu) {
        state.hasPopup = true;
    }
    return state;
}

QStringList Control::actionNames() const
{
    const bool container = role() == QAccessible::List || role() == QAccessible::PopupMenu;
    return container || !widget()->isEnabled() ? QStringList() : QStringList(pressAction());
}

void Control::doAction(const QString& action)
{
    if (!actionNames().contains(action)) {
        return;
    }
    if (auto* button = qobject_cast<QAbstractButton*>(widget())) {
        // animateClick() clicks later, so this function returns even if the click opens a modal question.
        button->animateClick();
    } else if (QListWidget* list = ListOfRow()) {
        list->setCurrentItem(ItemOfRow());
    }
}

QWidget* Control::Owner() const
{
    if (role() == QAccessible::ListItem) {
        return ListOfRow();
    }
    if (role() == QAccessible::MenuItem) {
        return widget()->window();
    }
    const QWidget* mainWindow = role() == QAccessible::PopupMenu ? TopLevel("VeloWin") : nullptr;
    return mainWindow == nullptr ? nullptr : mainWindow->findChild<QWidget*>(QStringLiteral("menu"));
}

QWidgetList Control::Children() const
{
    QWidgetList children;
    if (const auto* list = qobject_cast<const QListWidget*>(widget())) {
        for (int row = 0; row < list->count(); ++row) {
            children.append(list->itemWidget(list->item(row)));
        }
    } else if (role() == QAccessible::ButtonMenu) {
        children.append(TopLevel("PopUpMenu"));
    } else if (role() == QAccessible::PopupMenu) {
        const auto entries = widget()->findChildren<QAbstractButton*>();
        for (QAbstractButton* entry : entries) {
            children.append(entry);
        }
    }
    // A row under construction has no widget yet, and the menu can be destroyed before its button.
    children.removeAll(nullptr);
    return children;
}

QListWidget* Control::ListOfRow() const
{
    return qobject_cast<QListWidget*>(widget()->parentWidget()->parentWidget());
}

QListWidgetItem* Control::ItemOfRow() const
{
    const QListWidget* list = ListOfRow();
    for (int row = 0; list != nullptr && row < list->count(); ++row) {
        if (list->itemWidget(list->item(row)) == widget()) {
            return list->item(row);
        }
    }
    return nullptr;
}

QAccessibleInterface* Interface(const QString&, QObject* object)
{
    auto* widget = qobject_cast<QWidget*>(object);
    if (widget == nullptr) {
        return nullptr;
    }
    // Not selected by its object name: Qt calls this function before the form has set the name.
    if (qobject_cast<QListWidget*>(widget) != nullptr) {
        return new Control(widget, QAccessible::List);
    }
    const auto isKind = [widget](const Kind& kind) {
        return widget->objectName() == QLatin1String(kind.objectName);
    };
    const auto* plain = std::find_if(std::begin(PLAIN), std::end(PLAIN), isKind);
    if (plain != std::end(PLAIN)) {
        return new QAccessibleWidget(widget, plain->role);
    }
    const auto* control = std::find_if(std::begin(CONTROLS), std::end(CONTROLS), isKind);
    if (control != std::end(CONTROLS)) {
        return new Control(widget, control->role);
    }
    return nullptr;
}
} // namespace

void Accessibility::Install()
{
    QAccessible::installFactory(Interface);
}
