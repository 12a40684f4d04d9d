#include <QDir>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>
#include <csignal>
#include <memory>
#include <sys/stat.h>

#include "support/Lists.h"

namespace {
const QString NAME = QStringLiteral("Velodesk");
const QString MAIN_WINDOW = QStringLiteral("Mainwindow start.");
constexpr int ENDED_MS = 20000;

/// A line of the program's log.
struct Line
{
    QString level;
    QString file;
    QString module;
    QString message;
};

/// Starts the built program with a given argv[0] and given arguments.
class Start
{
public:
    Start(const QStringList& prefix, const QString& name, const QStringList& arguments,
          const QProcessEnvironment& environment, const QString& folder)
    {
        QStringList command = prefix;
        command << QStringLiteral("bash") << QStringLiteral("-c") << QStringLiteral("exec -a \"$0\" \"$@\"")
                << name << QStringLiteral(VELODESK_BINARY_DIR "/Velodesk") << arguments;
        process.setProcessEnvironment(environment);
        process.setWorkingDirectory(folder);
        process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        process.start(command.first(), command.mid(1));
        process.waitForStarted(ENDED_MS);
    }
    ~Start()
    {
        if (process.state() != QProcess::NotRunning) {
            process.kill();
            process.waitForFinished(ENDED_MS);
        }
    }
    Start(const Start&) = delete;
    Start& operator=(const Start&) = delete;

    /// Returns the exit code, or -1 if the program did not exit by itself.
    int ExitCode()
    {
        return process.waitForFinished(ENDED_MS) && process.exitStatus() == QProcess::NormalExit
                   ? process.exitCode()
                   : -1;
    }
    void Terminate()
    {
        process.terminate();
        process.waitForFinished(ENDED_MS);
    }
    bool IsRunning() { return process.state() == QProcess::Running; }
    qint64 Pid() const { return process.processId(); }

private:
    QProcess process;
};

/// Returns a signal set of a process by its name in proc(5).
qulonglong SignalSet(qint64 pid, const char* name)
{
    QFile status(QStringLiteral("/proc/%1/status").arg(pid));
    const QByteArray text = status.open(QIODevice::ReadOnly) ? status.readAll() : QByteArray();
    return text.mid(text.indexOf(name) + 8, 16).toULongLong(nullptr, 16);
}

constexpr qulonglong SetOf(int signal)
{
    return 1ULL << static_cast<unsigned int>(signal - 1);
}
} // namespace

class TestCommandLine : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void wrongCommandLineIsLoggedOnceWithoutADisplay_data();
    void wrongCommandLineIsLoggedOnceWithoutADisplay();
    void correctCommandLineStartsTheProgram_data();
    void correctCommandLineStartsTheProgram();
    void logLinesHaveTheOrderOfTheStages();
    void unusableHomeEndsTheStart_data();
    void unusableHomeEndsTheStart();
    void blockedSocketNameEndsTheStart();
    void laterInstanceEndsWithZero();
    void directoriesAreCreatedBeforeTheFirstCommandRuns();
    void blockedOrIgnoredSignalsAreRestored_data();
    void blockedOrIgnoredSignalsAreRestored();
    void closedStandardDescriptorsAreOpenedOnTheNullDevice();
    void signalEndsTheProgramInOrder_data();
    void signalEndsTheProgramInOrder();

private:
    void Agree();
    QList<Line> Log() const;
    QStringList Messages() const;
    QString Home() const { return scratch->filePath(QStringLiteral("home")); }
    QString Folder() const { return scratch->filePath(QStringLiteral("tmp")); }

    std::unique_ptr<QTemporaryDir> scratch;
    QProcessEnvironment environment;
};

