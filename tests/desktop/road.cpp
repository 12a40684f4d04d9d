// Starts the assistant as its daemon would and, unless a person does, walks its road: agreement, main window,
// a cast started and stopped, quit. Each stage leaves a picture.
//
//   road --pictures DIR      on a virtual display, by itself
//   road --display DISPLAY   on a display with a person before it
//
// Exit status: 0 if the assistant ended with 0, the engine was stopped and the daemon was told.

#include <QCoreApplication>
#include <QDir>
#include <QStringList>
#include <cstdio>

#include "DesktopWorld.h"

namespace {
constexpr int PERSON_MS = -1;

class Road
{
public:
    explicit Road(const QString& pictures) : directory(pictures), world(VirtualDesktop()) {}

    int Walk();

private:
    static DesktopWorld::Options VirtualDesktop()
    {
        DesktopWorld::Options options;
        options.compositor = true;
        options.agreed = false;
        return options;
    }

    /// Waits for what a stage must show, keeps its picture and says so.
    bool Stage(const QString& name, const std::function<bool()>& reached);
    void ClickCard(const QPoint& pos) { world.Desktop().Click(world.OnCard(pos)); }

    QDir directory;
    DesktopWorld world;
    int number = 0;
};

bool Road::Stage(const QString& name, const std::function<bool()>& reached)
{
    ++number;
    const bool ok = DesktopWorld::WaitFor(reached);
    // One more look once the compositor has drawn what was reached.
    DesktopWorld::WaitFor([] { return false; }, 150);
    const QString path =
        directory.filePath(QStringLiteral("%1-%2.png").arg(number, 2, 10, QLatin1Char('0')).arg(name));
    world.SaveScreen(path);
    std::printf("%-4s %-24s %s\n", ok ? "ok" : "FAIL", qUtf8Printable(name), qUtf8Printable(path));
    std::fflush(stdout);
    return ok;
}

bool Ended(const DesktopWorld& world)
{
    const auto engine = world.EngineEvents();
    const qint64 stopped = DesktopWorld::TimeOf(engine, QStringLiteral("ended"));
    const qint64 told = DesktopWorld::TimeOf(world.DaemonEvents(), QStringLiteral("told to exit"));
    const bool engineOk = engine.isEmpty() || stopped > 0;
    std::printf("assistant: exit code %d; engine: %s; daemon: %s\n", world.AssistantStatus(),
                engine.isEmpty() ? "never started" : (engineOk ? "stopped" : "NOT STOPPED"),
                told > 0 ? "told to exit" : "NOT TOLD");
    return world.AssistantStatus() == 0 && engineOk && told > 0;
}

int Road::Walk()
{
    directory.mkpath(QStringLiteral("."));
    const QString missing = world.Start();
    if (!missing.isEmpty()) {
        std::fprintf(stderr, "%s\n", qUtf8Printable(missing));
        return 1;
    }
    bool ok = world.StartAssistant();
    ok = ok && Stage(QStringLiteral("agreement"), [this] { return world.BigWindow().id != 0; });
    if (ok) {
        ClickCard(QPoint(98, 399));
    }
    ok = ok && Stage(QStringLiteral("agreement-ticked"), [this] {
             return world.Desktop().PixelAt(world.OnCard(QPoint(410, 456))) == qRgb(0x2B, 0x6F, 0xF2);
         });
    if (ok) {
        ClickCard(QPoint(448, 456));
    }
    ok = ok && Stage(QStringLiteral("main-window"), [this] {
             return world.HasLog(QStringLiteral("Mainwindow start.")) && world.BigWindow().id != 0 &&
                    world.ShowsIdle();
         });
    if (ok) {
        world.ClickPage(QPoint(616, 36));
    }
    ok = ok && Stage(QStringLiteral("casting"), [this] { return world.ShowsCasting(); });
    if (ok) {
        world.ClickPage(QPoint(616, 36));
    }
    ok = ok && Stage(QStringLiteral("cast-stopped"), [this] { return world.ShowsIdle(); });
    if (ok) {
        ClickCard(QPoint(168 + 700, 22));
    }
    ok = ok && Stage(QStringLiteral("quit-question"), [this] { return world.SmallWindow().id != 0; });
    if (ok) {
        world.Desktop().Click(world.OnSmallCard(QPoint(199, 132)));
    }
    ok = ok && world.WaitForDaemonEnd();
    return Ended(world) && ok ? 0 : 1;
}

int RunForPerson(const QString& display)
{
    DesktopWorld::Options options;
    options.display = display;
    options.agreed = false;
    DesktopWorld world(options);
    const QString missing = world.Start();
    if (!missing.isEmpty()) {
        std::fprintf(stderr, "%s\n", qUtf8Printable(missing));
        return 1;
    }
    if (!world.StartAssistant()) {
        return 1;
    }
    world.WaitForDaemonEnd(PERSON_MS);
    return Ended(world) ? 0 : 1;
}
} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() == 3 && arguments.at(1) == QLatin1String("--pictures")) {
        return Road(arguments.at(2)).Walk();
    }
    if (arguments.size() == 3 && arguments.at(1) == QLatin1String("--display")) {
        return RunForPerson(arguments.at(2));
    }
    std::fprintf(stderr, "usage: road --pictures DIR | --display DISPLAY\n");
    return 2;
}
