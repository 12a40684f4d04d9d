#pragma once

#include <QFont>

/// The typeface of all text without a specified font. The program chooses it, not the desktop.
namespace Typeface {
/// Sets the application's font, and maps the PostScript name that some widgets ask for to the same family.
/// Call it on the main thread, after the QApplication and before the first window is constructed.
void UseEverywhere();

/// Returns a font with a family, a height in pixels, a weight (QFont::Weight) and a letter spacing in pixels.
/// Any thread.
QFont Spaced(const QString& family, int pixelSize, int weight, double spacing);
} // namespace Typeface