void TestCommandLine::init()
{
    scratch = std::make_unique<QTemporaryDir>();
    environment = QProcessEnvironment::systemEnvironment();
    environment.remove(QStringLiteral("DISPLAY"));
    const QList<QPair<QString, QString>> folders{
        {QStringLiteral("HOME"), Home()},
        {QStringLiteral("TMPDIR"), Folder()},
        {QStringLiteral("XDG_RUNTIME_DIR"), scratch->filePath(QStringLiteral("run"))}};
    for (const auto& folder : folders) {
        QCOMPARE(mkdir(folder.second.toLocal8Bit().constData(), 0700), 0);
        environment.insert(folder.first, folder.second);
    }
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
}

void TestCommandLine::Agree()
{
    QVERIFY(QDir(Home()).mkdir(NAME));
    QFile settings(Home() + QStringLiteral("/Velodesk/velodesk.conf"));
    QVERIFY(settings.open(QIODevice::WriteOnly));
    settings.write("[VelodeskServer]\nstatement=true\n");
}

QList<Line> TestCommandLine::Log() const
{
    static const QRegularExpression pattern(
        QStringLiteral("^\\[\\d\\d-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d\\.\\d{6}\\] \\[(\\w+)\\] "
                       "\\[(\\w+\\.(?:cpp|h)):\\d+\\] (\\w+): (.*)$"));
    QList<Line> lines;
    QFile file(Home() + QStringLiteral("/Velodesk/log/velodesk.log"));
    if (!file.open(QIODevice::ReadOnly)) {
        return lines;
    }
    const QStringList texts =
        QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'), QString::SkipEmptyParts);
    for (const QString& text : texts) {
        const QRegularExpressionMatch match = pattern.match(text);
        lines.append({match.captured(1), match.captured(2), match.captured(3), match.captured(4)});
    }
    return lines;
}

QStringList TestCommandLine::Messages() const
{
    QStringList messages;
    const QList<Line> lines = Log();
    for (const Line& line : lines) {
        messages.append(line.message);
    }
    return messages;
}

void TestCommandLine::wrongCommandLineIsLoggedOnceWithoutADisplay_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("message");
    const QString number = QStringLiteral("param number error!");
    const QString command = QStringLiteral("command analyze error!");
    const QString analyze = QStringLiteral("param analyze error!");
    const QStringList good{QStringLiteral("1234")};
    QTest::newRow("no argument") << NAME << QStringList() << number;
    QTest::newRow("two arguments") << NAME << (good + good) << number;
    QTest::newRow("three arguments") << NAME << (good + good + good) << number;
    QTest::newRow("number before name") << QStringLiteral("other") << QStringList() << number;
    for (const char* name : {"/opt/apps/com.zelmora.velodesk/files/bin/Velodesk", "./Velodesk", "velodesk",
                             "VELODESK", "Velodesk ", "-Velodesk", "Velodes", ""}) {
        QTest::newRow(qPrintable(QStringLiteral("name '%1'").arg(QLatin1String(name))))
            << QString::fromLatin1(name) << good << command;
    }
    QTest::newRow("name before argument")
        << QStringLiteral("other") << QStringList(QStringLiteral("abc")) << command;
    for (const char* argument : {"abc", "", " ", "-", "+", "- 5", "x12", "--help", "-h", "2147483648",
                                 "-2147483649", "99999999999999999999", "4294967296", "١٢"}) {
        QTest::newRow(qPrintable(QStringLiteral("argument '%1'").arg(QString::fromUtf8(argument))))
            << NAME << QStringList(QString::fromUtf8(argument)) << analyze;
    }
}

void TestCommandLine::wrongCommandLineIsLoggedOnceWithoutADisplay()
{
    QFETCH(QString, name);
    QFETCH(QStringList, arguments);
    QFETCH(QString, message);
    // The program must not construct an application object, which would end the program without a display.
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("xcb"));
    Start start({}, name, arguments, environment, Folder());
    QCOMPARE(start.ExitCode(), 1);
    QCOMPARE(Messages(), QStringList(message));
    QCOMPARE(Log().first().level, QStringLiteral("ERROR"));
    QCOMPARE(Log().first().module, QStringLiteral("VELODESK"));
    QCOMPARE(Log().first().file, QStringLiteral("VeloMain.cpp"));
    // The program creates the log's directory before any check, but not the settings file.
    COMPARE_LISTS(
        QDir(Home() + QStringLiteral("/Velodesk")).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
        QStringList(QStringLiteral("log")));
}

