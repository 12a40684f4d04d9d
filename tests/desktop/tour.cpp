// Starts the assistant as its daemon does and performs a tour: agreement, main window, start and end of a
// cast, device name, help, settings, about, quit. Saves a screenshot of each stage. With --display, a person
// uses the program instead.
//
//   tour --screenshots DIR                 automatically, on a virtual display
//   tour --screenshots DIR --root ROOT     the same, with the program installed in another root file system
//   tour --screenshots DIR --root ROOT --engine PROGRAM
//                                          only the installation checklist and a cast by that engine
//   tour --display DISPLAY DIR             starts the assistant on a display, for a person
//
// DIR/messages.log receives the output of all other processes. The tour prints it if a stage fails.
//
// Exit status: 0 if the assistant ended with 0, the engine was stopped and the daemon received the exit
// request.

#include <QCoreApplication>
#include <QDir>
#include <QStringList>
#include <csignal>
#include <cstdio>

#include "DesktopWorld.h"
#include "Places.h"

using namespace Places;

namespace {
volatile std::sig_atomic_t interrupted = 0;

void Interrupt(int)
{
    interrupted = 1;
}

constexpr int POLL_MS = 100;
constexpr int INITIAL_NAME_LENGTH = 6;
/// The script of an engine that shows the image of a phone.
constexpr char VISIBLE_ENGINE[] = "report init\nwait 500\nreport run\nshow\n";

/// Removes the old file with the output of other processes, and returns its path.
QString MessagesFile(const QString& screenshots)
{
    const QDir directory(screenshots);
    directory.mkpath(QStringLiteral("."));
    QFile::remove(directory.filePath(QStringLiteral("messages.log")));
    return directory.absoluteFilePath(QStringLiteral("messages.log"));
}

class Tour
{
public:
    explicit Tour(const QString& screenshots, const QString& root = {}, const QString& engine = {})
        : directory(screenshots),
          isForeign(!engine.isEmpty()),
          world(VirtualDesktop(root, engine, MessagesFile(screenshots)))
    {}

    int Run();

private:
    static DesktopWorld::Options VirtualDesktop(const QString& root, const QString& engine,
                                                const QString& messages)
    {
        DesktopWorld::Options options;
        options.root = root;
        options.engine = engine;
        options.compositor = true;
        options.agreed = false;
        options.messages = messages;
        return options;
    }

    /// Waits until `reached` is true, then saves a screenshot and prints the stage's result.
    bool Stage(const QString& name, const std::function<bool()>& reached);
    bool AcceptAgreement();
    bool Cast();
    bool CheckInstallation();
    bool CastByForeignEngine();
    bool ChangeName();
    bool VisitHelp();
    bool VisitSettings();
    bool VisitAbout();
    bool Quit();

