#include "DesktopWorld.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QThread>
#include <csignal>
#include <unistd.h>

#include "Places.h"

namespace {
constexpr int POLL_INTERVAL_MS = 5;
constexpr int STARTED_MS = 120000;
constexpr int ENDED_MS = 20000;
constexpr QSize BIG_CARD(896, 504);
constexpr QSize SMALL_CARD(300, 168);
constexpr QPoint SMALL_CARD_BLANK(20, 100);
constexpr QRgb SMALL_CARD_BACKGROUND = qRgb(0xF7, 0xF7, 0xF7);
constexpr QSize MENU_CARD(96, 108);
constexpr int MENU_ENTRY_HEIGHT = 36;
/// The row with the device name, relative to the page.
constexpr QRect NAME_ROW(152, 361, 416, 22);
constexpr int PENCIL_SIZE = 16;
constexpr int PENCIL_HIDDEN_MS = 10000;
constexpr QPoint PAGE_POS(168, 44);
constexpr int SHADOW_MARGIN = 20;
constexpr int PLAIN_MARGIN = 1;

void End(QProcess& process)
{
    if (process.state() == QProcess::NotRunning) {
        return;
    }
    process.terminate();
    // A paused process handles the request only after it continues.
    kill(static_cast<pid_t>(process.processId()), SIGCONT);
    if (!process.waitForFinished(ENDED_MS)) {
        process.kill();
        process.waitForFinished(ENDED_MS);
    }
}

/// Returns the reason why the last wait failed.
QString& FailureReason()
{
    static QString reason;
    return reason;
}

bool WaitForEnd(QProcess& process, int milliseconds = DesktopWorld::WAIT_LIMIT_MS)
{
    return DesktopWorld::WaitFor(
        [&process] { return process.state() == QProcess::NotRunning || process.waitForFinished(0); },
        milliseconds);
}

QString Content(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

/// Returns the state of a process and the kernel function in which it waits.
QString ProcessState(qint64 pid)
{
    const QString folder = QStringLiteral("/proc/%1/").arg(pid);
    const QString state = Content(folder + QStringLiteral("status")).section(QStringLiteral("State:"), 1);
    return QStringLiteral("%1 %2 %3")
        .arg(pid)
        .arg(state.section(QLatin1Char('\n'), 0, 0).trimmed(), Content(folder + QStringLiteral("wchan")));
}

QList<DesktopWorld::Event> ReadEvents(const QString& path)
{
    QList<DesktopWorld::Event> events;
    const QStringList lines = Content(path).split(QLatin1Char('\n'), QString::SkipEmptyParts);
    for (const QString& line : lines) {
        events.append({line.section(QLatin1Char(' '), 0, 0).toLongLong(), line.section(QLatin1Char(' '), 1)});
    }
    return events;
}
} // namespace

const QProcess* DesktopWorld::startedDaemon = nullptr;

DesktopWorld::DesktopWorld(Options givenOptions)
    : options(std::move(givenOptions)),
      scratch(QDir::tempPath() + QStringLiteral("/velodesk-XXXXXX")),
      environment(QProcessEnvironment::systemEnvironment())
{
    if (options.messages.isEmpty()) {
        options.messages = scratch.filePath(QStringLiteral("messages"));
    }
    for (const QString& name : {QStringLiteral("home"), QStringLiteral("run"), QStringLiteral("tmp")}) {
        QDir(scratch.path()).mkdir(name);
        QFile::setPermissions(scratch.filePath(name), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }
    QDir(Home()).mkdir(QStringLiteral("Desktop"));
    SetVariable(QStringLiteral("HOME"), Home());
    SetVariable(QStringLiteral("XDG_RUNTIME_DIR"), scratch.filePath(QStringLiteral("run")));
    SetVariable(QStringLiteral("TMPDIR"), scratch.filePath(QStringLiteral("tmp")));
    SetVariable(QStringLiteral("LC_ALL"), QStringLiteral("C.UTF-8"));
    for (const QString& name : {QStringLiteral("SESSION_MANAGER"), QStringLiteral("QT_QPA_PLATFORM"),
                                QStringLiteral("WAYLAND_DISPLAY"), QStringLiteral("XDG_SESSION_TYPE")}) {
        environment.remove(name);
    }
    if (options.scale != 1) {
        SetVariable(QStringLiteral("QT_SCALE_FACTOR"), QString::number(options.scale));
    }
    if (options.screenReader) {
        // The bus can start only this service of the machine.
        QDir(scratch.path()).mkpath(QStringLiteral("run/services"));
        QFile::link(QStringLiteral("/usr/share/dbus-1/services/org.a11y.Bus.service"),
                    scratch.filePath(QStringLiteral("run/services/org.a11y.Bus.service")));
        SetVariable(QStringLiteral("GSETTINGS_BACKEND"), QStringLiteral("memory"));
        SetVariable(QStringLiteral("QT_LINUX_ACCESSIBILITY_ALWAYS_ON"), QStringLiteral("1"));
    }
    if (options.agreed) {
        QDir(Home()).mkdir(QStringLiteral("Velodesk"));
        QFile settings(Home() + QStringLiteral("/Velodesk/velodesk.conf"));
        if (settings.open(QIODevice::WriteOnly)) {
            settings.write("[VelodeskServer]\nstatement=true\n");
        }
    }
}

DesktopWorld::~DesktopWorld()
{
    startedDaemon = nullptr;
    const qint64 pid = AssistantPid();
    if (pid != 0 && daemon.state() != QProcess::NotRunning) {
        kill(static_cast<pid_t>(pid), SIGKILL);
        daemon.waitForFinished(ENDED_MS);
    }
    EndEngines();
    desktop.reset();
    for (QProcess* process : {&daemon, &compositor, &windowManager, &server, &sessionBus, &systemBus}) {
        End(*process);
    }
}

QString DesktopWorld::Start()
{
    Stage();
    QString missing =
        StartBus(systemBus, QStringLiteral("system"), QStringLiteral("DBUS_SYSTEM_BUS_ADDRESS"));
    if (missing.isEmpty()) {
        missing = StartBus(sessionBus, QStringLiteral("session"), QStringLiteral("DBUS_SESSION_BUS_ADDRESS"));
    }
    return missing.isEmpty() ? StartDisplay() : missing;
}

bool DesktopWorld::StartAssistant(const QStringList& daemonOptions)
{
    QFile::remove(scratch.filePath(QStringLiteral("daemon.events")));
    const int ready = CountLog(QStringLiteral("Mainwindow start."));
    QStringList arguments = SandboxArguments();
    arguments << scratch.filePath(QStringLiteral("standin-daemon")) << QStringLiteral("--events")
              << scratch.filePath(QStringLiteral("daemon.events")) << daemonOptions << QStringLiteral("--")
              << QLatin1String(INSTALLED_DIR) + QStringLiteral("/bin/Velodesk");
    daemon.setProcessEnvironment(environment);
    KeepMessages(daemon, QProcess::StandardOutput);
    daemon.start(QStringLiteral("bwrap"), arguments);
    if (!daemon.waitForStarted(STARTED_MS)) {
        return false;
    }
    startedDaemon = &daemon;
    return WaitFor([this, ready] {
               const bool up = !options.agreed || CountLog(QStringLiteral("Mainwindow start.")) > ready;
               return daemon.state() == QProcess::NotRunning ||
                      (AssistantPid() != 0 && up && BigWindow().id != 0 && BigCardIsDrawn());
           }) &&
           daemon.state() == QProcess::Running;
}

int DesktopWorld::StartSecond()
{
    return RunProgram({QStringLiteral("Velodesk"), QStringLiteral("1")});
}

int DesktopWorld::RunProgram(const QStringList& arguments, const QStringList& unset)
{
    const auto process = LaunchProgram(arguments, unset);
    if (!WaitForEnd(*process)) {
        End(*process);
        return -1;
    }
    return process->exitStatus() == QProcess::NormalExit ? process->exitCode() : -1;
}

qint64 DesktopWorld::AssistantPid() const
{
    for (const Event& event : DaemonEvents()) {
        if (event.what.startsWith(QLatin1String("assistant started "))) {
            return event.what.section(QLatin1Char(' '), 2).toLongLong();
        }
    }
    return 0;
}

int DesktopWorld::AssistantMemory() const
{
    const QString status = Content(QStringLiteral("/proc/%1/status").arg(AssistantPid()));
    return status.section(QStringLiteral("VmRSS:"), 1).section(QStringLiteral("kB"), 0, 0).toInt();
}

bool DesktopWorld::AssistantSleeps() const
{
    return ProcessState(AssistantPid()).contains(QLatin1String("S (sleeping)"));
}

bool DesktopWorld::WaitForDaemonEnd(int milliseconds)
{
    return WaitForEnd(daemon, milliseconds);
}

int DesktopWorld::DaemonStatus() const
{
    return daemon.exitStatus() == QProcess::NormalExit ? daemon.exitCode() : -1;
}

int DesktopWorld::AssistantStatus() const
{
    for (const Event& event : DaemonEvents()) {
        if (event.what.startsWith(QLatin1String("assistant ended exit "))) {
            return event.what.section(QLatin1Char(' '), 3).toInt();
        }
    }
    return -1;
}

QString DesktopWorld::Home() const
{
    return scratch.filePath(QStringLiteral("home"));
}

void DesktopWorld::EndServer()
{
    // Closes our own connection first, because Xlib exits if the server has ended.
    desktop.reset();
    End(server);
}

void DesktopWorld::EndWindowManager()
{
    End(windowManager);
}

void DesktopWorld::EndSystemBus()
{
    End(systemBus);
}

void DesktopWorld::PauseSystemBus() const
{
    kill(static_cast<pid_t>(systemBus.processId()), SIGSTOP);
}

QString DesktopWorld::InstalledDir() const
{
    return scratch.filePath(QStringLiteral("files"));
}

QProcessEnvironment DesktopWorld::Environment() const
{
    return environment;
}

void DesktopWorld::SetVariable(const QString& name, const QString& value)
{
    environment.insert(name, value);
}

QStringList DesktopWorld::Log() const
{
    QStringList lines = Content(Home() + QStringLiteral("/Velodesk/log/velodesk.log"))
                            .split(QLatin1Char('\n'), QString::SkipEmptyParts);
    for (QString& line : lines) {
        line = line.section(QStringLiteral("] "), 1);
    }
    return lines;
}

bool DesktopWorld::HasLog(const QString& text, const QString& about) const
{
    return CountLog(text, about) > 0;
}

int DesktopWorld::CountLog(const QString& text, const QString& about) const
{
    int count = 0;
    for (const QString& line : Log()) {
        count += line.contains(text) && line.contains(about) ? 1 : 0;
    }
    return count;
}

QString DesktopWorld::SettingsText() const
{
    return Content(Home() + QStringLiteral("/Velodesk/velodesk.conf"));
}

void DesktopWorld::WriteEngineScript(const QString& script) const
{
    QFile file(Home() + QStringLiteral("/standin-engine.script"));
    if (file.open(QIODevice::WriteOnly)) {
        file.write(script.toUtf8());
    }
}

QList<DesktopWorld::Event> DesktopWorld::DaemonEvents() const
{
    return ReadEvents(scratch.filePath(QStringLiteral("daemon.events")));
}

QList<DesktopWorld::Event> DesktopWorld::EngineEvents() const
{
    return ReadEvents(Home() + QStringLiteral("/standin-engine.events"));
}

bool DesktopWorld::EngineRuns()
{
    const QStringList processes =
        QDir(QStringLiteral("/proc")).entryList({QStringLiteral("[0-9]*")}, QDir::Dirs);
    for (const QString& process : processes) {
        if (Content(QStringLiteral("/proc/%1/comm").arg(process)).trimmed() == QLatin1String("Tandra")) {
            return true;
        }
    }
    return false;
}

qint64 DesktopWorld::TimeOf(const QList<Event>& events, const QString& what)
{
    for (const Event& event : events) {
        if (event.what.startsWith(what)) {
            return event.nanoseconds;
        }
    }
    return -1;
}

const XDesktop& DesktopWorld::Desktop() const
{
    return *desktop;
}

bool DesktopWorld::AddPanel(Qt::Edge edge, int thickness) const
{
    constexpr int SOON_MS = 500;
    const QRect all(QPoint(0, 0), desktop->Size());
    // Adds the panel repeatedly, because a window manager that is still starting may ignore it.
    return WaitFor([&] {
        desktop->AddPanel(edge, thickness);
        return WaitFor([&] { return !desktop->WorkArea().isNull() && desktop->WorkArea() != all; }, SOON_MS);
    });
}

bool DesktopWorld::ManagerKeepsOffPanels() const
{
    return options.windowManager != QLatin1String("openbox");
}

bool DesktopWorld::ManagerKeepsOnScreen() const
{
    return ManagerKeepsOffPanels() && !options.windowManager.startsWith(QLatin1String("xfwm4"));
}

XDesktop::Window DesktopWorld::BigWindow() const
{
    return FindWindow(BIG_CARD);
}

int DesktopWorld::CountBigWindows() const
{
    int count = 0;
    const QList<XDesktop::Window> windows = desktop->WindowsOf(0);
    for (const XDesktop::Window& window : windows) {
        count += window.rect.size() == WithMargins(BIG_CARD) ? 1 : 0;
    }
    return count;
}

XDesktop::Window DesktopWorld::SmallWindow() const
{
    return FindWindow(SMALL_CARD);
}

XDesktop::Window DesktopWorld::MenuWindow() const
{
    return FindWindow(MENU_CARD);
}

XDesktop::Window DesktopWorld::FolderDialog() const
{
    return TitledWindow(QStringLiteral("选择文件夹"));
}

XDesktop::Window DesktopWorld::EngineWindow() const
{
    return TitledWindow(QStringLiteral("投屏引擎替身"));
}

QPoint DesktopWorld::OnCard(const QPoint& pos) const
{
    return OnWindow(BigWindow().rect.topLeft(), pos);
}

QPoint DesktopWorld::OnPage(const QPoint& pos) const
{
    return OnCard(PAGE_POS + pos);
}

QPoint DesktopWorld::OnSmallCard(const QPoint& pos) const
{
    return OnWindow(SmallWindow().rect.topLeft(), pos);
}

void DesktopWorld::ClickPage(const QPoint& pos) const
{
    desktop->Click(OnPage(pos));
}

void DesktopWorld::ClickCard(const QPoint& pos) const
{
    desktop->Click(OnCard(pos));
}

void DesktopWorld::ClickSmallCard(const QPoint& pos) const
{
    // The window exists before it is placed and painted, and a compositor fades it in.
    WaitFor([this] { return desktop->PixelAt(OnSmallCard(SMALL_CARD_BLANK)) == SMALL_CARD_BACKGROUND; });
    desktop->Click(OnSmallCard(pos));
}

bool DesktopWorld::ChooseFromMenu(int entry) const
{
    ClickCard(Places::MENU_BUTTON);
    if (!WaitFor([this] { return MenuWindow().id != 0; })) {
        return false;
    }
    const QPoint middle(MENU_CARD.width() / 2, MENU_ENTRY_HEIGHT * entry + MENU_ENTRY_HEIGHT / 2);
    desktop->Click(OnWindow(MenuWindow().rect.topLeft(), middle));
    return WaitFor([this] { return MenuWindow().id == 0; });
}

QPoint DesktopWorld::PencilPos() const
{
    const QImage row = desktop->Area(QRect(OnPage(NAME_ROW.topLeft()), NAME_ROW.size()));
    for (int x = row.width() - 1; x >= 0; --x) {
        for (int y = 0; y < row.height(); ++y) {
            if (row.pixel(x, y) != Places::WHITE) {
                return OnPage(NAME_ROW.topLeft() + QPoint(x - PENCIL_SIZE / 2 + 2, NAME_ROW.height() / 2));
            }
        }
    }
    return OnPage(NAME_ROW.center());
}

bool DesktopWorld::BeginRename() const
{
    return WaitFor([this] {
        // Reads the position before each click, because the row is repainted after each edit.
        const QPoint pencil = PencilPos();
        desktop->Click(pencil);
        return WaitFor([&] { return PencilPos().x() < pencil.x(); }, PENCIL_HIDDEN_MS);
    });
}

void DesktopWorld::AppendSettings(const QString& lines) const
{
    QFile file(Home() + QStringLiteral("/Velodesk/velodesk.conf"));
    if (file.open(QIODevice::Append)) {
        file.write(lines.toUtf8());
    }
}

bool DesktopWorld::PageHasColour(const QRect& area, QRgb colour) const
{
    const QImage image = desktop->Area(QRect(OnPage(area.topLeft()), area.size()));
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (image.pixel(x, y) == colour) {
                return true;
            }
        }
    }
    return false;
}

