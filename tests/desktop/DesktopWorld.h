#pragma once

#include <QProcess>
#include <QProcessEnvironment>
#include <QStringList>
#include <QTemporaryDir>
#include <functional>
#include <memory>

#include "XDesktop.h"

/// A desktop of its own for one run of the program: X server, window manager, both buses, a scratch home, and
/// the installed tree by a bind mount. The assistant is the built program, byte for byte, started by the
/// stand-in daemon.
///
/// Everything is gone when the object dies. Waiting is for what can be seen from outside: windows, pixels,
/// the log, the settings file and the events that the stand-ins write.
class DesktopWorld
{
public:
    /// Longer than anything takes on a loaded machine.
    static constexpr int PATIENCE_MS = 60000;

    /// Where the program sees its installed files.
    static constexpr char INSTALLED_DIR[] = "/opt/apps/com.zelmora.velodesk/files";

    struct Options
    {
        /// VELODESK_WINDOW_MANAGER in the environment names another one, such as kwin_x11.
        QString windowManager = qEnvironmentVariable("VELODESK_WINDOW_MANAGER", QStringLiteral("openbox"));
        bool compositor = false;
        /// A Wayland session (weston, without a screen) whose X server draws on no root window: windows and
        /// their places can be asked for there, pixels not.
        bool wayland = false;
        /// A second monitor at the right, which is the primary one; each of 1280 by 800.
        bool twoMonitors = false;
        QSize screen = QSize(1280, 800);
        /// What the X server says of its screen; 0 for its own choice.
        int dpi = 0;
        /// Server-wide resources, such as "Xft.dpi: 144".
        QString resources;
        /// Qt's own scale factor, QT_SCALE_FACTOR. Places and sizes stay those at a factor of 1.
        qreal scale = 1;
        /// An existing display to use instead of a virtual one with a window manager.
        QString display;
        /// The agreement was accepted in an earlier run.
        bool agreed = true;
        /// A screen reader may come: the session bus starts the accessibility bus, and the program is on it.
        bool screenReader = false;
        /// The content of /etc/lsb-release; null for an empty file.
        QString lsbRelease;
        /// Where everything that is started here says what it has to say; by default a file of the world's
        /// own.
        QString messages;
        /// The root of another system, with the program installed in it, to run that program in; empty for
        /// the built program on this machine. It stays unchanged.
        QString root;
        /// Another engine than the stand-in. It leaves no events.
        QString engine;
    };

    struct Event
    {
        qint64 nanoseconds;
        QString what;
    };

    explicit DesktopWorld(Options wanted);
    ~DesktopWorld();

    /// Starts everything but the assistant. Empty, or what could not be had.
    QString Start();

    /// Starts the stand-in daemon, and through it the assistant, and waits until its window is drawn where it
    /// stands: it is shown first and moved to its place then, and what is not drawn there cannot be clicked.
    /// False if it ended before, or if it never is.
    bool StartAssistant(const QStringList& daemonOptions = {});
    /// Starts the assistant once more beside the first, waits for its end and gives its exit code.
    int StartSecond();
    /// Runs the program with any command line, waits for its end and gives its exit code; `arguments` begins
    /// with argv[0]. Names in `unset` are taken out of the environment.
    int RunProgram(const QStringList& arguments, const QStringList& unset = {});

    /// The same without waiting. Killing the process kills the program.
    std::unique_ptr<QProcess> LaunchProgram(const QStringList& arguments,
                                            const QStringList& unset = {}) const;

    /// Runs a command among the installed files, on this world's display and buses, and waits for its end.
    /// Gives its exit code, and in `output` what it said; -1 if it did not exit by itself.
    int RunBeside(const QStringList& command, QString& output) const;

    /// The assistant's process id; 0 before it was started.
    qint64 AssistantPid() const;
    /// The assistant's resident memory in KiB.
    int AssistantMemory() const;
    /// Whether the assistant waits for events, and does not work or wait for a processor.
    bool AssistantSleeps() const;
    bool WaitForDaemonEnd(int milliseconds = PATIENCE_MS);
    /// 0 if the daemon was told to exit, 1 if not.
    int DaemonStatus() const;
    /// The exit code of the assistant; -1 if it did not exit by itself.
    int AssistantStatus() const;

    QString Home() const;
    /// Ends the X server, the window manager or the system bus under the running program.
    void EndServer();
    void EndWindowManager();
    void EndSystemBus();
    /// From now on the system bus accepts connections and answers nothing.
    void PauseSystemBus() const;

