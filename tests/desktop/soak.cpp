// Performs random user actions on the assistant, with an engine of random behaviour, and compares the screen
// and the settings with a small model after each step.
//
//   soak MINUTES [SEED]
//
// Prints one line per minute with memory, open descriptors, and the number of actions and casts, and at the
// end the actions per second. Exit status: 0 if the program always matched the model and exited with 0, and
// if memory and descriptors grew by less than the limits below.

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QRandomGenerator>
#include <array>
#include <csignal>
#include <cstdio>
#include <sys/mount.h>

#include "DesktopWorld.h"
#include "Places.h"

using namespace Places;

namespace {
constexpr int NAME_LENGTH = 15;
constexpr int MS_PER_MINUTE = 60 * 1000;
/// The permitted growth of memory after every page was visited once.
constexpr int MEMORY_GROWTH_KIB = 24 * 1024;
constexpr int DESCRIPTOR_GROWTH = 8;
constexpr int PRINTED_BYTES = 4 * 1024 * 1024;

class Soak
{
public:
    explicit Soak(quint32 seed) : random(seed) {}

    int Run(int minutes);

private:
    using Action = bool (Soak::*)();

    /// The expected state: casting or idle, the last reported status, and the name.
    struct Model
    {
        bool casting = false;
        QString reported;
        QString name = QStringLiteral("Tandra");
    };

    bool StartCast();
    bool FailToStart();
    bool StopCast();
    bool CrashEngine();
    bool EngineHasEnded(int stoppedBefore);
    bool Rename();
    bool VisitHelp();
    bool VisitSettings();
    bool VisitAbout();
    bool CancelQuit();
    bool DragWindow();
    bool MinimiseAndRaise();
    bool Terminate();
    bool FillDisk();
    bool Quit();

    bool MatchesModel() const;
    bool Soon(const std::function<bool()>& condition) const { return DesktopWorld::WaitFor(condition); }
    int Pick(int below) { return static_cast<int>(random.bounded(static_cast<quint32>(below))); }
    bool WaitForEngineEnd() const
    {
        const int finished = finishedBefore;
        return Soon(
            [this, finished] { return world.CountLog(QStringLiteral("Process finished, id ")) > finished; });
    }
    void Signal() const
    {
        QFile file(world.Home() + QStringLiteral("/signal-%1").arg(casts));
        file.open(QIODevice::WriteOnly);
    }
    long ProcNumber(const char* file, const QString& key) const;
    long Memory() const { return ProcNumber("smaps_rollup", QStringLiteral("Pss:")); }
    long Descriptors() const
    {
        return QDir(QStringLiteral("/proc/%1/fd").arg(world.AssistantPid()))
            .entryList(QDir::NoDotAndDotDot | QDir::AllEntries | QDir::System)
            .size();
    }

    void PrintStatus(int minute, long memory, long descriptors, int actions) const
    {
        std::printf("minute %3d: memory (PSS) %6ld KiB, descriptors %3ld, actions %6d, casts %5d\n", minute,
                    memory, descriptors, actions, casts);
        std::fflush(stdout);
    }

