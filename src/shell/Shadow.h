#pragma once

#include <QPoint>
#include <QRect>

class QBoxLayout;
class QWidget;

/// Gives a frameless window its drop shadow, the margin for it, and its position on the desktop.
///
/// A window has one child, the card, in a box layout. The card rectangle is the card's intended position in
/// global pixels; the window rectangle is the card rectangle with up to 20 pixels of shadow on each side.
/// Interface thread only. Every function ignores null pointers.
class Shadow
{
public:
    Shadow() = delete;

    /// True if every window has a shadow. Set before main() and never changed.
    static bool useShadow;

    /// Decides useShadow by one or two shell commands. Returns false only on one distribution, if its
    /// compositor answers exactly "false".
    static bool IsShadowEffectEnable();

    /// Gives `target` a drop shadow that `parent` owns, or sets up the one that it has. Returns 0, 1 for a
    /// null pointer, or 2 if there is no memory for the effect.
    static int AddShadowEffect(QWidget* parent, QWidget* target);

    /// Moves or resizes `window` from `oldRect` to `newRect` with the fewest calls. With `fixedSize`, a new
    /// size is fixed.
    static void AdjustWindow(QWidget* window, const QRect& oldRect, const QRect& newRect, bool fixedSize);

    /// Moves `rect` into `bounds`; its size stays. A rectangle larger than `bounds` is not changed.
    static void CheckRect(QRect& rect, const QRect& bounds);

    /// Places `window` so that its card is at the card rectangle `rect`, within the available area of the
    /// primary screen. Returns 0, or 1 for a null pointer.
    static int ShadowWinAdjust(QWidget* window, QBoxLayout* layout, QWidget* card, QRect rect,
                               bool fixedSize);

    /// As ShadowWinAdjust(), for a window under construction: its initial position is ignored, so it is
    /// always placed inside the available area. A card larger than that area gets the whole shadow.
    static int ShadowWinPlace(QWidget* window, QBoxLayout* layout, QWidget* card, const QRect& rect);

    /// As ShadowWinAdjust(), with the card's present size and its new top-left corner.
    static int ShadowWinMove(QWidget* window, QBoxLayout* layout, QWidget* card, const QPoint& topLeft,
                             bool fixedSize);

    /// Makes the shadow click-through at the cursor position `globalPos` (global pixels): the window's mask
    /// has a hole of one pixel there while the cursor is on the shadow, and is the whole window otherwise.
    static void ShadowWinMask(QWidget* window, QWidget* card, QPoint globalPos);
};
