#pragma once

#include <QImage>
#include <QRect>

/// The tolerance of a comparison of two images.
struct Allowance
{
    /// The largest accepted displacement in pixels.
    int places;
    /// The largest accepted difference of a channel (0 to 255), averaged over a small block.
    int tones;
};

/// Two rasterisers of the same font differ by less than 14. The normal blue and the hover blue differ by 19.
constexpr Allowance OTHER_RASTERISER{0, 15};
/// Other releases hint letters differently and start a line of text one or two pixels to the side.
constexpr Allowance OTHER_RELEASE{2, 24};

/// Returns the rectangle in which two images of the same size differ, or an empty one if they are equal
/// within `allowance`. Compares averages over small blocks to detect moved widgets and other colours. If no
/// displacement is allowed, it also detects lines of one pixel, which an average would hide.
QRect FindDifference(const QImage& one, const QImage& other, const Allowance& allowance = OTHER_RASTERISER);

/// Returns the largest difference of a channel (0 to 255) of any pixel of two images, or 255 if their sizes
/// differ.
int LargestDifference(const QImage& one, const QImage& other);
