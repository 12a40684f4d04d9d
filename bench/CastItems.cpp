#include <QDir>
#include <QFile>
#include <QThread>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include "Child.h"
#include "DesktopWorld.h"
#include "Items.h"
#include "PixelWatch.h"

namespace {
constexpr int CAST_ROUNDS = 200;
constexpr int IDLE_ROUNDS = 6;
/// The length of one round. Each program receives one report per second.
constexpr int IDLE_SECONDS = 5;
constexpr unsigned long SECOND_MS = 1000;
constexpr unsigned long SETTLE_MS = 300;
/// The pause before each change, so that the program is idle when the change arrives.
constexpr unsigned long PAUSE_MS = 30;
constexpr double NS_PER_MS = 1e6;

constexpr char RUN[] = R"({"status":"run"})";
constexpr char STOP[] = R"({"status":"stop"})";

/// The status image and the start button on the page. The program paints the image last.
constexpr QRect STATUS_IMAGE(207, 118, 306, 192);
constexpr QPoint BUTTON(616, 36);
/// The label in the baseline windows, which are in the upper left corner of the screen.
constexpr QRect LABEL(20, 20, 100, 40);
/// Large enough for two windows side by side.
constexpr QSize SCREEN(2900, 800);

/// The client side of a status channel.
class Reporter
{
public:
    explicit Reporter(const QString& path) : channel(socket(AF_UNIX, SOCK_STREAM, 0))
    {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        path.toStdString().copy(address.sun_path, sizeof address.sun_path - 1);
        const bool connected = DesktopWorld::WaitFor([this, &address] {
            return connect(channel, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
        });
        if (!connected) {
            qFatal("%s does not answer", qUtf8Printable(path));
        }
    }
    ~Reporter() { close(channel); }
    Reporter(const Reporter&) = delete;
    Reporter& operator=(const Reporter&) = delete;

    void Send(const char* message) const
    {
        if (write(channel, message, qstrlen(message)) < 0) {
            qFatal("a status channel is closed");
        }
    }

private:
    int channel;
};

/// A program that shows reports, and one pixel that has a different colour in each state.
struct Display
{
    qint64 pid = 0;
    std::unique_ptr<Reporter> reporter;
    QPoint position;
    QRgb running = 0;
    QRgb stopped = 0;
};

/// The assistant with an engine that does nothing, and a baseline program beside it.
class Stage
{
public:
    /// `program`: the name of a program of this build. `area`: where its window shows reports.
    Stage(const char* program, const QRect& area) : world(WideScreen())
    {
        const QString missing = world.Start();
        if (!missing.isEmpty() || !world.StartAssistant()) {
            qFatal("the assistant does not start: %s", qUtf8Printable(missing));
        }
        watch = std::make_unique<PixelWatch>(world.Environment().value(QStringLiteral("DISPLAY")));
        StartEngine();
        StartOther(program);
        assistant.pid = world.AssistantPid();
        assistant.reporter = std::make_unique<Reporter>(world.Home() + QStringLiteral("/Velodesk/TandraIpc"));
        FindPixel(assistant, QRect(world.OnPage(STATUS_IMAGE.topLeft()), STATUS_IMAGE.size()));
        FindPixel(other, area);
    }

    /// Returns the time from the write until the pixel changes, in milliseconds.
    double Change(const Display& display, const char* message, QRgb expected) const
    {
        const qint64 start = PixelWatch::Now();
        display.reporter->Send(message);
        const qint64 end =
            watch->WaitFor(display.position, [expected](QRgb pixel) { return pixel == expected; });
        if (end < 0) {
            qFatal("a report is not shown");
        }
        return static_cast<double>(end - start) / NS_PER_MS;
    }

    Display assistant;
    Display other;

private:
    static DesktopWorld::Options WideScreen()
    {
        DesktopWorld::Options options;
        options.screen = SCREEN;
        return options;
    }

    void StartEngine()
    {
        world.WriteEngineScript(QStringLiteral("await never\n"));
        DesktopWorld::WaitFor([this] { return world.ShowsIdle(); });
        world.ClickPage(BUTTON);
        if (!DesktopWorld::WaitFor([this] { return world.HasLog(QStringLiteral("count is 1")); })) {
            qFatal("the engine does not start");
        }
        // Moves the pointer off the button: a hovered button would change its appearance once more.
        world.Desktop().MoveTo(QPoint(1, SCREEN.height() - 1));
    }

