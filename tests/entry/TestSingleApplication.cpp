#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QLocalSocket>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>
#include <QWidget>
#include <cstdio>
#include <cstring>
#include <memory>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>
#include <vector>

#include "RootListener.h"
#include "entry/RawxWindowOpt.h"
#include "entry/SingleApplication.h"
#include "support/CapturedLog.h"
#include "support/Files.h"
#include "support/Sandbox.h"

namespace {
const QString UTILS = QStringLiteral("UTILS");
const QString INFO = QStringLiteral("INFO");
const QString WARNING = QStringLiteral("WARNING");
const QString ERROR = QStringLiteral("ERROR");
const QString RUNNING = QStringLiteral("Application already running.");
const QString ACTIVE = QStringLiteral("Active application.");
constexpr char INSTANCE[] = "--instance";
constexpr int ENDED_MS = 10000;

class OpenApplication : public SingleApplication
{
public:
    /// Gives access to QObject::sender(), the sender of the running slot.
    static auto Sender() { return &OpenApplication::sender; }
};

/// A widget that calls a function when its native window is created.
class WinIdObserver : public QWidget
{
public:
    explicit WinIdObserver(std::function<void()> function) : onWinIdChange(std::move(function)) {}

protected:
    bool event(QEvent* event) override
    {
        if (event->type() == QEvent::WinIdChange) {
            onWinIdChange();
        }
        return QWidget::event(event);
    }

private:
    std::function<void()> onWinIdChange;
};

/// A socket without Qt, for a client or a server that does not follow the protocol.
class RawSocket
{
public:
    explicit RawSocket(const QString& path, int flags = 0) : fd(socket(AF_UNIX, SOCK_STREAM | flags, 0))
    {
        address.sun_family = AF_UNIX;
        const QByteArray bytes = path.toLocal8Bit();
        std::memcpy(address.sun_path, bytes.constData(), static_cast<std::size_t>(bytes.size()));
    }
    ~RawSocket() { close(fd); }
    RawSocket(const RawSocket&) = delete;
    RawSocket& operator=(const RawSocket&) = delete;

    bool Listen(int backlog) const
    {
        return bind(fd, Address(), sizeof(address)) == 0 && listen(fd, backlog) == 0;
    }
    bool Connect() const { return connect(fd, Address(), sizeof(address)) == 0; }

private:
    const sockaddr* Address() const { return reinterpret_cast<const sockaddr*>(&address); }

    int fd;
    sockaddr_un address{};
};

/// Runs as another instance: calls InitLocalConnect(), prints "result running" and the log lines, and ends.
int RunInstance(int argc, char** argv)
{
    const CapturedLog log;
    SingleApplication application(argc, argv);
    application.SetServerName(argv[2]);
    const int result = application.InitLocalConnect();
    std::printf("%d %d\n", result, application.IsRunning() ? 1 : 0);
    const QList<CapturedLog::Line> lines = log.Lines();
    for (const CapturedLog::Line& line : lines) {
        std::printf("%s %s: %s\n", qPrintable(line.level), qPrintable(line.module), qPrintable(line.message));
    }
    return 0;
}
} // namespace

class TestSingleApplication : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void firstInstanceListens();
    void defaultSocketNameIsVelodeskServer();
    void laterInstanceConnectsAndDoesNotListen();
    void endedInstanceIsNotReportedAsRunning();
    void blockingEntryIsRemoved_data();
    void blockingEntryIsRemoved();
    void entryThatDoesNotBlockIsKept_data();
    void entryThatDoesNotBlockIsKept();
    void linkToADirectoryEmptiesItAndBlocksTheStart();
    void undeletableDirectoryBlocksTheStart();
    void staleSocketIsReplaced();
    void socketNameThatRemainsInUseFails();
    void otherListenErrorSucceeds();
    void serverThatNeverAcceptsCountsAsNotRunning();
    void connectionWithoutAWindowRaisesNothing();
    void connectionRaisesTheWindow();
    void lastSetWindowIsRaised();
    void missingDisplayIsOnlyLogged_data();
    void missingDisplayIsOnlyLogged();
    void silentClientDelaysTheServerByOneSecond();
    void connectionSlotFailsWithoutAPendingConnection();
    void pendingConnectionIsAccepted();
    void serverStopsListeningWithItsObject();
    void activationMessageContainsTheGivenWindow();

