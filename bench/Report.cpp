#include "Report.h"

#include <QDateTime>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSysInfo>
#include <QThread>
#include <cstdio>

namespace {
QString Number(double value)
{
    const double size = qAbs(value);
    const int decimals = size >= 100.0 ? 0 : size >= 10.0 ? 1 : size >= 1.0 ? 2 : 3;
    return QString::number(value, 'f', decimals);
}

QString AimText(const Row& row)
{
    const QString limit = Number(row.limit);
    switch (row.aim) {
    case Row::RATIO_AT_MOST:
        return QStringLiteral("at most ") + limit;
    case Row::RATIO_AT_LEAST:
        return QStringLiteral("at least ") + limit;
    case Row::MORE_AT_MOST:
        return QStringLiteral("at most %1 %2 more").arg(limit, row.unit);
    case Row::P99_BELOW:
        return QStringLiteral("99%: below %1 %2").arg(limit, row.unit);
    case Row::NONE:
        break;
    }
    return QString();
}

QString Kind(Row::Aim aim)
{
    return aim == Row::P99_BELOW      ? QStringLiteral("p99")
           : aim == Row::MORE_AT_MOST ? QStringLiteral("difference")
                                      : QStringLiteral("ratio");
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

QString ProcessorName()
{
    QFile file(QStringLiteral("/proc/cpuinfo"));
    if (file.open(QIODevice::ReadOnly)) {
        const QStringList lines = QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'));
        for (const QString& line : lines) {
            if (line.startsWith(QLatin1String("model name"))) {
                return line.section(QStringLiteral(": "), 1);
            }
        }
    }
    return QSysInfo::currentCpuArchitecture();
}

QString LoadAverage()
{
    QFile file(QStringLiteral("/proc/loadavg"));
    return file.open(QIODevice::ReadOnly)
               ? QString::fromLatin1(file.readAll()).section(QLatin1Char(' '), 0, 2)
               : QString();
}

QJsonObject RowToJson(const Row& row)
{
    return {{QStringLiteral("name"), row.name},
            {QStringLiteral("unit"), row.unit},
            {QStringLiteral("baseline"), row.baselineName},
            {QStringLiteral("ours_median"), row.ours.Median()},
            {QStringLiteral("ours_iqr"), row.ours.Spread()},
            {QStringLiteral("baseline_median"), row.baseline.Median()},
            {QStringLiteral("baseline_iqr"), row.baseline.Spread()},
            {QStringLiteral("kind"), Kind(row.aim)},
            {QStringLiteral("figure"), row.Figure()},
            {QStringLiteral("aim"), AimText(row)},
            {QStringLiteral("met"), row.IsMet()},
            {QStringLiteral("ours"), row.ours.ToJson()},
            {QStringLiteral("baseline_samples"), row.baseline.ToJson()}};
}
} // namespace

double Row::Figure() const
{
    switch (aim) {
    case MORE_AT_MOST:
        return ours.Median() - baseline.Median();
    case P99_BELOW:
        return ours.Quantile(0.99);
    case RATIO_AT_MOST:
    case RATIO_AT_LEAST:
    case NONE:
        break;
    }
    return baseline.Median() == 0.0 ? 0.0 : ours.Median() / baseline.Median();
}

bool Row::IsMet() const
{
    return aim == NONE || (aim == RATIO_AT_LEAST ? Figure() >= limit : Figure() <= limit);
}

void Report::Add(const Row& row)
{
    rows.append(row);
    Print(row);
}

void Report::Print(const Row& row)
{
    if (rows.size() == 1) {
        PrintLine({QStringLiteral("item"), QStringLiteral("unit"), QStringLiteral("ours ± IQR"),
                   QStringLiteral("baseline"), QStringLiteral("its ± IQR"), QStringLiteral("figure"),
                   QStringLiteral("aim"), QString()});
    }
    const QString verdict = row.aim == Row::NONE ? QString()
                            : row.IsMet()        ? QStringLiteral("met")
                                                 : QStringLiteral("MISSED");
    PrintLine({row.name, row.unit, WithSpread(row.ours), row.baselineName, WithSpread(row.baseline),
               Number(row.Figure()), AimText(row), verdict});
}

bool Report::Save(const QString& path) const
{
    QJsonArray array;
    for (const Row& row : rows) {
        array.append(RowToJson(row));
    }
    const QJsonObject machine{{QStringLiteral("processor"), ProcessorName()},
                              {QStringLiteral("cores"), QThread::idealThreadCount()},
                              {QStringLiteral("kernel"), QSysInfo::kernelVersion()},
                              {QStringLiteral("system"), QSysInfo::prettyProductName()},
                              {QStringLiteral("qt"), QString::fromLatin1(qVersion())},
                              {QStringLiteral("load"), LoadAverage()}};
    const QJsonObject all{{QStringLiteral("when"), QDateTime::currentDateTimeUtc().toString(Qt::ISODate)},
                          {QStringLiteral("machine"), machine},
                          {QStringLiteral("rows"), array}};
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(QJsonDocument(all).toJson()) != -1;
}

int Report::Missed() const
{
    int missed = 0;
    for (const Row& row : rows) {
        missed += row.IsMet() ? 0 : 1;
    }
    return missed;
}
