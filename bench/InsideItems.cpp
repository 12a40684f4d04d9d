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

/// One run of all benchmarks that the pattern names, each once and one after the other.
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

/// What never waits for another process or a disk is told by its processor time: less of the machine's other
/// work gets into that.
enum class Clock
{
    WALL,
    PROCESSOR
};

/// Nanoseconds per iteration; the names as told by the library, without what it adds to them.
SamplesByName Run(const QString& pattern, const Effort& effort, Clock clock = Clock::WALL)
{
    const QString field = clock == Clock::WALL ? QStringLiteral("real_time") : QStringLiteral("cpu_time");
    SamplesByName samples;
    for (int round = 0; round < effort.Rounds(ROUNDS); ++round) {
        const QJsonArray results = RunOnce(pattern, effort);
        for (const QJsonValue& value : results) {
            const QJsonObject result = value.toObject();
            QString name = result.value(QStringLiteral("name")).toString();
            for (const char* added : {"/real_time", "/manual_time", "/iterations:3", "/iterations:5"}) {
                name.remove(QLatin1String(added));
            }
            samples[name].Add(result.value(field).toDouble());
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
        // The library gives the time of an iteration divided by the threads that share it.
        const Samples ours = PerSecond(samples[QStringLiteral("log/ours") + suffix]);
        const QString name = QStringLiteral("log lines, threads: %1").arg(threads);
        report.Add({name, QStringLiteral("1/s"), QStringLiteral("same calls in C"), ours,
                    PerSecond(samples[QStringLiteral("log/plain") + suffix]), Row::RATIO_AT_LEAST, 0.95});
        report.Add({name, QStringLiteral("1/s"), QStringLiteral("spdlog, no size look"), ours,
                    PerSecond(samples[QStringLiteral("log/spdlog") + suffix]), Row::NONE, 0.0});
    }
}

void MeasureRotation(Report& report, const Effort& effort)
{
    const SamplesByName samples = Run(QStringLiteral("^rotation/"), effort);
    report.Add({QStringLiteral("rotation of 32 MiB"), QStringLiteral("ms"), QStringLiteral("cp"),
                Scaled(samples[QStringLiteral("rotation/ours")], 1 / NS_PER_MS),
                Scaled(samples[QStringLiteral("rotation/cp")], 1 / NS_PER_MS), Row::RATIO_AT_MOST, 1.5});
}

void MeasureSettings(Report& report, const Effort& effort)
{
    const SamplesByName samples = Run(QStringLiteral("^settings/"), effort);
    for (const auto& [access, limit] :
         {std::pair(QStringLiteral("get"), 0.4), std::pair(QStringLiteral("set"), 0.25)}) {
        const QString prefix = QStringLiteral("settings/") + access;
        report.Add({QStringLiteral("settings: ") + access, QStringLiteral("µs"), QStringLiteral("QSettings"),
                    Scaled(samples[prefix + QStringLiteral("/ours")], 1 / NS_PER_US),
                    Scaled(samples[prefix + QStringLiteral("/qsettings")], 1 / NS_PER_US), Row::RATIO_AT_MOST,
                    limit});
    }
}

void MeasureGrowth(Report& report, const Effort& effort)
{
    constexpr int SMALL = 1 << 10;
    constexpr int STEP = 4;
    constexpr int LARGE = 1 << 20;
    const SamplesByName samples = Run(QStringLiteral("^growth/"), effort, Clock::PROCESSOR);
    for (const QString& access : {QStringLiteral("get"), QStringLiteral("set")}) {
        const auto of = [&samples, &access](int size, double factor) {
            return Scaled(samples[QStringLiteral("growth/%1/%2").arg(access).arg(size)], factor / NS_PER_US);
        };
        for (int size = SMALL * STEP; size <= LARGE; size *= STEP) {
            const double times = size / SMALL;
            report.Add({QStringLiteral("growth: %1 in %2 KiB").arg(access).arg(size / SMALL),
                        QStringLiteral("µs"), QStringLiteral("1 KiB times %1").arg(times), of(size, 1.0),
                        of(SMALL, times), Row::RATIO_AT_MOST, 1.0});
        }
    }
}

void MeasureErase(Report& report, const Effort& effort)
{
    const SamplesByName samples = Run(QStringLiteral("^erase/"), effort);
    report.Add({QStringLiteral("erase of 1 MiB"), QStringLiteral("ms"), QStringLiteral("shred -n 2 -z -u"),
                Scaled(samples[QStringLiteral("erase/ours")], 1 / NS_PER_MS),
                Scaled(samples[QStringLiteral("erase/shred")], 1 / NS_PER_MS), Row::RATIO_AT_MOST, 1.5});
}

void MeasureMessages(Report& report, const Effort& effort)
{
    // What two runs of the same thing differ by on a machine with other work.
    constexpr double FLAT = 1.1;
    const SamplesByName samples = Run(QStringLiteral("^messages/"), effort, Clock::PROCESSOR);
    for (const int clients : {10, 100}) {
        report.Add({QStringLiteral("message parse, clients: %1").arg(clients), QStringLiteral("µs"),
                    QStringLiteral("1 client"),
                    Scaled(samples[QStringLiteral("messages/parse/%1").arg(clients)], 1 / NS_PER_US),
                    Scaled(samples[QStringLiteral("messages/parse/1")], 1 / NS_PER_US), Row::RATIO_AT_MOST,
                    FLAT});
        report.Add({QStringLiteral("write to signal, clients: %1").arg(clients), QStringLiteral("µs"),
                    QStringLiteral("1 client"),
                    Scaled(samples[QStringLiteral("messages/arrive/%1").arg(clients)], 1 / NS_PER_US),
                    Scaled(samples[QStringLiteral("messages/arrive/1")], 1 / NS_PER_US), Row::NONE, 0.0});
    }
}