private:
    /// Creates an application that listens on this test's socket.
    void Start();
    QProcess& StartInstance();
    QString SocketPath() const { return QDir::tempPath() + QLatin1Char('/') + name; }
    QString Blocker() const { return directory->filePath(name); }

    int argc = 1;
    char program[9] = "Velodesk";
    char* argv[2] = {program, nullptr};
    QString name;
    QByteArray display;
    QByteArray temporary;
    QString before;
    std::unique_ptr<QTemporaryDir> directory;
    std::unique_ptr<CapturedLog> log;
    std::unique_ptr<SingleApplication> application;
    std::unique_ptr<QProcess> instance;
};

void TestSingleApplication::init()
{
    name = QString::fromLatin1(QTest::currentTestFunction());
    display = qgetenv("DISPLAY");
    temporary = qgetenv("TMPDIR");
    before = QDir::currentPath();
    directory = std::make_unique<QTemporaryDir>();
    QVERIFY(QDir::setCurrent(directory->path()));
    log = std::make_unique<CapturedLog>();
    application = std::make_unique<SingleApplication>(argc, argv);
    application->SetServerName(name.toStdString());
    log->Clear();
}

void TestSingleApplication::cleanup()
{
    instance.reset();
    application.reset();
    log.reset();
    QDir::setCurrent(before);
    directory.reset();
    qputenv("DISPLAY", display);
    qputenv("TMPDIR", temporary);
    QFile::remove(SocketPath());
}

void TestSingleApplication::Start()
{
    QCOMPARE(application->InitLocalConnect(), 0);
    QVERIFY(!application->IsRunning());
    log->Clear();
}

QProcess& TestSingleApplication::StartInstance()
{
    instance = std::make_unique<QProcess>();
    instance->start(QCoreApplication::applicationFilePath(), {QLatin1String(INSTANCE), name});
    return *instance;
}

void TestSingleApplication::firstInstanceListens()
{
    QVERIFY(!application->IsRunning());
    QCOMPARE(application->InitLocalConnect(), 0);
    QVERIFY(!application->IsRunning());
    const QString looked = QStringLiteral("filename:%1 not exist!").arg(name);
    COMPARE_LISTS(log->Messages(), QStringList(looked));
    QVERIFY(log->Contains(WARNING, UTILS, looked));
    QLocalSocket socket;
    socket.connectToServer(name);
    QVERIFY(socket.waitForConnected());
    QVERIFY(QFileInfo::exists(SocketPath()));
}

void TestSingleApplication::defaultSocketNameIsVelodeskServer()
{
    application.reset();
    name = QStringLiteral("VelodeskServer");
    application = std::make_unique<SingleApplication>(argc, argv);
    QCOMPARE(application->InitLocalConnect(), 0);
    QLocalSocket socket;
    socket.connectToServer(QStringLiteral("VelodeskServer"));
    QVERIFY(socket.waitForConnected());
}

void TestSingleApplication::laterInstanceConnectsAndDoesNotListen()
{
    Start();
    QProcess& later = StartInstance();
    QTRY_COMPARE_WITH_TIMEOUT(later.state(), QProcess::NotRunning, ENDED_MS);
    QCOMPARE(
        QString::fromUtf8(later.readAllStandardOutput()),
        QStringLiteral("0 1\nWARNING UTILS: filename:%1 not exist!\nINFO UTILS: %2\n").arg(name, RUNNING));
    QTRY_COMPARE(log->Messages(), QStringList(ACTIVE));
    QVERIFY(log->Contains(INFO, UTILS, ACTIVE));
    QVERIFY(!application->IsRunning());
    // The first instance still runs.
    StartInstance();
    QTRY_COMPARE_WITH_TIMEOUT(instance->state(), QProcess::NotRunning, ENDED_MS);
    QTRY_COMPARE(log->Count(ACTIVE), 2);
}

void TestSingleApplication::endedInstanceIsNotReportedAsRunning()
{
    {
        const RawSocket other(SocketPath());
        QVERIFY(other.Listen(1));
        QCOMPARE(application->InitLocalConnect(), 0);
        QVERIFY(application->IsRunning());
    }
    QCOMPARE(application->InitLocalConnect(), 0);
    QVERIFY(!application->IsRunning());
}

void TestSingleApplication::blockingEntryIsRemoved_data()
{
    QTest::addColumn<int>("kind");
    QTest::newRow("link to a file") << 0;
    QTest::newRow("empty directory") << 1;
    QTest::newRow("directory with content") << 2;
}

