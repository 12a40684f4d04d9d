#include "shell/CardWindow.h"

#include <QBoxLayout>
#include <QBrush>
#include <QColor>
#include <QGuiApplication>
#include <QMouseEvent>
#include <QPalette>
#include <QScreen>

#include "shell/Shadow.h"

namespace {
const QColor FRAME_COLOR(0xE2, 0xE2, 0xE2);
} // namespace

template <typename Window>
void CardWindow<Window>::SetAdjustShadow(const QRect& area)
{
    Shadow::AddShadowEffect(this, card);
    // The margins of the layout are still 1 pixel, so this is the rectangle of the card.
    const QRect inner = this->geometry().adjusted(1, 1, -1, -1);
    const QPoint corner((area.left() + area.right()) / 2 - (inner.left() + inner.right()) / 2,
                        (area.top() + area.bottom()) / 2 - (inner.top() + inner.bottom()) / 2);
    Shadow::ShadowWinPlace(this, cardLayout, card, QRect(corner, inner.size()));
}

template <typename Window>
void CardWindow<Window>::SetLayout(const QRect& area)
{
    const QRect rect = this->geometry();
    this->move(CentredCorner(area, rect.bottomRight() - rect.topLeft()));
}

template <typename Window>
void CardWindow<Window>::SetCard(QBoxLayout* layout, QWidget* widget, const QPoint& lastDragPoint)
{
    cardLayout = layout;
    card = widget;
    dragLimit = lastDragPoint;
    card->installEventFilter(this);
}

template <typename Window>
void CardWindow<Window>::SetFrameColor()
{
    QPalette framePalette = this->palette();
    framePalette.setBrush(QPalette::Window, QBrush(FRAME_COLOR));
    this->setPalette(framePalette);
}

template <typename Window>
void CardWindow<Window>::MoveCard(const QPoint& topLeft)
{
    Shadow::ShadowWinMove(this, cardLayout, card, topLeft, false);
}

template <typename Window>
void CardWindow<Window>::mousePressEvent(QMouseEvent* event)
{
    const QPoint offset = event->localPos().toPoint() - card->pos();
    if (offset.x() <= dragLimit.x() && offset.y() <= dragLimit.y() && event->button() == Qt::LeftButton) {
        dragging = true;
        dragOffset = offset;
    }
    Window::mousePressEvent(event);
}

template <typename Window>
void CardWindow<Window>::mouseReleaseEvent(QMouseEvent* event)
{
    // The release of any button ends the drag.
    dragging = false;
    Window::mouseReleaseEvent(event);
}

template <typename Window>
void CardWindow<Window>::mouseMoveEvent(QMouseEvent* event)
{
    const QPoint globalPos = event->screenPos().toPoint();
    if (Shadow::useShadow) {
        if (dragging) {
            MoveCard(globalPos - dragOffset);
        }
        Shadow::ShadowWinMask(this, card, globalPos);
    } else if (dragging) {
        // Without shadow, a window can be dragged off the desktop.
        this->move(globalPos - dragOffset);
    }
    Window::mouseMoveEvent(event);
}

template <typename Window>
bool CardWindow<Window>::eventFilter(QObject* watched, QEvent* event)
{
    if (Shadow::useShadow && watched == card && event->type() == QEvent::Enter) {
        Shadow::ShadowWinMask(this, card, static_cast<QEnterEvent*>(event)->globalPos());
    }
    return Window::eventFilter(watched, event);
}

template class CardWindow<QWidget>;
template class CardWindow<QDialog>;

QRect AvailableArea()
{
    return QGuiApplication::primaryScreen()->availableGeometry();
}

QPoint CentredCorner(const QRect& area, const QPoint& size)
{
    return {(area.left() + area.right()) / 2 - size.x() / 2, (area.top() + area.bottom()) / 2 - size.y() / 2};
}
