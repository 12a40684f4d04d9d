#include <QColor>
#include <QDir>
#include <QFile>
#include <QProcessEnvironment>
#include <QThread>
#include <csignal>

#include "Child.h"
#include "DesktopWorld.h"
#include "Items.h"
#include "PixelWatch.h"

namespace {
constexpr int START_ROUNDS = 40;
/// Fewer than START_ROUNDS: on loaded processors a start takes three times as long.
constexpr int BUSY_ROUNDS = 20;
constexpr int MEMORY_ROUNDS = 15;
constexpr double NS_PER_MS = 1e6;
/// How long a program works after its first frame until it is idle.
constexpr unsigned long SETTLE_MS = 400;
constexpr double KIB_PER_MIB = 1024.0;

/// A pixel of the start button while the card is in the middle of the screen. If it is blue, the main window
/// is painted, and it is neither empty nor the agreement's window.
constexpr QPoint START_BUTTON(932, 228);
constexpr QRgb BLUE = qRgb(0x2B, 0x6F, 0xF2);
/// A bare window covers this pixel at each position that a window manager can choose.
constexpr QPoint MIDDLE(640, 400);
/// The colour of an X screen without windows.
constexpr QRgb EMPTY = qRgb(0, 0, 0);

/// A program that is started repeatedly on the same desktop.
struct MeasuredProgram
{
    std::string program;
    std::vector<std::string> arguments;
    std::vector<std::string> environment;
    QPoint position;
    std::function<bool(QRgb)> painted;
};

class Desktop
{
public:
    Desktop() : world(DesktopWorld::Options())
    {
        const QString missing = world.Start();
        if (!missing.isEmpty()) {
            qFatal("%s", qUtf8Printable(missing));
        }
        watch = std::make_unique<PixelWatch>(world.Environment().value(QStringLiteral("DISPLAY")));
        // The window that DesktopWorld used to wait for the window manager may still be mapped.
        WaitForEmpty();
        for (const QString& assignment : world.Environment().toStringList()) {
            environment.push_back(assignment.toStdString());
        }
    }

    MeasuredProgram Ours() const
    {
        return {BuiltProgram("Velodesk").toStdString(),
                {"Velodesk", "1"},
                environment,
                START_BUTTON,
                [](QRgb pixel) {
                    return pixel == BLUE;
                }};
    }
    MeasuredProgram Bare() const
    {
        return {
            BuiltProgram("bare-window").toStdString(), {"bare-window"}, environment, MIDDLE, [](QRgb pixel) {
                return pixel != EMPTY;
            }};
    }

    /// Ends the program and waits until its windows have disappeared.
    void End(Child& child) const
    {
        child.Send(SIGKILL);
        child.Wait();
        WaitForEmpty();
    }

    DesktopWorld world;
    std::unique_ptr<PixelWatch> watch;

private:
    void WaitForEmpty() const
    {
        if (watch->WaitFor(MIDDLE, [](QRgb pixel) { return pixel == EMPTY; }) < 0) {
            qFatal("the screen does not become empty");
        }
    }

    std::vector<std::string> environment;
};

void WaitForFrame(const Desktop& desktop, const MeasuredProgram& measured)
{
    if (desktop.watch->WaitFor(measured.position, measured.painted) < 0) {
        qFatal("%s shows no window", measured.program.c_str());
    }
}

void StartOnce(const Desktop& desktop, const MeasuredProgram& measured, Samples& wall, Samples& cpu)
{
    const qint64 start = PixelWatch::Now();
    Child child(measured.program, measured.arguments, measured.environment);
    WaitForFrame(desktop, measured);
    wall.Add(static_cast<double>(PixelWatch::Now() - start) / NS_PER_MS);
    desktop.End(child);
    cpu.Add(child.CpuMs());
}

/// Returns the proportional set size in MiB.
double PssOf(pid_t pid)
{
    QFile file(QStringLiteral("/proc/%1/smaps_rollup").arg(pid));
    if (!file.open(QIODevice::ReadOnly)) {
        return 0.0;
    }
    const QStringList lines = QString::fromLatin1(file.readAll()).split(QLatin1Char('\n'));
    for (const QString& line : lines) {
        if (line.startsWith(QLatin1String("Pss:"))) {
            return line.simplified().section(QLatin1Char(' '), 1, 1).toDouble() / KIB_PER_MIB;
        }
    }
    return 0.0;
}

void MeasureMemoryOnce(const Desktop& desktop, const MeasuredProgram& measured, Samples& pss)
{
    Child child(measured.program, measured.arguments, measured.environment);
    WaitForFrame(desktop, measured);
    QThread::msleep(SETTLE_MS);
    pss.Add(PssOf(child.Pid()));
    desktop.End(child);
}

struct StartLimits
{
    double cpu;
    double wall;
};

void CompareStarts(Report& report, int rounds, const QString& name, const StartLimits& limits)
{
    const Desktop desktop;
    Row cpu{name + QStringLiteral(": CPU"),
            QStringLiteral("ms"),
            QStringLiteral("bare Qt window"),
            {},
            {},
            Row::RATIO_AT_MOST,
            limits.cpu};
    Row wall = cpu;
    wall.name = name + QStringLiteral(": wall");
    wall.limit = limits.wall;
    Samples discarded;
    StartOnce(desktop, desktop.Ours(), discarded, discarded);
    StartOnce(desktop, desktop.Bare(), discarded, discarded);
    for (int round = 0; round < rounds; ++round) {
        StartOnce(desktop, desktop.Ours(), wall.ours, cpu.ours);
        StartOnce(desktop, desktop.Bare(), wall.baseline, cpu.baseline);
    }
    report.Add(cpu);
    report.Add(wall);
}
} // namespace

void MeasureStart(Report& report, const Effort& effort)
{
    CompareStarts(report, effort.Rounds(START_ROUNDS), QStringLiteral("start"), {1.0, 1.05});
}

void MeasureBusyStart(Report& report, const Effort& effort)
{
    const std::vector<std::string> spin{"sh", "-c", "while :; do :; done"};
    const Child first("sh", spin);
    const Child second("sh", spin);
    CompareStarts(report, effort.Rounds(BUSY_ROUNDS), QStringLiteral("start, two busy"), {1.05, 1.1});
}

void MeasureMemory(Report& report, const Effort& effort)
{
    const Desktop desktop;
    Row pss{QStringLiteral("memory (PSS)"),
            QStringLiteral("MiB"),
            QStringLiteral("bare Qt window"),
            {},
            {},
            Row::RATIO_AT_MOST,
            0.75};
    for (int round = 0; round < effort.Rounds(MEMORY_ROUNDS); ++round) {
        MeasureMemoryOnce(desktop, desktop.Ours(), pss.ours);
        MeasureMemoryOnce(desktop, desktop.Bare(), pss.baseline);
    }
    report.Add(pss);
}
