#pragma once

/// The typeface of all text whose font is not told: the program's own choice, and not the desktop's.
namespace Typeface {
/// Makes it the application's font, and the face that is asked for by its PostScript name the same one.
/// After the QApplication was built and before the first window; the main thread only.
void UseEverywhere();
} // namespace Typeface
