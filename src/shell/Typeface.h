#pragma once

#include <QFont>

/// The typeface of all text whose font is not told: the program's own choice, and not the desktop's.
namespace Typeface {
/// Makes it the application's font, and the face that is asked for by its PostScript name the same one.
/// After the QApplication was built and before the first window; the main thread only.
void UseEverywhere();

/// A font of that family, height in pixels, weight (QFont::Weight) and pixels between its letters. Any
/// thread.
QFont Spaced(const QString& family, int pixelSize, int weight, double spacing);
} // namespace Typeface
