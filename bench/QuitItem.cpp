#include <QFile>
#include <QThread>
#include <csignal>

#include "Child.h"
#include "DesktopWorld.h"
#include "Items.h"
#include "PixelWatch.h"

namespace {
constexpr int ROUNDS = 15;
constexpr double NS_PER_MS = 1e6;
constexpr QPoint START_BUTTON(616, 36);
constexpr QPoint CLOSE_BUTTON(868, 22);
constexpr QPoint QUIT_BUTTON(199, 132);
/// How long a finger presses a button. The engine is ready after this time too.
constexpr unsigned long PRESS_MS = 60;

[[noreturn]] void Fail(const DesktopWorld& world, const char* what)
{
    qFatal("%s:\n%s", what, qUtf8Printable(world.Log().join(QLatin1Char('\n'))));
}

void Require(const DesktopWorld& world, bool condition, const char* what)
{
    if (!condition) {
        Fail(world, what);
    }
}

/// Returns the time from the release of the confirming button to the end of the process, in milliseconds.
double QuitOnce()
{
    DesktopWorld world{DesktopWorld::Options()};
    const QString missing = world.Start();
    Require(world, missing.isEmpty(), qPrintable(missing));
    const QString engine = world.InstalledDir() + QStringLiteral("/tandra/bin/Tandra");
    QFile::remove(engine);
    Require(world, QFile::copy(BuiltProgram("prompt-engine"), engine), "the engine cannot be copied");
    Require(world, world.StartAssistant(), "the assistant does not start");
    Require(world, DesktopWorld::WaitFor([&world] { return world.ShowsIdle(); }), "no main window");
    world.ClickPage(START_BUTTON);
    Require(world, DesktopWorld::WaitFor([&world] { return world.HasLog(QStringLiteral("count is 1")); }),
            "the engine does not start");
    world.ClickCard(CLOSE_BUTTON);
    Require(world, DesktopWorld::WaitFor([&world] { return world.SmallWindow().id != 0; }), "no question");
    const QPoint button = world.OnSmallCard(QUIT_BUTTON);
    world.Desktop().MoveTo(button);
    QThread::msleep(PRESS_MS);
    world.Desktop().Press();
    QThread::msleep(PRESS_MS);
    const qint64 start = PixelWatch::Now();
    world.Desktop().Release();
    Require(world, world.WaitForDaemonEnd(), "the assistant does not end");
    const qint64 end = DesktopWorld::TimeOf(world.DaemonEvents(), QStringLiteral("assistant ended exit 0"));
    Require(world, end > 0, "the assistant did not end in order");
    return static_cast<double>(end - start) / NS_PER_MS;
}

/// Returns the time that the same engine needs to end after our SIGTERM, in milliseconds.
double EndOnce()
{
    Child engine(BuiltProgram("prompt-engine").toStdString(), {"prompt-engine", "1"});
    QThread::msleep(PRESS_MS);
    const qint64 start = PixelWatch::Now();
    engine.Send(SIGTERM);
    engine.Wait();
    return static_cast<double>(PixelWatch::Now() - start) / NS_PER_MS;
}
} // namespace

void MeasureQuit(Report& report, const Effort& effort)
{
    Row row{QStringLiteral("quit, confirmed to ended"),
            QStringLiteral("ms"),
            QStringLiteral("engine's own end"),
            {},
            {},
            Row::MORE_AT_MOST,
            150.0};
    for (int round = 0; round < effort.Rounds(ROUNDS); ++round) {
        row.ours.Add(QuitOnce());
        row.baseline.Add(EndOnce());
    }
    report.Add(row);
}