bool DesktopWorld::ShowsCasting() const
{
    // A pixel of the button, left of its text. It is white in the casting style.
    return desktop->PixelAt(OnPage(QPoint(572, 36))) == Places::WHITE;
}

bool DesktopWorld::ShowsIdle() const
{
    const QRgb pixel = desktop->PixelAt(OnPage(QPoint(572, 36)));
    return pixel == qRgb(0x2B, 0x6F, 0xF2) || pixel == qRgb(0x3E, 0x80, 0xFF);
}

bool DesktopWorld::BigCardIsDrawn() const
{
    const QRgb edge = desktop->PixelAt(OnCard(Places::BEGIN_EDGE));
    return edge == Places::GREY_BUTTON || edge == Places::BLUE || ShowsIdle() || ShowsCasting();
}

bool DesktopWorld::WaitFor(const std::function<bool()>& condition, int milliseconds)
{
    const QDeadlineTimer deadline(milliseconds);
    const QDeadlineTimer afterEnd(ENDED_MS);
    while (!condition()) {
        // The daemon ends when the program ends.
        const bool ended = startedDaemon != nullptr && startedDaemon->state() == QProcess::NotRunning;
        if (deadline.hasExpired() || (ended && afterEnd.hasExpired())) {
            FailureReason() =
                ended ? QStringLiteral("the program has ended") : QStringLiteral("time limit exceeded");
            return false;
        }
        QCoreApplication::processEvents();
        QThread::msleep(POLL_INTERVAL_MS);
    }
    return true;
}

