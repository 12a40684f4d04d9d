#pragma once

#include <QObject>
#include <QWidget>
#include <functional>

/// Acts inside the nested event loop of a modal dialog: calls `wanted` with the dialog as soon as one is
/// shown. Several actors handle consecutive dialogs in their order.
class ModalActor
{
public:
    explicit ModalActor(std::function<void(QWidget*)> wanted);

    /// Whether a dialog was shown and `wanted` was called.
    bool HasActed() const;

private:
    std::function<void(QWidget*)> act;
    QObject context;
    bool acted = false;
};
