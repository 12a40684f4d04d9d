#include "Report.h"

#include <QStringList>
#include <cstdio>

namespace {
QString Number(double value)
{
    const double size = qAbs(value);
    const int decimals = size >= 100.0 ? 0 : size >= 10.0 ? 1 : size >= 1.0 ? 2 : 3;
    return QString::number(value, 'f', decimals);
}

QString LimitText(const Row& row)
{
    const QString limit = Number(row.limit);
    switch (row.kind) {
    case Row::RATIO_AT_MOST:
        return QStringLiteral("at most ") + limit;
    case Row::RATIO_AT_LEAST:
        return QStringLiteral("at least ") + limit;
    case Row::MORE_AT_MOST:
        return QStringLiteral("at most %1 %2 more").arg(limit, row.unit);
    case Row::P99_BELOW:
        return QStringLiteral("99%: below %1 %2").arg(limit, row.unit);
    }
    return QString();
}

QString WithSpread(const Samples& samples)
{
    return samples.Count() == 0
               ? QStringLiteral("-")
               : QStringLiteral("%1 ± %2").arg(Number(samples.Median()), Number(samples.Spread()));
}

void PrintLine(const QStringList& cells)
{
    static const QList<int> WIDTHS{34, 8, 17, 24, 17, 9, 22};
    QString line;
    for (int i = 0; i < WIDTHS.size(); ++i) {
        line += cells.value(i).leftJustified(WIDTHS[i]) + QLatin1Char(' ');
    }
    line += cells.last();
    std::printf("%s\n", qUtf8Printable(line));
    std::fflush(stdout);
}
} // namespace

double Row::Figure() const
{
    switch (kind) {
    case MORE_AT_MOST:
        return ours.Median() - baseline.Median();
    case P99_BELOW:
        return ours.Quantile(0.99);
    case RATIO_AT_MOST:
    case RATIO_AT_LEAST:
        break;
    }
    return ours.Median() / baseline.Median();
}

bool Row::IsMet() const
{
    return kind == RATIO_AT_LEAST ? Figure() >= limit : Figure() <= limit;
}

void Report::Add(const Row& row)
{
    if (!hasHeading) {
        PrintLine({QStringLiteral("item"), QStringLiteral("unit"), QStringLiteral("ours ± IQR"),
                   QStringLiteral("baseline"), QStringLiteral("its ± IQR"), QStringLiteral("figure"),
                   QStringLiteral("limit"), QString()});
        hasHeading = true;
    }
    missed += row.IsMet() ? 0 : 1;
    PrintLine({row.name, row.unit, WithSpread(row.ours), row.baselineName, WithSpread(row.baseline),
               Number(row.Figure()), LimitText(row),
               row.IsMet() ? QStringLiteral("met") : QStringLiteral("MISSED")});
}
