#pragma once

#include <QImage>
#include <QRect>

/// What may differ in two pictures that look the same.
struct Allowance
{
    /// How far from its place a thing may stand, in pixels.
    int places;
    /// By how much a channel may differ, of 255, in the average of a small block.
    int tones;
};

/// Two rasterisers of one font stay below 14; the hover blue is 19 from the normal blue.
constexpr Allowance OTHER_RASTERISER{0, 15};
/// Other releases hint letters otherwise and begin a line of them a pixel or two elsewhere.
constexpr Allowance OTHER_RELEASE{2, 24};

/// Where two pictures of one size differ, as a rectangle in pixels; an empty one if they look the same.
/// Averages over small blocks are compared, so that what is allowed passes, and a widget that was moved or
/// has another colour does not; and lines of one pixel, which would be lost in an average, where a thing has
/// to stand in its place.
QRect FindDifference(const QImage& one, const QImage& other, const Allowance& allowance = OTHER_RASTERISER);

/// The largest difference of a channel of any pixel in two pictures of one size, of 255; 255 for two sizes.
int LargestDifference(const QImage& one, const QImage& other);
