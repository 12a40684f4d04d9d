#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMap>
#include <QProcess>
#include <QTemporaryDir>

#include "Items.h"

namespace {
constexpr int ROUNDS = 12;
constexpr double NS_PER_MS = 1e6;
constexpr double NS_PER_US = 1e3;

using SamplesByName = QMap<QString, Samples>;

/// Runs each benchmark that matches the pattern once.
QJsonArray RunOnce(const QString& pattern, const Effort& effort)
{
    const QTemporaryDir home;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("HOME"), home.path());
    QProcess process;
    process.setProcessEnvironment(environment);
    process.setStandardErrorFile(QProcess::nullDevice());
    process.start(BuiltProgram("bench-inside"),
                  {QStringLiteral("--benchmark_filter=") + pattern, QStringLiteral("--benchmark_format=json"),
                   QStringLiteral("--benchmark_min_time=") +
                       (effort.quick ? QStringLiteral("0.02") : QStringLiteral("0.1"))});
    process.waitForFinished(-1);
    if (process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0) {
        qFatal("bench-inside fails for %s", qUtf8Printable(pattern));
    }
    return QJsonDocument::fromJson(process.readAllStandardOutput())
        .object()
        .value(QStringLiteral("benchmarks"))
        .toArray();
}

/// Returns the nanoseconds per iteration by benchmark. Removes the suffixes that the library appends to
/// names.
SamplesByName Run(const QString& pattern, const Effort& effort)
{
    SamplesByName samples;
    for (int round = 0; round < effort.Rounds(ROUNDS); ++round) {
        const QJsonArray results = RunOnce(pattern, effort);
        for (const QJsonValue& value : results) {
            const QJsonObject result = value.toObject();
            QString name = result.value(QStringLiteral("name")).toString();
            for (const char* added : {"/real_time", "/manual_time", "/iterations:3", "/iterations:5"}) {
                name.remove(QLatin1String(added));
            }
            samples[name].Add(result.value(QStringLiteral("real_time")).toDouble());
        }
    }
    return samples;
}

Samples Scaled(const Samples& samples, double factor)
{
    return samples.Mapped([factor](double value) { return value * factor; });
}

Samples PerSecond(const Samples& samples)
{
    return samples.Mapped([](double nanoseconds) { return 1e9 / nanoseconds; });
}
} // namespace

void MeasureLog(Report& report, const Effort& effort)
{
    const SamplesByName samples = Run(QStringLiteral("^log/"), effort);
    for (const int threads : {1, 8}) {
        const QString suffix = QStringLiteral("/threads:%1").arg(threads);
        // The library divides the time of an iteration by the number of threads.
        const Samples ours = PerSecond(samples[QStringLiteral("log/ours") + suffix]);
        const QString name = QStringLiteral("log lines, threads: %1").arg(threads);
        report.Add({name, QStringLiteral("1/s"), QStringLiteral("same calls in C"), ours,
                    PerSecond(samples[QStringLiteral("log/plain") + suffix]), Row::RATIO_AT_LEAST, 0.85});
    }
}

void MeasureRotation(Report& report, const Effort& effort)
{
    const SamplesByName samples = Run(QStringLiteral("^rotation/"), effort);
    report.Add({QStringLiteral("rotation of 32 MiB"), QStringLiteral("ms"), QStringLiteral("cp"),
                Scaled(samples[QStringLiteral("rotation/ours")], 1 / NS_PER_MS),
                Scaled(samples[QStringLiteral("rotation/cp")], 1 / NS_PER_MS), Row::RATIO_AT_MOST, 2.0});
}

void MeasureSettings(Report& report, const Effort& effort)
{
    const SamplesByName samples = Run(QStringLiteral("^settings/"), effort);
    for (const auto& [access, limit] :
         {std::pair(QStringLiteral("get"), 0.5), std::pair(QStringLiteral("set"), 0.3)}) {
        const QString prefix = QStringLiteral("settings/") + access;
        report.Add({QStringLiteral("settings: ") + access, QStringLiteral("µs"), QStringLiteral("QSettings"),
                    Scaled(samples[prefix + QStringLiteral("/ours")], 1 / NS_PER_US),
                    Scaled(samples[prefix + QStringLiteral("/qsettings")], 1 / NS_PER_US), Row::RATIO_AT_MOST,
                    limit});
    }
}

void MeasureErase(Report& report, const Effort& effort)
{
    const SamplesByName samples = Run(QStringLiteral("^erase/"), effort);
    report.Add({QStringLiteral("erase of 1 MiB"), QStringLiteral("ms"), QStringLiteral("shred -n 2 -z -u"),
                Scaled(samples[QStringLiteral("erase/ours")], 1 / NS_PER_MS),
                Scaled(samples[QStringLiteral("erase/shred")], 1 / NS_PER_MS), Row::RATIO_AT_MOST, 1.5});
}
