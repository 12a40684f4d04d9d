#pragma once

#include <QProcess>
#include <QProcessEnvironment>
#include <QStringList>
#include <QTemporaryDir>
#include <functional>
#include <memory>

#include "XDesktop.h"

/// The test environment ("world") of one run of the program: a separate X server, window manager, session
/// bus, system bus and home. A bind mount shows the built program below /opt. The stand-in daemon starts the
/// assistant, which is the unmodified built program.
///
/// The destructor ends all processes and removes all files. Waiting functions wait for effects that are
/// visible from outside: windows, pixels, the log, the settings file, and the events that the stand-ins
/// write.
class DesktopWorld
{
public:
    /// The time limit of a wait. Every step is faster, even on a loaded machine.
    static constexpr int WAIT_LIMIT_MS = 60000;

    /// The folder of the installed files, as the program sees it.
    static constexpr char INSTALLED_DIR[] = "/opt/apps/com.zelmora.velodesk/files";

    struct Options
    {
        /// The environment variable VELODESK_WINDOW_MANAGER selects another one, such as kwin_x11.
        QString windowManager = qEnvironmentVariable("VELODESK_WINDOW_MANAGER", QStringLiteral("openbox"));
        bool compositor = false;
        /// Starts a headless Wayland session (weston) with an X server. This server does not draw on its root
        /// window, so tests can read windows and their positions, but no pixels.
        bool wayland = false;
        /// Adds a second monitor on the right as the primary monitor. Each monitor has 1280 by 800 pixels.
        bool twoMonitors = false;
        QSize screen = QSize(1280, 800);
        /// The resolution that the X server reports. 0 selects its default.
        int dpi = 0;
        /// X resources of the server, such as "Xft.dpi: 144".
        QString resources;
        /// The value of QT_SCALE_FACTOR. Tests use the positions and sizes for a factor of 1.
        qreal scale = 1;
        /// An existing display to use instead of a virtual one with a window manager.
        QString display;
        /// Whether the agreement was accepted in an earlier run.
        bool agreed = true;
        /// Whether the session bus starts the accessibility bus and the program registers on it.
        bool screenReader = false;
        /// The content of /etc/lsb-release. A null string stands for an empty file.
        QString lsbRelease;
        /// The file that receives the output of all started processes. By default, it is in the scratch
        /// folder.
        QString messages;
        /// A root file system in which the program is installed. It is mounted read-only. If it is empty, the
        /// built program runs on this machine.
        QString root;
        /// An engine that replaces the stand-in. It writes no events.
        QString engine;
    };

    struct Event
    {
        qint64 nanoseconds;
        QString what;
    };

    explicit DesktopWorld(Options givenOptions);
    ~DesktopWorld();

    /// Starts everything except the assistant. Returns an empty text, or an error message.
    QString Start();

    /// Starts the stand-in daemon, which starts the assistant. Waits until the window is painted at its final
    /// position, because the program shows its window first and then moves it. Returns false if the assistant
    /// ends or if the window is not painted there in time.
    bool StartAssistant(const QStringList& daemonOptions = {});
    /// Starts a second assistant beside the first, waits for its end and returns its exit code.
    int StartSecond();
    /// Runs the program, waits for its end and returns its exit code. `arguments` begins with argv[0]. The
    /// environment does not contain the variables in `unset`.
    int RunProgram(const QStringList& arguments, const QStringList& unset = {});

    /// Starts the program like RunProgram(), but does not wait. If the returned process is killed, the
    /// program is killed too.
    std::unique_ptr<QProcess> LaunchProgram(const QStringList& arguments,
                                            const QStringList& unset = {}) const;

    /// Runs a command in the sandbox, with the same display and buses, and waits for its end. Stores its
    /// output in `output`. Returns its exit code, or -1 if it did not exit normally.
    int RunBeside(const QStringList& command, QString& output) const;

    /// Returns the assistant's process id, or 0 before it is started.
    qint64 AssistantPid() const;
    /// Returns the assistant's resident memory in KiB.
    int AssistantMemory() const;
    /// Returns whether the assistant waits for events, so that it is neither running nor runnable.
    bool AssistantSleeps() const;
    bool WaitForDaemonEnd(int milliseconds = WAIT_LIMIT_MS);
    /// Returns 0 if the daemon received the exit request, otherwise 1.
    int DaemonStatus() const;
    /// Returns the assistant's exit code, or -1 if it did not exit normally.
    int AssistantStatus() const;