void TestCommandLine::correctCommandLineStartsTheProgram_data()
{
    QTest::addColumn<QString>("argument");
    for (const char* argument : {"1234", "12abc", "-5", " 7", "\t\n7", "+9", "0", "007", "12 34",
                                 "0x99999999", "1.5", "2147483647", "-2147483648"}) {
        QTest::newRow(qPrintable(QStringLiteral("argument '%1'").arg(QLatin1String(argument))))
            << QString::fromLatin1(argument);
    }
}

void TestCommandLine::correctCommandLineStartsTheProgram()
{
    QFETCH(QString, argument);
    Agree();
    Start start({}, NAME, {argument}, environment, Folder());
    QTRY_VERIFY_WITH_TIMEOUT(Messages().contains(MAIN_WINDOW) || !start.IsRunning(), ENDED_MS);
    QVERIFY(start.IsRunning());
    start.Terminate();
    QCOMPARE(Messages().filter(QStringLiteral("error!")), QStringList());
}

void TestCommandLine::logLinesHaveTheOrderOfTheStages()
{
    Agree();
    Start start({}, NAME, {QStringLiteral("1")}, environment, Folder());
    QTRY_VERIFY_WITH_TIMEOUT(Messages().contains(QStringLiteral("AppManager ReAllocResource")), ENDED_MS);
    start.Terminate();
    const QStringList messages = Messages();
    QCOMPARE(messages.at(0),
             QStringLiteral("chmod %1.").arg(Home() + QStringLiteral("/Velodesk//velodesk.conf")));
    // The text depends on the distribution and the compositor.
    QVERIFY2(messages.at(1) == QLatin1String("Use Shadow") ||
                 messages.at(1) == QLatin1String("Don't Use Shadow"),
             qPrintable(messages.at(1)));
    QCOMPARE(messages.at(2), QStringLiteral("filename:VelodeskServer not exist!"));
    QCOMPARE(messages.at(3), MAIN_WINDOW);
    QCOMPARE(messages.at(4), QStringLiteral("AppManager ReAllocResource"));
    const QList<Line> lines = Log();
    QCOMPARE(lines.at(1).level, QStringLiteral("INFO"));
    QCOMPARE(lines.at(3).level, QStringLiteral("INFO"));
    QCOMPARE(messages.filter(QStringLiteral("velodeskd start pid")), QStringList());
}

void TestCommandLine::unusableHomeEndsTheStart_data()
{
    QTest::addColumn<QString>("home");
    QTest::newRow("unset") << QString();
    QTest::newRow("missing") << QStringLiteral("/nonexistent");
    QTest::newRow("a file") << QStringLiteral("/etc/passwd");
}

void TestCommandLine::unusableHomeEndsTheStart()
{
    QFETCH(QString, home);
    if (home.isEmpty()) {
        environment.remove(QStringLiteral("HOME"));
    } else {
        environment.insert(QStringLiteral("HOME"), home);
    }
    // Makes / read-only, as it is for an unprivileged user.
    const QStringList readOnly{QStringLiteral("bwrap"),
                               QStringLiteral("--ro-bind"),
                               QStringLiteral("/"),
                               QStringLiteral("/"),
                               QStringLiteral("--dev-bind"),
                               QStringLiteral("/dev"),
                               QStringLiteral("/dev"),
                               QStringLiteral("--bind"),
                               scratch->path(),
                               scratch->path(),
                               QStringLiteral("--cap-drop"),
                               QStringLiteral("ALL"),
                               QStringLiteral("--die-with-parent")};
    Start start(readOnly, NAME, {QStringLiteral("1")}, environment, Folder());
    QCOMPARE(start.ExitCode(), 1);
    COMPARE_LISTS(QDir(Home()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot), QStringList());
    // The program ends before the check for another instance.
    COMPARE_LISTS(QDir(Folder()).entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot),
                  QStringList());
    QVERIFY(!QFile::exists(QStringLiteral("/Velodesk")));
}

