#include "support/ModalActor.h"

#include <QApplication>
#include <QTimer>

namespace {
constexpr int RETRY_MS = 5;
} // namespace

ModalActor::ModalActor(std::function<void(QWidget*)> action) : act(std::move(action))
{
    auto* timer = new QTimer(&context);
    QObject::connect(timer, &QTimer::timeout, &context, [this, timer] {
        QWidget* dialog = QApplication::activeModalWidget();
        if (dialog == nullptr || !dialog->isVisible() || dialog->property("actedOn").toBool()) {
            return;
        }
        timer->stop();
        dialog->setProperty("actedOn", true);
        acted = true;
        act(dialog);
    });
    timer->start(RETRY_MS);
}

bool ModalActor::HasActed() const
{
    return acted;
}