void TestSingleApplication::blockingEntryIsRemoved()
{
    QFETCH(int, kind);
    const QString target = directory->filePath(QStringLiteral("target"));
    WriteAll(target, "x");
    if (kind == 0) {
        QVERIFY(QFile::link(target, Blocker()));
    } else {
        QVERIFY(QDir().mkdir(Blocker()));
    }
    if (kind == 2) {
        QVERIFY(QDir(Blocker()).mkpath(QStringLiteral("a/b")));
        WriteAll(Blocker() + QStringLiteral("/a/b/file"), "x");
        QVERIFY(QFile::link(target, Blocker() + QStringLiteral("/a/link")));
        QVERIFY(QFile::link(directory->path(), Blocker() + QStringLiteral("/up")));
    }
    QCOMPARE(application->InitLocalConnect(), 0);
    QVERIFY(!QFileInfo::exists(Blocker()) && !QFileInfo(Blocker()).isSymLink());
    QVERIFY(QFileInfo::exists(target));
    const QString link = QStringLiteral("readlink filename:%1 exist!").arg(name);
    COMPARE_LISTS(log->Messages(),
                  QStringList(kind == 0 ? link : QStringLiteral("filename:%1 not exist!").arg(name)));
}

void TestSingleApplication::entryThatDoesNotBlockIsKept_data()
{
    QTest::addColumn<bool>("link");
    QTest::addColumn<QString>("line");
    QTest::newRow("plain file") << false << QStringLiteral("readlink filename:%1 not exist!");
    QTest::newRow("dangling link") << true << QStringLiteral("filename:%1 not exist!");
}

void TestSingleApplication::entryThatDoesNotBlockIsKept()
{
    QFETCH(bool, link);
    QFETCH(QString, line);
    if (link) {
        QVERIFY(QFile::link(QStringLiteral("/nonexistent"), Blocker()));
    } else {
        WriteAll(Blocker(), "x");
    }
    QCOMPARE(application->InitLocalConnect(), 0);
    QCOMPARE(QFileInfo(Blocker()).isSymLink(), link);
    QCOMPARE(QFileInfo::exists(Blocker()), !link);
    COMPARE_LISTS(log->Messages(), QStringList(line.arg(name)));
}

void TestSingleApplication::linkToADirectoryEmptiesItAndBlocksTheStart()
{
    const QDir here(directory->path());
    QVERIFY(here.mkdir(QStringLiteral("target")));
    WriteAll(here.filePath(QStringLiteral("target/file")), "x");
    QVERIFY(QFile::link(here.filePath(QStringLiteral("target")), Blocker()));
    QCOMPARE(application->InitLocalConnect(), -1);
    QVERIFY(log->Contains(WARNING, UTILS, QStringLiteral("RemoveDir dir:%1 failed").arg(name)));
    QVERIFY(QFileInfo(Blocker()).isSymLink());
    QVERIFY(here.exists(QStringLiteral("target")));
    QVERIFY(!here.exists(QStringLiteral("target/file")));
}

void TestSingleApplication::undeletableDirectoryBlocksTheStart()
{
    const QString closed = Blocker() + QStringLiteral("/closed");
    QVERIFY(QDir().mkpath(closed));
    WriteAll(closed + QStringLiteral("/file"), "x");
    QCOMPARE(chmod(closed.toLocal8Bit().constData(), 0500), 0);
    const int result = application->InitLocalConnect();
    QCOMPARE(chmod(closed.toLocal8Bit().constData(), 0700), 0);
    QCOMPARE(result, -1);
    QVERIFY(!application->IsRunning());
    const QString line = QStringLiteral("RemoveDir dir:%1 failed").arg(name);
    QVERIFY(log->Contains(WARNING, UTILS, line));
    QCOMPARE(log->Messages().last(), line);
    QVERIFY(QFileInfo::exists(closed + QStringLiteral("/file")));
    QVERIFY(!QFileInfo::exists(SocketPath()));
}

void TestSingleApplication::staleSocketIsReplaced()
{
    {
        const RawSocket crashed(SocketPath());
        QVERIFY(crashed.Listen(1));
    }
    QVERIFY(QFileInfo::exists(SocketPath()));
    Start();
    QProcess& later = StartInstance();
    QTRY_COMPARE_WITH_TIMEOUT(later.state(), QProcess::NotRunning, ENDED_MS);
    QVERIFY(later.readAllStandardOutput().startsWith("0 1\n"));
}

