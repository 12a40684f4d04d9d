#pragma once

#include <QFont>

/// The font of all text for which the code and the forms set none. It does not depend on the desktop.
namespace Typeface {
/// Sets the application's font. Some widgets use the PostScript name of the font; maps this name to the same
/// family. Call it on the main thread, after the QApplication and before the first window is constructed.
void UseEverywhere();

/// Returns a font with a family, a height in pixels, a weight (QFont::Weight) and a letter spacing in pixels.
/// Any thread.
QFont Spaced(const QString& family, int pixelSize, int weight, double spacing);
} // namespace Typeface
