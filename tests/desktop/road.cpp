// Starts the assistant as its daemon would and, unless a person does, walks its road: agreement, main window,
// a cast started and stopped, the device's name, help, settings, about, quit. Each stage leaves a picture.
//
//   road --pictures DIR               on a virtual display, by itself
//   road --pictures DIR --root ROOT   the same with the program that is installed in another system's root
//   road --display DISPLAY            on a display with a person before it
//
// Exit status: 0 if the assistant ended with 0, the engine was stopped and the daemon was told.

#include <QCoreApplication>
#include <QDir>
#include <QStringList>
#include <cstdio>

#include "DesktopWorld.h"

namespace {
constexpr int PERSON_MS = -1;

constexpr QRgb BLUE = qRgb(0x2B, 0x6F, 0xF2);
constexpr QRgb ICON_GROUND = qRgb(0xE7, 0xEF, 0xFC);
constexpr QRgb DOCUMENT_GROUND = qRgb(0xF9, 0xF9, 0xF9);

// On the card.
constexpr QPoint AGREE_TICK(98, 399);
constexpr QPoint BEGIN_EDGE(410, 456);
constexpr QPoint BEGIN_BUTTON(448, 456);
constexpr QPoint MENU_BUTTON(756, 22);
constexpr QPoint CLOSE_BUTTON(868, 22);
// On the page.
constexpr QPoint CAST_BUTTON(616, 36);
constexpr QPoint BACK_BUTTON(76, 36);
constexpr QPoint CLEAR_BUTTON(631, 202);
constexpr QRect HELP_ICON(196, 188, 49, 48);
constexpr QRect PROBLEMS_ICON(488, 188, 50, 49);
constexpr QRect HELP_TEXT(80, 100, 500, 300);
constexpr QRect ABOUT_LINK(334, 294, 60, 20);
// On a small card.
constexpr QPoint RIGHT_BUTTON(199, 132);

constexpr int INITIAL_NAME_LENGTH = 6;

class Road
{
public:
    explicit Road(const QString& pictures, const QString& root = {})
        : directory(pictures), world(VirtualDesktop(root))
    {}

    int Walk();

private:
    static DesktopWorld::Options VirtualDesktop(const QString& root)
    {
        DesktopWorld::Options options;
        options.root = root;
        options.compositor = true;
        options.agreed = false;
        return options;
    }