QString DesktopWorld::Describe() const
{
    QStringList lines{FailureReason(), QStringLiteral("state at that time:")};
    const qint64 pid = AssistantPid();
    // The server may have ended.
    const QList<XDesktop::Window> windows =
        desktop == nullptr ? QList<XDesktop::Window>() : desktop->WindowsOf(pid);
    for (const XDesktop::Window& window : windows) {
        lines += QStringLiteral("window %1 at %2,%3 of %4 by %5, \"%6\"")
                     .arg(window.id)
                     .arg(window.rect.x())
                     .arg(window.rect.y())
                     .arg(window.rect.width())
                     .arg(window.rect.height())
                     .arg(window.title);
    }
    if (desktop != nullptr) {
        lines += QStringLiteral("shown windows of all processes: %1").arg(desktop->WindowsOf(0).size());
    }
    lines += QStringLiteral("program: ") + ProcessState(pid);
    lines += QStringLiteral("window manager: ") + ProcessState(windowManager.processId());
    lines += QStringLiteral("X server: ") + ProcessState(server.processId());
    for (const Event& event : DaemonEvents()) {
        lines += QStringLiteral("daemon: ") + event.what;
    }
    for (const Event& event : EngineEvents()) {
        lines += QStringLiteral("engine: ") + event.what;
    }
    lines += Log();
    lines += QStringLiteral("output:\n") + Messages();
    return lines.join(QLatin1Char('\n'));
}