void TestCommandLine::blockedSocketNameEndsTheStart()
{
    Agree();
    const QString here = scratch->filePath(QStringLiteral("here"));
    const QString closed = here + QStringLiteral("/VelodeskServer/closed");
    QVERIFY(QDir().mkpath(closed + QStringLiteral("/a")));
    QCOMPARE(chmod(closed.toLocal8Bit().constData(), 0500), 0);
    const QStringList unprivilegedUser{QStringLiteral("bwrap"),
                                       QStringLiteral("--dev-bind"),
                                       QStringLiteral("/"),
                                       QStringLiteral("/"),
                                       QStringLiteral("--cap-drop"),
                                       QStringLiteral("ALL"),
                                       QStringLiteral("--die-with-parent")};
    Start start(unprivilegedUser, NAME, {QStringLiteral("1")}, environment, here);
    const int exitCode = start.ExitCode();
    QCOMPARE(chmod(closed.toLocal8Bit().constData(), 0700), 0);
    QCOMPARE(exitCode, 1);
    const QList<Line> lines = Log();
    const Line& removal = lines.at(lines.size() - 2);
    QCOMPARE(removal.message, QStringLiteral("RemoveDir dir:VelodeskServer failed"));
    QCOMPARE(removal.level, QStringLiteral("WARNING"));
    QCOMPARE(removal.module, QStringLiteral("UTILS"));
    QCOMPARE(lines.last().message, QStringLiteral("Init application connection failed."));
    QCOMPARE(lines.last().level, QStringLiteral("ERROR"));
    QCOMPARE(lines.last().module, QStringLiteral("VELODESK"));
}

void TestCommandLine::laterInstanceEndsWithZero()
{
    Agree();
    Start first({}, NAME, {QStringLiteral("1")}, environment, Folder());
    QTRY_VERIFY_WITH_TIMEOUT(Messages().contains(MAIN_WINDOW), ENDED_MS);
    Start later({}, NAME, {QStringLiteral("2")}, environment, Folder());
    QCOMPARE(later.ExitCode(), 0);
    QTRY_VERIFY_WITH_TIMEOUT(Messages().contains(QStringLiteral("Get display name failed.")), ENDED_MS);
    QVERIFY(first.IsRunning());
    QStringList modules;
    const QList<Line> lines = Log();
    for (const Line& line : lines) {
        if (line.message == QLatin1String("Application already running.")) {
            QCOMPARE(line.level, QStringLiteral("INFO"));
            modules.append(line.module);
        }
    }
    // SingleApplication logs the other instance, and main() logs the end.
    QCOMPARE(modules, QStringList({QStringLiteral("UTILS"), QStringLiteral("VELODESK")}));
    QCOMPARE(Messages().count(QStringLiteral("Active application.")), 1);
    QCOMPARE(Messages().count(MAIN_WINDOW), 1);
    first.Terminate();
}

void TestCommandLine::directoriesAreCreatedBeforeTheFirstCommandRuns()
{
    // Replaces the first command of a start and records what exists.
    QFile head(Folder() + QStringLiteral("/head"));
    QVERIFY(head.open(QIODevice::WriteOnly));
    head.write("#!/bin/sh\nls \"$HOME\" >>\"$TMPDIR/found\"\n");
    head.close();
    QVERIFY(head.setPermissions(QFile::ReadOwner | QFile::ExeOwner));
    environment.insert(QStringLiteral("PATH"),
                       Folder() + QLatin1Char(':') + environment.value(QStringLiteral("PATH")));
    Start start({}, NAME, {}, environment, Folder());
    QCOMPARE(start.ExitCode(), 1);
    QFile found(Folder() + QStringLiteral("/found"));
    QVERIFY(found.open(QIODevice::ReadOnly));
    QCOMPARE(found.readAll(), QByteArray("Velodesk\n"));
}

