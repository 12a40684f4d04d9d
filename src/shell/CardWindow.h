#pragma once

#include <QDialog>
#include <QPoint>
#include <QRect>
#include <QWidget>

class QBoxLayout;
class QMouseEvent;

/// The base of the four windows with a card. It places the card, shows the frame of a window without shadow,
/// lets the user drag the window by the upper part of the card, and makes the margin click-through.
///
/// The derived window calls SetCard() directly after setupUi(). Its constructor applies the appearance with
/// or without shadow, which never changes. Main thread only.
template <typename Window>
class CardWindow : public Window
{
public:
    /// With shadow: gives the card its effect and centres it in `area` (global pixels).
    void SetAdjustShadow(const QRect& area);
    /// Without shadow: centres the window in `area` (global pixels).
    void SetLayout(const QRect& area);

protected:
    using Window::Window;

    /// Sets the card and its layout. `lastDragPoint`: the largest offset from the card's top-left corner at
    /// which a press starts a drag.
    void SetCard(QBoxLayout* layout, QWidget* widget, const QPoint& lastDragPoint);
    /// Sets the window's background, which without shadow is visible as a frame of one pixel around the card.
    void SetFrameColor();
    /// Moves the card's top-left corner to `topLeft` (global pixels) during a drag.
    virtual void MoveCard(const QPoint& topLeft);

    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    /// Updates the mask when the pointer enters the card. There, the window gets no mouse moves, because the
    /// widgets on the card get them.
    bool eventFilter(QObject* watched, QEvent* event) override;

    QBoxLayout* cardLayout = nullptr;
    QWidget* card = nullptr;
    QPoint dragLimit;
    /// The position of the mouse press, relative to the card's top-left corner.
    QPoint dragOffset;
    bool dragging = false;
};

extern template class CardWindow<QWidget>;
extern template class CardWindow<QDialog>;

/// Returns the available area of the primary screen in global pixels.
QRect AvailableArea();

/// Returns the top-left corner of a rectangle that is centred in `area`. `size` is the rectangle's right
/// minus left and its bottom minus top, one pixel less than width and height. Half pixels are rounded towards
/// 0.
QPoint CentredCorner(const QRect& area, const QPoint& size);
