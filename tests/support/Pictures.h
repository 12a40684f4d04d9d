#pragma once

#include <QImage>
#include <QRect>

/// Where two pictures of one size differ, as a rectangle in pixels; an empty one if they look the same.
/// Averages over small blocks are compared, so that another font rasteriser passes, and a widget that was
/// moved or has another colour does not. What stands elsewhere by no more pixels than the slack passes too.
QRect FindDifference(const QImage& one, const QImage& other, int slack = 0);

/// The largest difference of a channel of any pixel in two pictures of one size, of 255; 255 for two sizes.
int LargestDifference(const QImage& one, const QImage& other);