void TestSingleApplication::socketNameThatRemainsInUseFails()
{
    QVERIFY(QDir().mkdir(SocketPath()));
    const int result = application->InitLocalConnect();
    QVERIFY(QDir().rmdir(SocketPath()));
    QCOMPARE(result, -1);
    QVERIFY(!application->IsRunning());
    const QString line = QStringLiteral("Start localserver failed.");
    QVERIFY(log->Contains(ERROR, UTILS, line));
    QCOMPARE(log->Messages().last(), line);
}

void TestSingleApplication::otherListenErrorSucceeds()
{
    const QByteArray closed = directory->filePath(QStringLiteral("closed")).toLocal8Bit();
    QCOMPARE(mkdir(closed.constData(), 0500), 0);
    qputenv("TMPDIR", closed);
    QCOMPARE(application->InitLocalConnect(), 0);
    QVERIFY(!application->IsRunning());
    COMPARE_LISTS(log->Messages(), QStringList(QStringLiteral("filename:%1 not exist!").arg(name)));
    QLocalSocket socket;
    socket.connectToServer(name);
    QVERIFY(!socket.waitForConnected());
}

void TestSingleApplication::serverThatNeverAcceptsCountsAsNotRunning()
{
    const RawSocket fullServer(SocketPath());
    QVERIFY(fullServer.Listen(0));
    std::vector<std::unique_ptr<RawSocket>> queue;
    do {
        queue.push_back(std::make_unique<RawSocket>(SocketPath(), SOCK_NONBLOCK));
    } while (queue.back()->Connect());
    QElapsedTimer timer;
    timer.start();
    QCOMPARE(application->InitLocalConnect(), 0);
    QVERIFY2(timer.elapsed() >= 450, qPrintable(QString::number(timer.elapsed())));
    QVERIFY(!application->IsRunning());
    QCOMPARE(log->Count(RUNNING), 0);
    // This instance listens on the socket now.
    QProcess& later = StartInstance();
    QTRY_COMPARE_WITH_TIMEOUT(later.state(), QProcess::NotRunning, ENDED_MS);
    QTRY_COMPARE(log->Count(ACTIVE), 1);
}

void TestSingleApplication::connectionWithoutAWindowRaisesNothing()
{
    Start();
    RootListener root;
    application->ActivateWindow();
    const RawSocket peer(SocketPath());
    QVERIFY(peer.Connect());
    QTRY_COMPARE_WITH_TIMEOUT(log->Messages(), QStringList(ACTIVE), ENDED_MS);
    QCOMPARE(root.Take().size(), 0);
}

void TestSingleApplication::connectionRaisesTheWindow()
{
    Start();
    const QWidget window;
    const WId id = window.winId();
    application->SetMainWindow(window);
    RootListener root;
    QProcess& later = StartInstance();
    QTRY_COMPARE_WITH_TIMEOUT(later.state(), QProcess::NotRunning, ENDED_MS);
    QTRY_COMPARE(log->Messages(), QStringList(ACTIVE));
    const QList<RootListener::Message> messages = root.Take();
    QCOMPARE(messages.size(), 1);
    const RootListener::Message& message = messages.first();
    QVERIFY(message.sentByAClient);
    QCOMPARE(message.window, static_cast<unsigned long>(id));
    QCOMPARE(message.type, QByteArray("_NET_ACTIVE_WINDOW"));
    QCOMPARE(message.format, 32);
    QCOMPARE(message.data, QList<long>({2, 0, 0, 0, 0}));
}

void TestSingleApplication::lastSetWindowIsRaised()
{
    const QWidget agreement;
    const QWidget mainWindow;
    application->SetMainWindow(agreement);
    application->SetMainWindow(mainWindow);
    RootListener root;
    application->ActivateWindow();
    application->SetMainWindow(agreement);
    application->ActivateWindow();
    const QList<RootListener::Message> messages = root.Take();
    QCOMPARE(messages.size(), 2);
    QCOMPARE(messages.at(0).window, static_cast<unsigned long>(mainWindow.winId()));
    QCOMPARE(messages.at(1).window, static_cast<unsigned long>(agreement.winId()));
}

void TestSingleApplication::missingDisplayIsOnlyLogged_data()
{
    QTest::addColumn<QByteArray>("value");
    QTest::addColumn<QString>("line");
    QTest::newRow("unset") << QByteArray() << QStringLiteral("Get display name failed.");
    QTest::newRow("unreachable") << QByteArray("nowhere:77") << QStringLiteral("Get window display failed.");
}

