#include "support/ImageComparison.h"

#include <algorithm>
#include <array>
#include <cstdlib>

namespace {
constexpr int BLOCK = 8;
/// Blocks overlap, so that the result does not depend on a widget's position relative to the blocks.
constexpr int STEP = BLOCK / 2;
/// Half of the difference between a divider and its background.
constexpr int LINE_TONES = 7;
/// The length of a visible line. It is longer than each stroke of the largest letters.
constexpr int LINE_LENGTH = 48;

std::array<int, 4> Average(const QImage& image, const QRect& block)
{
    std::array<int, 4> sum{};
    for (int y = block.top(); y <= block.bottom(); ++y) {
        const auto* line = reinterpret_cast<const QRgb*>(image.constScanLine(y));
        for (int x = block.left(); x <= block.right(); ++x) {
            sum[0] += qRed(line[x]);
            sum[1] += qGreen(line[x]);
            sum[2] += qBlue(line[x]);
            sum[3] += qAlpha(line[x]);
        }
    }
    for (int& channel : sum) {
        channel /= block.width() * block.height();
    }
    return sum;
}

bool LooksLike(const std::array<int, 4>& mine, const std::array<int, 4>& yours, int tones)
{
    for (size_t channel = 0; channel < mine.size(); ++channel) {
        if (std::abs(mine[channel] - yours[channel]) > tones) {
            return false;
        }
    }
    return true;
}

/// Returns whether the other image has an equal block within the allowed displacement.
bool IsNear(const QImage& one, const QRect& block, const QImage& other, const Allowance& allowance)
{
    const auto mine = Average(one, block);
    for (int away = 0; away <= allowance.places; ++away) {
        for (int down = -away; down <= away; ++down) {
            for (int right = -away; right <= away; ++right) {
                const QRect there = block.translated(right, down);
                if (other.rect().contains(there) && LooksLike(mine, Average(other, there), allowance.tones)) {
                    return true;
                }
            }
        }
    }
    return false;
}
/// Returns whether all pixels from `start` in the direction of `step` differ visibly, as if one of the images
/// lacks a line. Texts of two rasterisers never give such a run, because the space between letters is equal.
QRect FindLine(const QImage& one, const QImage& other, QPoint start, const QPoint& step)
{
    QRect run;
    for (QPoint at = start; one.rect().contains(at); at += step) {
        const QRect pixel(at, QSize(1, 1));
        if (LooksLike(Average(one, pixel), Average(other, pixel), LINE_TONES)) {
            run = QRect();
        } else {
            run = run.united(pixel);
            if (qMax(run.width(), run.height()) >= LINE_LENGTH) {
                return run;
            }
        }
    }
    return QRect();
}

QRect FindLines(const QImage& one, const QImage& other)
{
    QRect lines;
    for (int y = 0; y < one.height(); ++y) {
        lines = lines.united(FindLine(one, other, QPoint(0, y), QPoint(1, 0)));
    }
    for (int x = 0; x < one.width(); ++x) {
        lines = lines.united(FindLine(one, other, QPoint(x, 0), QPoint(0, 1)));
    }
    return lines;
}
} // namespace

QRect FindDifference(const QImage& one, const QImage& other, const Allowance& allowance)
{
    if (one.size() != other.size()) {
        return one.rect().united(other.rect());
    }
    const QImage left = one.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    const QImage right = other.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    QRect difference = allowance.places == 0 ? FindLines(left, right) : QRect();
    for (int y = 0; y < left.height(); y += STEP) {
        for (int x = 0; x < left.width(); x += STEP) {
            const QRect block = QRect(x, y, BLOCK, BLOCK).intersected(left.rect());
            // Compares in both directions, because either image can lack a part.
            if (!IsNear(left, block, right, allowance) || !IsNear(right, block, left, allowance)) {
                difference = difference.united(block);
            }
        }
    }
    return difference;
}

int LargestDifference(const QImage& one, const QImage& other)
{
    if (one.size() != other.size()) {
        return 255;
    }
    const QImage left = one.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    const QImage right = other.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    int largest = 0;
    for (int y = 0; y < left.height(); ++y) {
        for (int x = 0; x < left.width(); ++x) {
            const auto mine = Average(left, QRect(x, y, 1, 1));
            const auto yours = Average(right, QRect(x, y, 1, 1));
            for (size_t channel = 0; channel < mine.size(); ++channel) {
                largest = std::max(largest, std::abs(mine[channel] - yours[channel]));
            }
        }
    }
    return largest;
}