    QDir directory;
    /// Whether the engine is not the stand-in. The tour then consists of the checklist and one cast.
    bool isForeign;
    DesktopWorld world;
    int number = 0;
};

bool Tour::Stage(const QString& name, const std::function<bool()>& reached)
{
    ++number;
    const bool ok = DesktopWorld::WaitFor(reached);
    // Waits until the compositor has drawn the result.
    DesktopWorld::WaitFor([] { return false; }, 150);
    const QString path =
        directory.filePath(QStringLiteral("%1-%2.png").arg(number, 2, 10, QLatin1Char('0')).arg(name));
    world.SaveScreen(path);
    std::printf("%-4s %-24s %s\n", ok ? "ok" : "FAIL", qUtf8Printable(name), qUtf8Printable(path));
    std::fflush(stdout);
    return ok;
}

/// Prints the results of the run. Returns whether all processes ended as expected.
bool Ended(const DesktopWorld& world)
{
    const auto engine = world.EngineEvents();
    const qint64 stopped = DesktopWorld::TimeOf(engine, QStringLiteral("ended"));
    const qint64 requested = DesktopWorld::TimeOf(world.DaemonEvents(), QStringLiteral("exit requested"));
    const bool engineOk = engine.isEmpty() || stopped > 0;
    std::printf("assistant: exit code %d; engine: %s; daemon: %s\n", world.AssistantStatus(),
                engine.isEmpty() ? "writes no events" : (engineOk ? "stopped" : "NOT STOPPED"),
                requested > 0 ? "exit requested" : "NOT REQUESTED");
    return world.AssistantStatus() == 0 && engineOk && requested > 0;
}

bool Tour::AcceptAgreement()
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

bool Tour::Cast()
{
    world.WriteEngineScript(QLatin1String(VISIBLE_ENGINE));
    world.ClickPage(CAST_BUTTON);
    if (!Stage(QStringLiteral("casting"), [this] { return world.ShowsCasting(); }) ||
        !Stage(QStringLiteral("engine-window"), [this] { return world.EngineWindow().id != 0; })) {
        return false;
    }
    world.ClickPage(CAST_BUTTON);
    return Stage(QStringLiteral("cast-stopped"), [this] {
        return world.ShowsIdle() && DesktopWorld::TimeOf(world.EngineEvents(), QStringLiteral("ended")) > 0;
    });
}

/// Verifies that the installation checklist finds no fault.
bool Tour::CheckInstallation()
{
    QString output;
    const int status = world.RunBeside(
        {QLatin1String(DesktopWorld::INSTALLED_DIR) + QStringLiteral("/bin/check-installation")}, output);
    std::printf("%schecklist: exit code %d\n", qUtf8Printable(output), status);
    return status == 0;
}

bool Tour::CastByForeignEngine()
{
    world.ClickPage(CAST_BUTTON);
    if (!Stage(QStringLiteral("casting"), [this] { return world.ShowsCasting() && world.EngineRuns(); })) {
        return false;
    }
    world.ClickPage(CAST_BUTTON);
    return Stage(QStringLiteral("cast-stopped"), [this] { return world.ShowsIdle() && !world.EngineRuns(); });
}

bool Tour::ChangeName()
{
    if (!world.BeginRename()) {
        return false;
    }
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

bool Tour::VisitHelp()
{
    world.ClickCard(MENU_BUTTON);
    if (!Stage(QStringLiteral("menu"), [this] { return world.MenuWindow().id != 0; })) {
        return false;
    }
    world.Desktop().Key(QStringLiteral("Escape"));
    bool ok = DesktopWorld::WaitFor([this] { return world.MenuWindow().id == 0; }) && world.ChooseFromMenu(0);
    ok = ok &&
         Stage(QStringLiteral("help"), [this] { return world.PageHasColour(HELP_ICON, ICON_BACKGROUND); });
    world.ClickPage(HELP_ICON.center());
    ok = ok && Stage(QStringLiteral("help-guide"),
                     [this] { return world.PageHasColour(DOCUMENT, DOCUMENT_BACKGROUND); });
    world.ClickPage(BACK_BUTTON);
    ok = ok && DesktopWorld::WaitFor([this] { return world.PageHasColour(HELP_ICON, ICON_BACKGROUND); });
    world.ClickPage(PROBLEMS_ICON.center());
    return ok && Stage(QStringLiteral("help-problems"),
                       [this] { return world.PageHasColour(DOCUMENT, DOCUMENT_BACKGROUND); });
}

bool Tour::VisitSettings()
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

bool Tour::VisitAbout()
{
    bool ok = world.ChooseFromMenu(2);
    ok = ok && Stage(QStringLiteral("about"), [this] { return world.PageHasColour(ABOUT_LINK, BLUE); });
    world.ClickPage(ABOUT_LINK.center());
    return ok && Stage(QStringLiteral("about-agreement"),
                       [this] { return world.PageHasColour(DOCUMENT, DOCUMENT_BACKGROUND); });
}

bool Tour::Quit()
{
    world.ClickCard(CLOSE_BUTTON);
    if (!Stage(QStringLiteral("quit-question"), [this] { return world.SmallWindow().id != 0; })) {
        return false;
    }
    world.ClickSmallCard(RIGHT_BUTTON);
    return world.WaitForDaemonEnd();
}

int Tour::Run()
{
    const QString missing = world.Start();
    if (!missing.isEmpty()) {
        std::fprintf(stderr, "%s\n", qUtf8Printable(missing));
        return 1;
    }
    bool passed = world.StartAssistant() && AcceptAgreement();
    if (isForeign) {
        passed = passed && CheckInstallation() && CastByForeignEngine() && Quit();
    } else {
        passed = passed && Cast() && ChangeName() && VisitHelp() && VisitSettings() && VisitAbout() && Quit();
    }
    if (!passed) {
        std::fprintf(stderr, "%s\n", qUtf8Printable(world.Describe()));
    }
    const bool ended = Ended(world);
    std::printf("output of program, window manager and buses: %s\n",
                qUtf8Printable(directory.filePath(QStringLiteral("messages.log"))));
    return passed && ended ? 0 : 1;
}

int RunForPerson(const QString& display, const QString& messages)
{
    DesktopWorld::Options options;
    options.messages = messages;
    options.display = display;
    options.agreed = false;
    DesktopWorld world(options);
    const QString missing = world.Start();
    if (!missing.isEmpty()) {
        std::fprintf(stderr, "%s\n", qUtf8Printable(missing));
        return 1;
    }
    world.WriteEngineScript(QLatin1String(VISIBLE_ENGINE));
    if (!world.StartAssistant()) {
        std::fprintf(stderr, "%s\n", qUtf8Printable(world.Describe()));
        return 1;
    }
    // Ctrl-C ends the run too, and the destructor of the world ends all processes.
    std::signal(SIGINT, Interrupt);
    std::signal(SIGTERM, Interrupt);
    while (interrupted == 0 && !world.WaitForDaemonEnd(POLL_MS)) {
    }
    std::printf("output of program and buses: %s\n", qUtf8Printable(messages));
    return Ended(world) ? 0 : 1;
}
} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() == 3 && arguments.at(1) == QLatin1String("--screenshots")) {
        return Tour(arguments.at(2)).Run();
    }
    const bool isInRoot = arguments.size() >= 5 && arguments.at(1) == QLatin1String("--screenshots") &&
                          arguments.at(3) == QLatin1String("--root");
    if (isInRoot && arguments.size() == 5) {
        return Tour(arguments.at(2), arguments.at(4)).Run();
    }
    if (isInRoot && arguments.size() == 7 && arguments.at(5) == QLatin1String("--engine")) {
        return Tour(arguments.at(2), arguments.at(4), arguments.at(6)).Run();
    }
    if (arguments.size() == 4 && arguments.at(1) == QLatin1String("--display")) {
        return RunForPerson(arguments.at(2), MessagesFile(arguments.at(3)));
    }
    std::fprintf(stderr,
                 "usage: tour --screenshots DIR [--root ROOT [--engine PROGRAM]] | --display DISPLAY DIR\n");
    return 2;
}
