#include "Compare.h"

#include <QJsonArray>
#include <algorithm>
#include <cmath>
#include <random>

#include "Samples.h"

namespace {
constexpr int DRAWS = 300;
constexpr double SPREADS = 3.0;
/// What is less than this share of the figure is not worth a word, however little the samples scatter.
constexpr double LEAST_SHARE = 0.01;
constexpr double HIGH_SHARE = 0.99;

Samples Read(const QJsonObject& row, const char* key)
{
    Samples samples;
    const QJsonArray values = row.value(QLatin1String(key)).toArray();
    for (const QJsonValue& value : values) {
        samples.Add(value.toDouble());
    }
    return samples;
}

double FigureOf(const QString& kind, const Samples& ours, const Samples& baseline)
{
    if (kind == QLatin1String("p99")) {
        return ours.Quantile(HIGH_SHARE);
    }
    if (kind == QLatin1String("difference")) {
        return ours.Median() - baseline.Median();
    }
    return baseline.Median() == 0.0 ? 0.0 : ours.Median() / baseline.Median();
}

class Figure
{
public:
    explicit Figure(const QJsonObject& row)
        : kind(row.value(QStringLiteral("kind")).toString()),
          ours(Read(row, "ours")),
          baseline(Read(row, "baseline_samples"))
    {}

    double Value() const { return FigureOf(kind, ours, baseline); }

    /// The standard deviation of the figure among runs that could as well have come.
    double Deviation() const
    {
        std::mt19937 lots(static_cast<unsigned>(ours.Count()));
        double sum = 0.0;
        double squares = 0.0;
        for (int draw = 0; draw < DRAWS; ++draw) {
            const Samples drawnOurs = Drawn(ours, lots);
            const double value = FigureOf(kind, drawnOurs, Drawn(baseline, lots));
            sum += value;
            squares += value * value;
        }
        const double mean = sum / DRAWS;
        return std::sqrt(std::max(0.0, squares / DRAWS - mean * mean));
    }

private:
    static Samples Drawn(const Samples& samples, std::mt19937& lots)
    {
        Samples drawn;
        const auto count = static_cast<unsigned>(samples.Count());
        for (unsigned i = 0; i < count; ++i) {
            drawn.Add(samples.At(static_cast<int>(lots() % count)));
        }
        return drawn;
    }

    QString kind;
    Samples ours;
    Samples baseline;
};

/// Rows of one name differ in their baseline, or in what is wanted of them.
QString NameOf(const QJsonObject& row)
{
    const QString name = QStringLiteral("%1, %2").arg(row.value(QStringLiteral("name")).toString(),
                                                      row.value(QStringLiteral("baseline")).toString());
    return row.value(QStringLiteral("kind")).toString() == QLatin1String("p99")
               ? name + QStringLiteral(", 99 in 100")
               : name;
}
} // namespace

bool Change::IsBeyondNoise() const
{
    const double step = std::abs(after - before);
    return step > noise && step > LEAST_SHARE * std::abs(before);
}

QList<Change> Compare(const QJsonObject& before, const QJsonObject& after)
{
    QList<Change> changes;
    const QJsonArray oldRows = before.value(QStringLiteral("rows")).toArray();
    const QJsonArray newRows = after.value(QStringLiteral("rows")).toArray();
    for (const QJsonValue& newRow : newRows) {
        for (const QJsonValue& oldRow : oldRows) {
            if (NameOf(newRow.toObject()) != NameOf(oldRow.toObject())) {
                continue;
            }
            const Figure was(oldRow.toObject());
            const Figure is(newRow.toObject());
            changes.append({NameOf(newRow.toObject()), was.Value(), is.Value(),
                            SPREADS * std::hypot(was.Deviation(), is.Deviation())});
        }
    }
    return changes;
}
