#pragma once

#include <QDialog>
#include <QPoint>
#include <QRect>
#include <QWidget>

class QBoxLayout;
class QMouseEvent;

/// The common base of all windows with a card: placing the card, the frame without shadow, dragging by the
/// upper band of the card, and the click-through margin.
///
/// A window calls SetCard() directly after setupUi(). Its constructor selects the appearance, with or without
/// shadow, which never changes. Interface thread only.
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
    /// Updates the mask when the pointer enters the card, because the widgets on the card get the mouse
    /// moves.
    bool eventFilter(QObject* watched, QEvent* event) override;

    QBoxLayout* cardLayout = nullptr;
    QWidget* card = nullptr;
    QPoint dragLimit;
    /// The press position relative to the card's top-left corner.
    QPoint dragOffset;
    bool dragging = false;
};

extern template class CardWindow<QWidget>;
extern template class CardWindow<QDialog>;

/// Returns the available area of the primary screen in global pixels.
QRect AvailableArea();

/// Returns the top-left corner that centres a rectangle of `size` (right minus left, bottom minus top) in
/// `area`. The integer divisions truncate.
QPoint CentredCorner(const QRect& area, const QPoint& size);