    void StartOther(const char* program)
    {
        const QString path = world.Home() + QStringLiteral("/other");
        std::vector<std::string> environment;
        for (const QString& assignment : world.Environment().toStringList()) {
            environment.push_back(assignment.toStdString());
        }
        otherProcess =
            std::make_unique<Child>(BuiltProgram(program).toStdString(),
                                    std::vector<std::string>{program, path.toStdString()}, environment);
        other.pid = otherProcess->Pid();
        other.reporter = std::make_unique<Reporter>(path);
    }

    QImage ScreenAfter(const Display& display, const char* message) const
    {
        display.reporter->Send(message);
        QThread::msleep(SETTLE_MS);
        return world.Desktop().Screen();
    }

    /// Finds a pixel of the area that has different colours in the two states.
    void FindPixel(Display& display, const QRect& area) const
    {
        const QImage running = ScreenAfter(display, RUN);
        const QImage stopped = ScreenAfter(display, STOP);
        for (int y = area.top(); y <= area.bottom(); ++y) {
            for (int x = area.left(); x <= area.right(); ++x) {
                if (running.pixel(x, y) != stopped.pixel(x, y)) {
                    display.position = QPoint(x, y);
                    display.running = running.pixel(x, y);
                    display.stopped = stopped.pixel(x, y);
                    return;
                }
            }
        }
        qFatal("a report changes nothing on the screen");
    }

    DesktopWorld world;
    std::unique_ptr<PixelWatch> watch;
    std::unique_ptr<Child> otherProcess;
};

void ChangeOnce(const Stage& stage, const Display& display, Samples& samples)
{
    QThread::msleep(PAUSE_MS);
    samples.Add(stage.Change(display, RUN, display.running));
    QThread::msleep(PAUSE_MS);
    stage.Change(display, STOP, display.stopped);
}

/// Measures both programs on one screen. They change in turn.
void CompareChanges(Row& row, const char* program, const QRect& area, const Effort& effort)
{
    const Stage stage(program, area);
    for (int round = 0; round < effort.Rounds(CAST_ROUNDS); ++round) {
        ChangeOnce(stage, stage.assistant, row.ours);
        ChangeOnce(stage, stage.other, row.baseline);
    }
}

QByteArray ContentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// Returns how often all threads of the process have waited since they started.
double WakeUpsOf(qint64 pid)
{
    double wakeUps = 0.0;
    const QString tasks = QStringLiteral("/proc/%1/task").arg(pid);
    for (const QString& task : QDir(tasks).entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        const QString path = tasks + QLatin1Char('/') + task + QStringLiteral("/status");
        const QList<QByteArray> lines = ContentOf(path).split('\n');
        for (const QByteArray& line : lines) {
            if (line.startsWith("voluntary_ctxt_switches:")) {
                wakeUps += line.split('\t').value(1).toDouble();
            }
        }
    }
    return wakeUps;
}
} // namespace

void MeasureCast(Report& report, const Effort& effort)
{
    Row page{QStringLiteral("\"run\" to pixels"),
             QStringLiteral("ms"),
             QStringLiteral("plain page"),
             {},
             {},
             Row::RATIO_AT_MOST,
             1.4};
    Row label = page;
    label.baselineName = QStringLiteral("one label");
    label.limit = 2.5;
    CompareChanges(page, "page-window", STATUS_IMAGE, effort);
    CompareChanges(label, "label-window", LABEL, effort);
    report.Add(page);
    report.Add(label);
    label.kind = Row::P99_BELOW;
    label.limit = 5.0;
    report.Add(label);
}

void MeasureIdle(Report& report, const Effort& effort)
{
    const Stage stage("label-window", LABEL);
    Row wakeUps{QStringLiteral("idle: wake-ups"),
                QStringLiteral("1/s"),
                QStringLiteral("one label"),
                {},
                {},
                Row::RATIO_AT_MOST,
                1.0};
    for (int round = 0; round < effort.Rounds(IDLE_ROUNDS); ++round) {
        const double oursBefore = WakeUpsOf(stage.assistant.pid);
        const double otherBefore = WakeUpsOf(stage.other.pid);
        for (int second = 0; second < IDLE_SECONDS; ++second) {
            stage.assistant.reporter->Send(STOP);
            QThread::msleep(SECOND_MS / 2);
            stage.other.reporter->Send(STOP);
            QThread::msleep(SECOND_MS / 2);
        }
        wakeUps.ours.Add((WakeUpsOf(stage.assistant.pid) - oursBefore) / IDLE_SECONDS);
        wakeUps.baseline.Add((WakeUpsOf(stage.other.pid) - otherBefore) / IDLE_SECONDS);
    }
    report.Add(wakeUps);
}