void TestCommandLine::blockedOrIgnoredSignalsAreRestored_data()
{
    QTest::addColumn<QString>("option");
    QTest::newRow("blocked") << QStringLiteral("--block-signal");
    QTest::newRow("ignored") << QStringLiteral("--ignore-signal=TERM,INT,HUP,CHLD,PIPE");
}

void TestCommandLine::blockedOrIgnoredSignalsAreRestored()
{
    QFETCH(QString, option);
    Agree();
    Start start({QStringLiteral("env"), option}, NAME, {QStringLiteral("1")}, environment, Folder());
    QTRY_VERIFY_WITH_TIMEOUT(Messages().contains(MAIN_WINDOW), ENDED_MS);
    // A start of a child blocks all signals for a moment.
    QTRY_COMPARE(SignalSet(start.Pid(), "SigBlk:"), 0ULL);
    // Qt itself ignores SIGPIPE, and restores it for children.
    QCOMPARE(SignalSet(start.Pid(), "SigIgn:") & ~SetOf(SIGPIPE), 0ULL);
    QCOMPARE(kill(static_cast<pid_t>(start.Pid()), SIGTERM), 0);
    QCOMPARE(start.ExitCode(), 0);
}

void TestCommandLine::closedStandardDescriptorsAreOpenedOnTheNullDevice()
{
    Agree();
    const QStringList closed{QStringLiteral("bash"), QStringLiteral("-c"),
                             QStringLiteral("exec \"$0\" \"$@\" <&- >&- 2>&-")};
    Start start(closed, NAME, {QStringLiteral("1")}, environment, Folder());
    QTRY_VERIFY_WITH_TIMEOUT(Messages().contains(MAIN_WINDOW), ENDED_MS);
    for (int number = 0; number < 3; ++number) {
        QCOMPARE(QFile::symLinkTarget(QStringLiteral("/proc/%1/fd/%2").arg(start.Pid()).arg(number)),
                 QStringLiteral("/dev/null"));
    }
    start.Terminate();
}

void TestCommandLine::signalEndsTheProgramInOrder_data()
{
    QTest::addColumn<int>("signal");
    QTest::addColumn<bool>("agreed");
    QTest::newRow("SIGTERM") << SIGTERM << true;
    QTest::newRow("SIGINT") << SIGINT << true;
    QTest::newRow("SIGHUP") << SIGHUP << true;
    QTest::newRow("SIGTERM during the agreement") << SIGTERM << false;
}

void TestCommandLine::signalEndsTheProgramInOrder()
{
    QFETCH(int, signal);
    QFETCH(bool, agreed);
    if (agreed) {
        Agree();
    }
    const QString socket = Folder() + QStringLiteral("/VelodeskServer");
    Start start({}, NAME, {QStringLiteral("1")}, environment, Folder());
    QTRY_VERIFY_WITH_TIMEOUT(agreed ? Messages().contains(MAIN_WINDOW) : QFile::exists(socket), ENDED_MS);
    // The program installs the handlers after it listens on the socket and before it shows a window.
    QTRY_VERIFY((SignalSet(start.Pid(), "SigCgt:") & SetOf(SIGTERM)) != 0);
    QCOMPARE(kill(static_cast<pid_t>(start.Pid()), signal), 0);
    QCOMPARE(start.ExitCode(), 0);
    QCOMPARE(Messages().contains(QStringLiteral("stop app[0]")), agreed);
    QCOMPARE(Messages().filter(QStringLiteral("exit")), QStringList());
    QVERIFY(!QFile::exists(socket));
}

QTEST_GUILESS_MAIN(TestCommandLine)
#include "TestCommandLine.moc"