    QRandomGenerator random;
    DesktopWorld world{DesktopWorld::Options()};
    Model model;
    int casts = 0;
    int finishedBefore = 0;
};

bool Soak::StartCast()
{
    if (model.casting) {
        return true;
    }
    ++casts;
    // After a crash, "run" alone is no change, because the last status is still "run".
    static const std::array<const char*, 3> REPORTS{"report init\nwait 30\nreport run\n",
                                                    "send {\"status\":\nreport init\nwait 30\nreport run\n",
                                                    "report run\n"};
    const int which = Pick(model.reported == QLatin1String("run") ? 2 : 3);
    world.WriteEngineScript(
        QStringLiteral("print %1\n").arg(Pick(2) * PRINTED_BYTES) +
        QLatin1String(REPORTS.at(static_cast<size_t>(which))) +
        QStringLiteral("await signal-%1\n%2\n")
            .arg(casts)
            .arg(Pick(2) == 0 ? QStringLiteral("crash") : QStringLiteral("report stop\nwait 100\nexit 0")));
    finishedBefore = world.CountLog(QStringLiteral("Process finished, id "));
    world.ClickPage(CAST_BUTTON);
    model.casting = true;
    model.reported = QStringLiteral("run");
    return true;
}

bool Soak::FailToStart()
{
    if (model.casting) {
        return true;
    }
    world.WriteEngineScript(Pick(2) == 0 ? QStringLiteral("crash\n") : QStringLiteral("exit 3\n"));
    finishedBefore = world.CountLog(QStringLiteral("Process finished, id "));
    world.ClickPage(CAST_BUTTON);
    return WaitForEngineEnd();
}

bool Soak::StopCast()
{
    if (!model.casting) {
        return true;
    }
    const int stopped = world.CountLog(QStringLiteral("event stopped"));
    world.ClickPage(CAST_BUTTON);
    return EngineHasEnded(stopped);
}

bool Soak::CrashEngine()
{
    if (!model.casting) {
        return true;
    }
    const int stopped = world.CountLog(QStringLiteral("event stopped"));
    Signal();
    return EngineHasEnded(stopped);
}

bool Soak::EngineHasEnded(int stoppedBefore)
{
    model.casting = false;
    const bool ended = WaitForEngineEnd();
    // A crash reports nothing. The last report of an engine can be lost if it arrives in one read with a
    // repeated report.
    if (world.CountLog(QStringLiteral("event stopped")) > stoppedBefore) {
        model.reported = QStringLiteral("stop");
    }
    return ended;
}

bool Soak::Rename()
{
    QString name;
    const int length = 1 + Pick(NAME_LENGTH);
    for (int i = 0; i < length; ++i) {
        name += QLatin1Char(static_cast<char>('a' + Pick(26)));
    }
    if (!world.BeginRename()) {
        return false;
    }
    for (int i = 0; i < NAME_LENGTH; ++i) {
        world.Desktop().Key(QStringLiteral("BackSpace"));
    }
    world.Desktop().Type(name);
    world.Desktop().Key(QStringLiteral("Return"));
    model.name = name;
    return true;
}

bool Soak::VisitHelp()
{
    const bool opened = world.ChooseFromMenu(0);
    world.ClickPage(Pick(2) == 0 ? HELP_ICON.center() : PROBLEMS_ICON.center());
    world.ClickPage(BACK_BUTTON);
    world.ClickPage(BACK_BUTTON);
    return opened;
}

bool Soak::VisitSettings()
{
    const bool opened = world.ChooseFromMenu(1);
    world.ClickPage(BACK_BUTTON);
    return opened;
}

bool Soak::VisitAbout()
{
    const bool opened = world.ChooseFromMenu(2);
    if (Pick(2) == 0) {
        world.ClickPage(ABOUT_LINK.center());
        world.ClickPage(BACK_BUTTON);
    }
    world.ClickPage(BACK_BUTTON);
    return opened;
}

bool Soak::CancelQuit()
{
    world.ClickCard(CLOSE_BUTTON);
    if (!Soon([this] { return world.SmallWindow().id != 0; })) {
        return false;
    }
    world.ClickSmallCard(LEFT_BUTTON);
    return Soon([this] { return world.SmallWindow().id == 0; });
}

bool Soak::DragWindow()
{
    // Keeps the window away from the edges, because its size would change and identifies the window.
    const QRect window = world.BigWindow().rect;
    const QSize room = world.Desktop().Size() - window.size();
    const QPoint target(Pick(room.width()), Pick(room.height()));
    const QPoint from = world.OnCard(TITLE_BAR);
    world.Desktop().Drag(from, from + target - window.topLeft());
    // The next click would miss a window that still moves.
    return Soon([this, target] { return world.BigWindow().rect.topLeft() == target; });
}

bool Soak::MinimiseAndRaise()
{
    const unsigned long id = world.BigWindow().id;
    world.ClickCard(MINIMISE_BUTTON);
    return Soon([this, id] { return !world.Desktop().IsShown(id); }) && world.StartSecond() == 0 &&
           Soon([this, id] { return world.Desktop().IsShown(id); });
}

bool Soak::Terminate()
{
    kill(static_cast<pid_t>(world.AssistantPid()), SIGTERM);
    const bool ended = world.WaitForDaemonEnd() && world.AssistantStatus() == 0 && world.DaemonStatus() == 1;
    model.casting = false;
    model.reported.clear();
    return ended && !DesktopWorld::EngineRuns() && world.StartAssistant();
}

bool Soak::FillDisk()
{
    QFile filler(QDir::tempPath() + QStringLiteral("/filler"));
    if (!filler.open(QIODevice::WriteOnly | QIODevice::Unbuffered)) {
        return false;
    }
    while (filler.write(QByteArray(4096, 'x')) > 0) {
    }
    const bool visited = VisitAbout();
    filler.remove();
    // The log continues after space is free again.
    const QString line = QStringLiteral("Velodesk show about page.");
    const int before = world.CountLog(line);
    return visited && VisitAbout() && Soon([this, &line, before] { return world.CountLog(line) > before; });
}

bool Soak::Quit()
{
    world.ClickCard(CLOSE_BUTTON);
    if (!Soon([this] { return world.SmallWindow().id != 0; })) {
        return false;
    }
    world.ClickSmallCard(RIGHT_BUTTON);
    return world.WaitForDaemonEnd() && world.AssistantStatus() == 0 && world.DaemonStatus() == 0;
}

bool Soak::MatchesModel() const
{
    return Soon([this] {
        return (model.casting ? world.ShowsCasting() : world.ShowsIdle()) &&
               world.SettingsText().contains(QStringLiteral("devicename=%1\n").arg(model.name)) &&
               world.SmallWindow().id == 0 && world.MenuWindow().id == 0;
    });
}

long Soak::ProcNumber(const char* file, const QString& key) const
{
    QFile proc(QStringLiteral("/proc/%1/%2").arg(world.AssistantPid()).arg(QLatin1String(file)));
    if (!proc.open(QIODevice::ReadOnly)) {
        return -1;
    }
    for (const QString& line : QString::fromLatin1(proc.readAll()).split(QLatin1Char('\n'))) {
        if (line.startsWith(key)) {
            return line.mid(key.size()).trimmed().section(QLatin1Char(' '), 0, 0).toLong();
        }
    }
    return -1;
}

int Soak::Run(int minutes)
{
    static const std::array<std::pair<const char*, Action>, 13> ACTIONS{{
        {"start a cast", &Soak::StartCast},
        {"start an engine that fails", &Soak::FailToStart},
        {"stop the cast", &Soak::StopCast},
        {"end the engine", &Soak::CrashEngine},
        {"rename", &Soak::Rename},
        {"visit the help", &Soak::VisitHelp},
        {"visit the settings", &Soak::VisitSettings},
        {"visit the about page", &Soak::VisitAbout},
        {"cancel quitting", &Soak::CancelQuit},
        {"drag", &Soak::DragWindow},
        {"minimise and raise", &Soak::MinimiseAndRaise},
        {"terminate and start again", &Soak::Terminate},
        {"fill the disk", &Soak::FillDisk},
    }};
    const QString missing = world.Start();
    if (!missing.isEmpty() || !world.StartAssistant() || !MatchesModel()) {
        std::fprintf(stderr, "the program does not start: %s\n", qUtf8Printable(missing));
        return 1;
    }
    // Performs each action once before the measurement, because the first use allocates memory permanently.
    for (const auto& action : ACTIONS) {
        if (!(this->*action.second)() || !MatchesModel()) {
            std::fprintf(stderr, "the program and the model differ after the first action: %s\n",
                         action.first);
            return 1;
        }
    }
    const long memory = Memory();
    const long descriptors = Descriptors();
    QElapsedTimer clock;
    clock.start();
    int actions = 0;
    int printed = 0;
    PrintStatus(printed, memory, descriptors, actions);
    for (; clock.elapsed() < qint64(minutes) * MS_PER_MINUTE; ++actions) {
        if (clock.elapsed() >= qint64(printed + 1) * MS_PER_MINUTE) {
            ++printed;
            PrintStatus(printed, Memory(), Descriptors(), actions);
        }
        const auto& action = ACTIONS.at(static_cast<size_t>(Pick(static_cast<int>(ACTIONS.size()))));
        if (!(this->*action.second)() || !MatchesModel()) {
            std::fprintf(stderr, "the program and the model differ: action %d, %s; expected: %s, %s\n",
                         actions, action.first, model.casting ? "casting" : "idle",
                         qUtf8Printable(model.name));
            for (const QString& line : world.Log().mid(world.Log().size() - 20)) {
                std::fprintf(stderr, "%s\n", qUtf8Printable(line));
            }
            const QString screenshot =
                QCoreApplication::applicationDirPath() + QStringLiteral("/../soak-failure.png");
            if (world.SaveScreen(screenshot)) {
                std::fprintf(stderr, "screenshot: %s\n", qUtf8Printable(QDir::cleanPath(screenshot)));
            }
            return 1;
        }
    }
    const double seconds = static_cast<double>(clock.elapsed()) / 1000;
    const long memoryAfter = Memory();
    const long descriptorsAfter = Descriptors();
    std::printf("%d actions in %.0f s, %.1f a second, %d casts\n", actions, seconds, actions / seconds,
                casts);
    PrintStatus(printed, memoryAfter, descriptorsAfter, actions);
    const bool ended = Quit();
    std::printf("end: %s\n", ended ? "exit code 0" : "FAILED");
    return ended && memoryAfter - memory < MEMORY_GROWTH_KIB &&
                   descriptorsAfter - descriptors < DESCRIPTOR_GROWTH
               ? 0
               : 1;
}
} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    // Mounts a small file system for all files of the test environment, so that FillDisk() can fill it.
    if (mount("tmpfs", QFile::encodeName(QDir::tempPath()).constData(), "tmpfs", MS_NOSUID | MS_NODEV,
              "size=64m") != 0) {
        std::perror("soak: a small file system cannot be mounted (run as root)");
        return 1;
    }
    const QStringList arguments = QCoreApplication::arguments();
    bool ok = false;
    const int minutes = arguments.value(1).toInt(&ok);
    if (!ok || minutes < 1 || arguments.size() > 3) {
        std::fprintf(stderr, "usage: soak MINUTES [SEED]\n");
        return 2;
    }
    return Soak(arguments.value(2, QStringLiteral("1")).toUInt()).Run(minutes);
}
