#pragma once

#include <QVector>
#include <functional>

/// The measured values, one per round.
class Samples
{
public:
    void Add(double value) { values.append(value); }
    int Count() const { return values.size(); }

    double Median() const { return Quantile(0.5); }
    /// The interquartile range, as a measure of noise.
    double Spread() const { return Quantile(0.75) - Quantile(0.25); }
    /// Interpolates between adjacent values. Returns 0 if there are no samples.
    double Quantile(double share) const;

    /// Returns the results of `change` for each value, in the same order.
    Samples Mapped(const std::function<double(double)>& change) const;

private:
    QVector<double> values;
};