    /// Waits for what a stage must show, keeps its picture and says so.
    bool Stage(const QString& name, const std::function<bool()>& reached);
    bool WalkAgreement();
    bool WalkCast();
    bool WalkName();
    bool WalkHelp();
    bool WalkSettings();
    bool WalkAbout();
    bool WalkQuit();

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

bool Road::WalkAgreement()
{
    if (!Stage(QStringLiteral("agreement"), [this] { return world.BigWindow().id != 0; })) {
        return false;
    }
    world.ClickCard(AGREE_TICK);
    if (!Stage(QStringLiteral("agreement-ticked"),
               [this] { return world.Desktop().PixelAt(world.OnCard(BEGIN_EDGE)) == BLUE; })) {
        return false;
    }
    world.ClickCard(BEGIN_BUTTON);
    return Stage(QStringLiteral("main-window"), [this] {
        return world.HasLog(QStringLiteral("Mainwindow start.")) && world.BigWindow().id != 0 &&
               world.ShowsIdle();
    });
}

bool Road::WalkCast()
{
    world.ClickPage(CAST_BUTTON);
    if (!Stage(QStringLiteral("casting"), [this] { return world.ShowsCasting(); })) {
        return false;
    }
    world.ClickPage(CAST_BUTTON);
    return Stage(QStringLiteral("cast-stopped"), [this] {
        return world.ShowsIdle() && DesktopWorld::TimeOf(world.EngineEvents(), QStringLiteral("ended")) > 0;
    });
}

bool Road::WalkName()
{
    world.Desktop().Click(world.PencilPos());
    for (int i = 0; i < INITIAL_NAME_LENGTH; ++i) {
        world.Desktop().Key(QStringLiteral("BackSpace"));
    }
    world.Desktop().Type(QStringLiteral("Study-PC_1"));
    if (!Stage(QStringLiteral("name-typed"), [] { return true; })) {
        return false;
    }
    world.Desktop().Key(QStringLiteral("Return"));
    return Stage(QStringLiteral("name-stored"),
                 [this] { return world.SettingsText().contains(QStringLiteral("devicename=Study-PC_1\n")); });
}

bool Road::WalkHelp()
{
    world.ClickCard(MENU_BUTTON);
    if (!Stage(QStringLiteral("menu"), [this] { return world.MenuWindow().id != 0; })) {
        return false;
    }
    world.Desktop().Key(QStringLiteral("Escape"));
    bool ok = DesktopWorld::WaitFor([this] { return world.MenuWindow().id == 0; }) && world.ChooseFromMenu(0);
    ok = ok && Stage(QStringLiteral("help"), [this] { return world.PageHasColour(HELP_ICON, ICON_GROUND); });
    world.ClickPage(HELP_ICON.center());
    ok = ok && Stage(QStringLiteral("help-guide"),
                     [this] { return world.PageHasColour(HELP_TEXT, DOCUMENT_GROUND); });
    world.ClickPage(BACK_BUTTON);
    ok = ok && DesktopWorld::WaitFor([this] { return world.PageHasColour(HELP_ICON, ICON_GROUND); });
    world.ClickPage(PROBLEMS_ICON.center());
    return ok && Stage(QStringLiteral("help-problems"),
                       [this] { return world.PageHasColour(HELP_TEXT, DOCUMENT_GROUND); });
}

bool Road::WalkSettings()
{
    world.AppendSettings(QStringLiteral("[VelodeskServer]\ntrustNum=2\n"));
    QDir(world.Home()).mkpath(QStringLiteral("Velodesk/Tandra/others"));
    bool ok = world.ChooseFromMenu(1);
    ok = ok && Stage(QStringLiteral("settings"),
                     [this] { return world.HasLog(QStringLiteral("Velodesk show set page.")); });
    world.ClickPage(CLEAR_BUTTON);
    ok = ok && Stage(QStringLiteral("clear-question"), [this] { return world.SmallWindow().id != 0; });
    world.ClickSmallCard(RIGHT_BUTTON);
    return ok && Stage(QStringLiteral("cleared"),
                       [this] { return world.SettingsText().contains(QStringLiteral("trustNum=0\n")); });
}

bool Road::WalkAbout()
{
    bool ok = world.ChooseFromMenu(2);
    ok = ok && Stage(QStringLiteral("about"), [this] { return world.PageHasColour(ABOUT_LINK, BLUE); });
    world.ClickPage(ABOUT_LINK.center());
    return ok && Stage(QStringLiteral("about-agreement"),
                       [this] { return world.PageHasColour(HELP_TEXT, DOCUMENT_GROUND); });
}

bool Road::WalkQuit()
{
    world.ClickCard(CLOSE_BUTTON);
    if (!Stage(QStringLiteral("quit-question"), [this] { return world.SmallWindow().id != 0; })) {
        return false;
    }
    world.ClickSmallCard(RIGHT_BUTTON);
    return world.WaitForDaemonEnd();
}

int Road::Walk()
{
    directory.mkpath(QStringLiteral("."));
    const QString missing = world.Start();
    if (!missing.isEmpty()) {
        std::fprintf(stderr, "%s\n", qUtf8Printable(missing));
        return 1;
    }
    const bool ok = world.StartAssistant() && WalkAgreement() && WalkCast() && WalkName() && WalkHelp() &&
                    WalkSettings() && WalkAbout() && WalkQuit();
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
    if (arguments.size() == 5 && arguments.at(1) == QLatin1String("--pictures") &&
        arguments.at(3) == QLatin1String("--root")) {
        return Road(arguments.at(2), arguments.at(4)).Walk();
    }
    if (arguments.size() == 3 && arguments.at(1) == QLatin1String("--display")) {
        return RunForPerson(arguments.at(2));
    }
    std::fprintf(stderr, "usage: road --pictures DIR [--root ROOT] | --display DISPLAY\n");
    return 2;
}
