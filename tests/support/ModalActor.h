#pragma once

#include <QObject>
#include <QWidget>
#include <functional>

/// Calls `action` with the next modal dialog as soon as it is shown, inside the dialog's event loop. Several
/// actors handle consecutive dialogs in the order of their construction.
class ModalActor
{
public:
    explicit ModalActor(std::function<void(QWidget*)> action);

    /// Returns whether a dialog was shown and `action` was called.
    bool HasActed() const;

private:
    std::function<void(QWidget*)> act;
    QObject context;
    bool acted = false;
};
