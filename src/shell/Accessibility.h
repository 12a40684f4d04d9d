#pragma once

/// What assistive technology, such as a screen reader, is told of the windows where Qt's own answer does not
/// fit: a window that is none of Qt's kinds, a button whose look needs another class, a list row made of
/// widgets, and the menu, which Qt leaves out because it is a pop-up.
///
/// Names that do not follow from a text on the widget belong into the Designer forms (accessibleName).
namespace Accessibility {
/// Once, before the first window is built; the main thread only. Nothing of it runs until somebody asks.
void Install();
} // namespace Accessibility