    /// Where the program finds its installed files.
    QString InstalledDir() const;
    /// What the environment of everything started here holds.
    QProcessEnvironment Environment() const;
    void SetVariable(const QString& name, const QString& value);

    /// Lines of the log, oldest first, without the time.
    QStringList Log() const;
    bool HasLog(const QString& text) const;
    int CountLog(const QString& text) const;
    QString SettingsText() const;
    void WriteEngineScript(const QString& script) const;
    QList<Event> DaemonEvents() const;
    QList<Event> EngineEvents() const;
    /// Whether a process runs under the engine's name.
    static bool EngineRuns();
    /// The time of the first event that begins with `what`; -1 if there is none.
    static qint64 TimeOf(const QList<Event>& events, const QString& what);

    const XDesktop& Desktop() const;
    /// Adds a panel and waits until it has taken its room; false if it never does.
    bool AddPanel(Qt::Edge edge, int thickness) const;
    /// Whether the window manager itself keeps windows out of panels, or on the screen, wherever a program
    /// moves them.
    bool ManagerKeepsOffPanels() const;
    bool ManagerKeepsOnScreen() const;

    /// The agreement window or the main window, whichever stands; an id of 0 if neither does.
    XDesktop::Window BigWindow() const;
    /// How many of them stand, whichever process they belong to.
    int CountBigWindows() const;
    /// The exit confirmation or a message box.
    XDesktop::Window SmallWindow() const;
    XDesktop::Window MenuWindow() const;
    /// Qt's own dialog for choosing a folder.
    XDesktop::Window FolderDialog() const;
    /// The stand-in engine's drawn phone.
    XDesktop::Window EngineWindow() const;
    /// Where a point of the big window's card stands on the screen.
    QPoint OnCard(const QPoint& pos) const;
    /// Where a point of the multi-screen page stands on the screen.
    QPoint OnPage(const QPoint& pos) const;
    QPoint OnSmallCard(const QPoint& pos) const;
    void ClickCard(const QPoint& pos) const;
    void ClickPage(const QPoint& pos) const;
    void ClickSmallCard(const QPoint& pos) const;
    /// Opens the menu in the title strip and clicks an entry, 0 help, 1 settings, 2 about; false if no menu
    /// came up.
    bool ChooseFromMenu(int entry) const;
    /// Where the pencil behind the device name stands on the screen: font metrics decide, so it is looked
    /// for.
    QPoint PencilPos() const;
    /// Clicks the pencil until the name can be edited; false if it never can.
    bool BeginRename() const;
    /// Adds lines to the settings file.
    void AppendSettings(const QString& lines) const;
    /// Whether the area of the page holds any pixel of that colour.
    bool PageHasColour(const QRect& area, QRgb colour) const;
    /// Whether the screen shows the casting state, by the start button's colour.
    bool ShowsCasting() const;
    bool ShowsIdle() const;

    /// Waits until `condition` holds, checking it every few milliseconds; false after `milliseconds`, or
    /// after 20 s if the program has ended.
    static bool WaitFor(const std::function<bool()>& condition, int milliseconds = PATIENCE_MS);

    /// What can be told of the program at this moment, for the message of a test that fails.
    QString Describe() const;

    /// What everything that was started here has said so far.
    QString Messages() const;

    /// A screen picture for people.
    bool SaveScreen(const QString& path) const;

private:
    QString StartDisplay();
    /// The name of the display, empty if it does not start.
    QString StartXvfb();
    QString StartXorg();
    bool AddMonitor() const;
    QString StartWeston();
    QString StartManager();
    QString StartBus(QProcess& bus, const QString& type, const QString& variable);
    void Stage() const;
    QStringList RootArguments() const;
    QStringList SandboxArguments() const;
    XDesktop::Window FindWindow(const QSize& cardSize) const;
    XDesktop::Window TitledWindow(const QString& title) const;
    void KeepMessages(QProcess& process, QProcess::ProcessChannel first) const;
    void EndEngines() const;
    QSize WithMargins(const QSize& cardSize) const;
    /// Where a point of a card stands, given the window's corner.
    QPoint OnWindow(const QPoint& corner, const QPoint& pos) const;
    int Margin() const;
    bool BigCardIsDrawn() const;

    Options options;
    QTemporaryDir scratch;
    QProcessEnvironment environment;
    QProcess server;
    QProcess windowManager;
    QProcess compositor;
    QProcess systemBus;
    QProcess sessionBus;
    QProcess daemon;
    /// That of the world whose program was started last.
    static const QProcess* startedDaemon;
    std::unique_ptr<XDesktop> desktop;
};
