#pragma once

#include <QPoint>
#include <QRect>

class QBoxLayout;
class QWidget;

/// Adds a drop shadow to frameless windows and places these windows on the desktop.
///
/// A window has one child, the card, in a box layout. The card rectangle is the intended rectangle of the
/// card in global pixels. The window rectangle is larger by up to 20 pixels on each side, for the shadow.
/// Main thread only. If a pointer is null, the functions do nothing.
class Shadow
{
public:
    Shadow() = delete;

    /// True if the windows have a shadow. It is set before main() and never changes.
    static bool useShadow;

    /// Returns whether the desktop can show shadows. Runs one or two shell commands and blocks until they
    /// end. Returns false only on one distribution, if KWin reports that compositing is not active.
    static bool IsShadowEffectEnable();

    /// Adds to `target` a drop shadow that `parent` owns. If `target` has one, only sets its parameters.
    /// Returns 0, 1 for a null pointer, or 2 if there is no memory for the effect.
    static int AddShadowEffect(QWidget* parent, QWidget* target);

    /// Moves `window` from `oldRect` to `newRect`, and resizes it if the sizes differ. If `fixedSize` is
    /// true, the new size becomes its fixed size. Does nothing if both rectangles are equal.
    static void AdjustWindow(QWidget* window, const QRect& oldRect, const QRect& newRect, bool fixedSize);

    /// Moves `rect` into `bounds` without changing its size. Does nothing if `rect` is larger than `bounds`.
    static void CheckRect(QRect& rect, const QRect& bounds);

    /// Places `window` so that its card is at the card rectangle `rect`. Moves the card into the available
    /// area of the primary screen, unless `fixedSize` is false and the window was outside of it. Returns 0,
    /// or 1 for a null pointer.
    static int ShadowWinAdjust(QWidget* window, QBoxLayout* layout, QWidget* card, QRect rect,
                               bool fixedSize);

    /// As ShadowWinAdjust(), for a window under construction: the card is always moved into the available
    /// area, whatever the window's initial position is. A card that is larger than the area keeps its whole
    /// shadow.
    static int ShadowWinPlace(QWidget* window, QBoxLayout* layout, QWidget* card, const QRect& rect);

    /// As ShadowWinAdjust(), with the card's present size and its new top-left corner.
    static int ShadowWinMove(QWidget* window, QBoxLayout* layout, QWidget* card, const QPoint& topLeft,
                             bool fixedSize);

    /// Makes the shadow click-through at the cursor position `globalPos` (global pixels): the window's mask
    /// has a hole of one pixel there while the cursor is on the shadow, and is the whole window otherwise.
    static void ShadowWinMask(QWidget* window, QWidget* card, QPoint globalPos);
};
