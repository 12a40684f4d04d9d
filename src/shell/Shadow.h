#pragma once

#include <QPoint>
#include <QRect>

class QBoxLayout;
class QWidget;

/// How a frameless window gets its soft shadow, room for it, and its place on the desktop.
///
/// A window holds one child, the card, in a box layout. The card rectangle says in global pixels where the
/// card should stand; the window rectangle is the card with up to 20 pixels of shadow around it. Interface
/// thread only. Null pointers are harmless everywhere.
class Shadow
{
public:
    Shadow() = delete;

    /// True: every window uses the look with a shadow. Set before main() and never changed.
    static bool useShadow;

    /// The decision behind useShadow: runs one or two shell commands. Only the compositor's exact answer
    /// "false" on one distribution turns shadows off.
    static bool IsShadowEffectEnable();

    /// Gives `target` a drop shadow owned by `parent`, or sets up the one it has. 0; 1 for a null pointer; 2
    /// if the effect could not be allocated.
    static int AddShadowEffect(QWidget* parent, QWidget* target);

    /// Brings `window` from `oldRect` to `newRect` in the cheapest way; with `fixedSize` a new size is fixed.
    static void AdjustWindow(QWidget* window, const QRect& oldRect, const QRect& newRect, bool fixedSize);

    /// Pushes `rect` inside `bounds`, keeping its size; a larger one is left alone.
    static void CheckRect(QRect& rect, const QRect& bounds);

    /// Places `window` so that its card stands at the card rectangle `rect`, within the primary screen's
    /// available area. 0; 1 for a null pointer.
    static int ShadowWinAdjust(QWidget* window, QBoxLayout* layout, QWidget* card, QRect rect,
                               bool fixedSize);

    /// The same for a window that is being built: it has not got off the desktop, wherever Qt lets it begin,
    /// so it gets its shadow under a panel at the left or top as well. A card that is larger than the area
    /// gets the whole shadow.
    static int ShadowWinPlace(QWidget* window, QBoxLayout* layout, QWidget* card, const QRect& rect);

    /// As ShadowWinAdjust with the card's present size, given its new top-left corner.
    static int ShadowWinMove(QWidget* window, QBoxLayout* layout, QWidget* card, const QPoint& topLeft,
                             bool fixedSize);

    /// Makes the shadow click-through at the cursor, given in global pixels: a hole of one pixel in the
    /// window's mask while the cursor is beside the card, the whole window otherwise.
    static void ShadowWinMask(QWidget* window, QWidget* card, QPoint globalPos);
};
