#pragma once

#include <QObject>
#include <QWidget>
#include <functional>

/// Acts inside the nested event loop of a modal dialog: as soon as one is on show, `wanted` is called with
/// it. With further actors each dialog in turn gets its own.
class ModalActor
{
public:
    explicit ModalActor(std::function<void(QWidget*)> wanted);

    /// Whether the dialog came and was acted on.
    bool HasActed() const;

private:
    std::function<void(QWidget*)> act;
    QObject context;
    bool acted = false;
};
