#pragma once

#include <QDialog>
#include <QPoint>
#include <QRect>
#include <QWidget>

class QBoxLayout;
class QMouseEvent;

/// What all windows with a card of their own do alike: placing the card, the frame of the look without
/// shadow, dragging by the upper band of the card, and the click-through margin.
///
/// A window calls SetCard() right after setupUi(). Its constructor then fixes its look, which never changes.
template <typename Window>
class CardWindow : public Window
{
public:
    /// The look with shadow: gives the card its effect and centres it in `area` (global pixels).
    void SetAdjustShadow(const QRect& area);
    /// The look without shadow: centres the window in `area` (global pixels).
    void SetLayout(const QRect& area);

protected:
    using Window::Window;

    /// `lastDragPoint`: the last point from the card's top-left corner at which a press starts a drag.
    void SetCard(QBoxLayout* layout, QWidget* widget, const QPoint& lastDragPoint);
    /// Shows as a frame of one pixel around the card in the look without shadow.
    void SetFrameColor();
    /// Places the card's top-left corner during a drag.
    virtual void MoveCard(const QPoint& topLeft);

    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    /// Renews the mask when the pointer enters the card: its widgets get the mouse moves there.
    bool eventFilter(QObject* watched, QEvent* event) override;

    QBoxLayout* cardLayout = nullptr;
    QWidget* card = nullptr;
    QPoint dragLimit;
    /// The press position from the card's top-left corner.
    QPoint dragOffset;
    bool dragging = false;
};

extern template class CardWindow<QWidget>;
extern template class CardWindow<QDialog>;

/// The available area of the primary screen, in global pixels.
QRect AvailableArea();

/// The top-left corner that centres something of `size` (right minus left, bottom minus top) in `area`;
/// integer division that truncates.
QPoint CentredCorner(const QRect& area, const QPoint& size);