QString DesktopWorld::Messages() const
{
    return Content(options.messages);
}

bool DesktopWorld::SaveScreen(const QString& path) const
{
    return desktop->Screen().save(path);
}

XDesktop::Window DesktopWorld::FindWindow(const QSize& cardSize) const
{
    const QList<XDesktop::Window> windows = desktop->WindowsOf(AssistantPid());
    for (const XDesktop::Window& window : windows) {
        if (window.rect.size() == WithMargins(cardSize)) {
            return window;
        }
    }
    return {0, QRect(), QString()};
}

void DesktopWorld::EndEngines() const
{
    // An engine survives an assistant that was killed, and its child processes survive the engine.
    for (const Event& event : EngineEvents()) {
        QString pid;
        if (event.what.startsWith(QLatin1String("started "))) {
            pid = event.what.section(QLatin1Char(' '), 1, 1);
        } else if (event.what.startsWith(QLatin1String("left behind "))) {
            pid = event.what.section(QLatin1Char(' '), 2, 2);
        }
        // The process id may belong to another process now.
        if (Content(QStringLiteral("/proc/%1/comm").arg(pid)).trimmed() == QLatin1String("Tandra")) {
            kill(static_cast<pid_t>(pid.toLongLong()), SIGKILL);
        }
    }
}

XDesktop::Window DesktopWorld::TitledWindow(const QString& title) const
{
    const QList<XDesktop::Window> windows = desktop->WindowsOf(0);
    for (const XDesktop::Window& window : windows) {
        if (window.title == title) {
            return window;
        }
    }
    return {0, QRect(), QString()};
}

QSize DesktopWorld::WithMargins(const QSize& cardSize) const
{
    return (cardSize + QSize(2 * Margin(), 2 * Margin())) * options.scale;
}

QPoint DesktopWorld::OnWindow(const QPoint& corner, const QPoint& pos) const
{
    return corner + (QPoint(Margin(), Margin()) + pos) * options.scale;
}

int DesktopWorld::Margin() const
{
    return HasLog(QStringLiteral("Don't Use Shadow")) ? PLAIN_MARGIN : SHADOW_MARGIN;
}