    QString Home() const;
    /// End the X server, the window manager or the system bus while the program runs.
    void EndServer();
    void EndWindowManager();
    void EndSystemBus();
    /// Makes the system bus accept connections without answering.
    void PauseSystemBus() const;

    /// Returns the folder of the installed files on this machine.
    QString InstalledDir() const;
    /// Returns the environment of all started processes.
    QProcessEnvironment Environment() const;
    void SetVariable(const QString& name, const QString& value);

    /// Returns the lines of the log, oldest first, without the time stamps.
    QStringList Log() const;
    /// Return whether, and how often, the log has a line with both texts. `about` is for instance the socket
    /// of an application, followed by a bracket.
    bool HasLog(const QString& text, const QString& about = QString()) const;
    int CountLog(const QString& text, const QString& about = QString()) const;
    QString SettingsText() const;
    void WriteEngineScript(const QString& script) const;
    QList<Event> DaemonEvents() const;
    QList<Event> EngineEvents() const;
    /// Returns whether a process with the engine's name runs.
    static bool EngineRuns();
    /// Returns the time of the first event that begins with `what`, or -1 if there is none.
    static qint64 TimeOf(const QList<Event>& events, const QString& what);

    const XDesktop& Desktop() const;
    /// Adds a panel and waits until the work area is reduced. Returns false after the time limit.
    bool AddPanel(Qt::Edge edge, int thickness) const;
    /// Return whether the window manager itself prevents windows from overlapping panels or leaving the
    /// screen.
    bool ManagerKeepsOffPanels() const;
    bool ManagerKeepsOnScreen() const;

    /// Returns the shown agreement window or main window. The id is 0 if neither is shown.
    XDesktop::Window BigWindow() const;
    /// Returns the number of shown agreement and main windows of all processes.
    int CountBigWindows() const;
    /// Returns the shown exit question or message box.
    XDesktop::Window SmallWindow() const;
    XDesktop::Window MenuWindow() const;
    /// Returns Qt's own folder dialog.
    XDesktop::Window FolderDialog() const;
    /// Returns the window in which the stand-in engine shows the image of a phone.
    XDesktop::Window EngineWindow() const;
    /// Converts a position on the big window's card to screen coordinates.
    QPoint OnCard(const QPoint& pos) const;
    /// Converts a position on the multi-screen page to screen coordinates.
    QPoint OnPage(const QPoint& pos) const;
    QPoint OnSmallCard(const QPoint& pos) const;
    void ClickCard(const QPoint& pos) const;
    void ClickPage(const QPoint& pos) const;
    void ClickSmallCard(const QPoint& pos) const;
    /// Opens the menu of the title bar and clicks an entry: 0 help, 1 settings, 2 about. Returns false if no
    /// menu appears.
    bool ChooseFromMenu(int entry) const;
    /// Returns the screen position of the pencil beside the device name. The position depends on font
    /// metrics, so this function searches the pixels for it.
    QPoint PencilPos() const;
    /// Clicks the pencil until the name can be edited. Returns false after the time limit.
    bool BeginRename() const;
    /// Appends lines to the settings file.
    void AppendSettings(const QString& lines) const;
    /// Returns whether any pixel in an area of the page has that colour.
    bool PageHasColour(const QRect& area, QRgb colour) const;
    /// Return whether the page shows casting or idle, which the colour of the start button indicates.
    bool ShowsCasting() const;
    bool ShowsIdle() const;

    /// Checks `condition` every few milliseconds until it is true. Returns false after `milliseconds`. If the
    /// program has ended, it returns false after 20 s.
    static bool WaitFor(const std::function<bool()>& condition, int milliseconds = WAIT_LIMIT_MS);

    /// Returns the current state of the program, for the message of a failing test.
    QString Describe() const;

    /// Returns the output of all started processes so far.
    QString Messages() const;

    /// Saves a screenshot.
    bool SaveScreen(const QString& path) const;

private:
    QString StartDisplay();
    /// Return the name of the display, or an empty text if the server does not start.
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
    /// Converts a position on a card to screen coordinates, given the window's corner.
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
    /// The daemon of the last world that started its program.
    static const QProcess* startedDaemon;
    std::unique_ptr<XDesktop> desktop;
};
