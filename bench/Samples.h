#pragma once

#include <QVector>
#include <functional>

/// What was measured of one thing, a value a round.
class Samples
{
public:
    void Add(double value) { values.append(value); }
    int Count() const { return values.size(); }

    double Median() const { return Quantile(0.5); }
    /// The middle half's width: what noise there was.
    double Spread() const { return Quantile(0.75) - Quantile(0.25); }
    /// Interpolated between neighbours; 0 without samples.
    double Quantile(double share) const;

    /// Each value by the function, in the same order.
    Samples Mapped(const std::function<double(double)>& change) const;

private:
    QVector<double> values;
};
