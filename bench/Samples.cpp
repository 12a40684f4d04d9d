#include "Samples.h"

#include <algorithm>
#include <cmath>

double Samples::Quantile(double share) const
{
    if (values.isEmpty()) {
        return 0.0;
    }
    QVector<double> sorted = values;
    std::sort(sorted.begin(), sorted.end());
    const double place = share * (sorted.size() - 1);
    const int below = static_cast<int>(std::floor(place));
    const int above = std::min(below + 1, sorted.size() - 1);
    return sorted[below] + (sorted[above] - sorted[below]) * (place - below);
}

Samples Samples::Mapped(const std::function<double(double)>& change) const
{
    Samples changed;
    for (const double value : values) {
        changed.Add(change(value));
    }
    return changed;
}
