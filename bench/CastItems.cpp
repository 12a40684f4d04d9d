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
constexpr int CAST_ROUNDS = 300;
constexpr int IDLE_ROUNDS = 12;
/// Long enough for the kernel's counts to mean something, with a report a second in it.
constexpr int IDLE_SECONDS = 5;
constexpr unsigned long SECOND_MS = 1000;
constexpr unsigned long SETTLE_MS = 300;
/// Between two changes, so that each finds a program at rest.
constexpr unsigned long PAUSE_MS = 30;
constexpr double NS_PER_MS = 1e6;

constexpr char RUN[] = R"({"status":"run"})";
constexpr char STOP[] = R"({"status":"stop"})";

/// On the page: inside the start button, left of its words.
constexpr QPoint BUTTON_EDGE(572, 36);
constexpr QPoint BUTTON(616, 36);
/// In the label of the other window, which stands in the upper left corner.
constexpr QRect LABEL(20, 20, 100, 40);
/// Room for both windows beside one another.
constexpr QSize SCREEN(2900, 800);

/// The engine's end of a status channel.
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

/// A program that shows what is reported, and the place where that is seen.
struct Display
{
    qint64 pid = 0;
    std::unique_ptr<Reporter> reporter;
    QPoint place;
    QRgb running = 0;
    QRgb stopped = 0;
};

/// The assistant with an engine that does nothing, and the least program beside it.
class Stage
{
public:
    Stage() : world(Wanted())
    {
        const QString missing = world.Start();
        if (!missing.isEmpty() || !world.StartAssistant()) {
            qFatal("the assistant does not start: %s", qUtf8Printable(missing));
        }
        watch = std::make_unique<PixelWatch>(world.Environment().value(QStringLiteral("DISPLAY")));
        StartEngine();
        StartLeast();
        assistant.pid = world.AssistantPid();
        assistant.reporter = std::make_unique<Reporter>(world.Home() + QStringLiteral("/Velodesk/TandraIpc"));
        const QPoint edge = world.OnPage(BUTTON_EDGE);
        FindPlace(assistant, QRect(edge, edge));
        FindPlace(least, LABEL);
    }

    /// From the write to the pixel, in milliseconds.
    double Change(const Display& display, const char* message, QRgb wanted) const
    {
        const qint64 start = PixelWatch::Now();
        display.reporter->Send(message);
        const qint64 end = watch->WaitFor(display.place, [wanted](QRgb pixel) { return pixel == wanted; });
        if (end < 0) {
            qFatal("a report is not shown");
        }
        return static_cast<double>(end - start) / NS_PER_MS;
    }

    Display assistant;
    Display least;

private:
    static DesktopWorld::Options Wanted()
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
        // The hover look would change the button once more.
        world.Desktop().MoveTo(QPoint(1, SCREEN.height() - 1));
    }

    void StartLeast()
    {
        const QString path = world.Home() + QStringLiteral("/least");
        std::vector<std::string> environment;
        for (const QString& assignment : world.Environment().toStringList()) {
            environment.push_back(assignment.toStdString());
        }
        leastProcess = std::make_unique<Child>(BuiltProgram("label-window").toStdString(),
                                               std::vector<std::string>{"label-window", path.toStdString()},
                                               environment);
        least.pid = leastProcess->Pid();
        least.reporter = std::make_unique<Reporter>(path);
    }

    QImage Settled(const Display& display, const char* message) const
    {
        display.reporter->Send(message);
        QThread::msleep(SETTLE_MS);
        return world.Desktop().Screen();
    }

    /// A pixel of the area that tells the one state from the other.
    void FindPlace(Display& display, const QRect& area) const
    {
        const QImage running = Settled(display, RUN);
        const QImage stopped = Settled(display, STOP);
        for (int y = area.top(); y <= area.bottom(); ++y) {
            for (int x = area.left(); x <= area.right(); ++x) {
                if (running.pixel(x, y) != stopped.pixel(x, y)) {
                    display.place = QPoint(x, y);
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
    std::unique_ptr<Child> leastProcess;
};

void ChangeOnce(const Stage& stage, const Display& display, Samples& samples)
{
    QThread::msleep(PAUSE_MS);
    samples.Add(stage.Change(display, RUN, display.running));
    QThread::msleep(PAUSE_MS);
    stage.Change(display, STOP, display.stopped);
}

/// What a process has used since it began, all threads together.
struct Usage
{
    double wakeUps = 0.0;
    double cpuMs = 0.0;
};

QByteArray ContentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

Usage UsageOf(qint64 pid)
{
    Usage usage;
    const QString tasks = QStringLiteral("/proc/%1/task").arg(pid);
    for (const QString& task : QDir(tasks).entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        const QString prefix = tasks + QLatin1Char('/') + task;
        usage.cpuMs +=
            ContentOf(prefix + QStringLiteral("/schedstat")).split(' ').value(0).toDouble() / NS_PER_MS;
        const QList<QByteArray> lines = ContentOf(prefix + QStringLiteral("/status")).split('\n');
        for (const QByteArray& line : lines) {
            if (line.startsWith("voluntary_ctxt_switches:")) {
                usage.wakeUps += line.split('\t').value(1).toDouble();
            }
        }
    }
    return usage;
}
} // namespace

void MeasureCast(Report& report, const Effort& effort)
{
    const Stage stage;
    Row row{QStringLiteral("\"run\" to pixels"),
            QStringLiteral("ms"),
            QStringLiteral("one label"),
            {},
            {},
            Row::RATIO_AT_MOST,
            1.3};
    for (int round = 0; round < effort.Rounds(CAST_ROUNDS); ++round) {
        ChangeOnce(stage, stage.assistant, row.ours);
        ChangeOnce(stage, stage.least, row.yardstick);
    }
    report.Add(row);
    row.aim = Row::P99_BELOW;
    row.limit = 16.7;
    report.Add(row);
}

void MeasureIdle(Report& report, const Effort& effort)
{
    const Stage stage;
    Row wakeUps{QStringLiteral("idle: wake-ups"),
                QStringLiteral("1/s"),
                QStringLiteral("one label"),
                {},
                {},
                Row::RATIO_AT_MOST,
                1.1};
    Row cpu{QStringLiteral("idle: CPU"),
            QStringLiteral("ms/s"),
            QStringLiteral("one label"),
            {},
            {},
            Row::RATIO_AT_MOST,
            1.1};
    for (int round = 0; round < effort.Rounds(IDLE_ROUNDS); ++round) {
        const Usage oursBefore = UsageOf(stage.assistant.pid);
        const Usage leastBefore = UsageOf(stage.least.pid);
        for (int second = 0; second < IDLE_SECONDS; ++second) {
            stage.assistant.reporter->Send(STOP);
            QThread::msleep(SECOND_MS / 2);
            stage.least.reporter->Send(STOP);
            QThread::msleep(SECOND_MS / 2);
        }
        const Usage ours = UsageOf(stage.assistant.pid);
        const Usage least = UsageOf(stage.least.pid);
        wakeUps.ours.Add((ours.wakeUps - oursBefore.wakeUps) / IDLE_SECONDS);
        wakeUps.yardstick.Add((least.wakeUps - leastBefore.wakeUps) / IDLE_SECONDS);
        cpu.ours.Add((ours.cpuMs - oursBefore.cpuMs) / IDLE_SECONDS);
        cpu.yardstick.Add((least.cpuMs - leastBefore.cpuMs) / IDLE_SECONDS);
    }
    report.Add(wakeUps);
    report.Add(cpu);
}