void TestSingleApplication::missingDisplayIsOnlyLogged()
{
    QFETCH(QByteArray, value);
    QFETCH(QString, line);
    Start();
    const QWidget window;
    application->SetMainWindow(window);
    RootListener root;
    if (value.isEmpty()) {
        qunsetenv("DISPLAY");
    } else {
        qputenv("DISPLAY", value);
    }
    for (int count = 1; count <= 2; ++count) {
        {
            const RawSocket peer(SocketPath());
            QVERIFY(peer.Connect());
        }
        QTRY_COMPARE_WITH_TIMEOUT(log->Count(line), count, ENDED_MS);
        QCOMPARE(log->Count(ACTIVE), count);
    }
    QVERIFY(log->Contains(ERROR, UTILS, line));
    COMPARE_LISTS(log->Messages().mid(0, 2), QStringList({ACTIVE, line}));
    QCOMPARE(root.Take().size(), 0);
}

void TestSingleApplication::silentClientDelaysTheServerByOneSecond()
{
    Start();
    QElapsedTimer timer;
    {
        const RawSocket peer(SocketPath());
        QVERIFY(peer.Connect());
        timer.start();
        QTRY_COMPARE_WITH_TIMEOUT(log->Count(ACTIVE), 1, ENDED_MS);
        QVERIFY2(timer.elapsed() >= 950, qPrintable(QString::number(timer.elapsed())));
    }
    {
        const RawSocket peer(SocketPath());
        QVERIFY(peer.Connect());
    }
    timer.start();
    QTRY_COMPARE_WITH_TIMEOUT(log->Count(ACTIVE), 2, ENDED_MS);
    QVERIFY2(timer.elapsed() < 900, qPrintable(QString::number(timer.elapsed())));
}

void TestSingleApplication::connectionSlotFailsWithoutAPendingConnection()
{
    Start();
    int result = 0;
    QVERIFY(QMetaObject::invokeMethod(application.get(), "NewAppConnected", Q_RETURN_ARG(int, result)));
    QCOMPARE(result, -1);
    COMPARE_LISTS(log->Messages(), QStringList(QStringLiteral("No connection.")));
    QVERIFY(log->Contains(ERROR, UTILS, QStringLiteral("No connection.")));
}

void TestSingleApplication::pendingConnectionIsAccepted()
{
    Start();
    QObject* server = nullptr;
    WinIdObserver window([this, &server] { server = ((*application).*OpenApplication::Sender())(); });
    application->SetMainWindow(window);
    {
        const RawSocket peer(SocketPath());
        QVERIFY(peer.Connect());
    }
    QTRY_COMPARE_WITH_TIMEOUT(log->Count(ACTIVE), 1, ENDED_MS);
    auto* listening = qobject_cast<QLocalServer*>(server);
    QVERIFY(listening != nullptr);
    // Only an explicit call accepts the next connection.
    disconnect(listening, nullptr, application.get(), nullptr);
    {
        const RawSocket peer(SocketPath());
        QVERIFY(peer.Connect());
    }
    QTRY_VERIFY(listening->hasPendingConnections());
    int result = -1;
    QVERIFY(QMetaObject::invokeMethod(application.get(), "NewAppConnected", Q_RETURN_ARG(int, result)));
    QCOMPARE(result, 0);
    QCOMPARE(log->Count(ACTIVE), 2);
}

void TestSingleApplication::serverStopsListeningWithItsObject()
{
    Start();
    application.reset();
    QVERIFY(!QFileInfo::exists(SocketPath()));
}

void TestSingleApplication::activationMessageContainsTheGivenWindow()
{
    RootListener root;
    const auto open = [] {
        return QDir(QStringLiteral("/proc/self/fd")).entryList().size();
    };
    const int descriptors = open();
    RawxWindowOpt::ActivexWindow(0x1234567);
    // A thread of Qt can open a descriptor temporarily.
    QTRY_VERIFY(open() <= descriptors);
    const QList<RootListener::Message> messages = root.Take();
    QCOMPARE(messages.size(), 1);
    QCOMPARE(messages.first().window, 0x1234567UL);
    COMPARE_LISTS(log->Messages(), QStringList());
}

int main(int argc, char** argv)
{
    EnterSandbox(argc, argv);
    if (argc == 3 && qstrcmp(argv[1], INSTANCE) == 0) {
        return RunInstance(argc, argv);
    }
    TestSingleApplication test;
    return QTest::qExec(&test, argc, argv);
}
#include "TestSingleApplication.moc"
