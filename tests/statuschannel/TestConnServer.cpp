#include <QLocalServer>
#include <QLocalSocket>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <malloc.h>
#include <memory>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <vector>

#include "statuschannel/ConnServer.h"
#include "support/CapturedLog.h"

namespace {
const QString UTILS = QStringLiteral("UTILS");

/// A server with a separate socket and a spy for each signal.
struct Channel
{
    Channel() : path(directory.filePath(QStringLiteral("status"))), server(path.toStdString(), nullptr) {}

    /// Returns the numbers of signals "inited running stopped" since the last call.
    QString Emitted()
    {
        const QString emitted =
            QStringLiteral("%1 %2 %3").arg(inited.count()).arg(running.count()).arg(stopped.count());
        inited.clear();
        running.clear();
        stopped.clear();
        return emitted;
    }

    QTemporaryDir directory;
    QString path;
    ConnServer server;
    QSignalSpy inited{&server, &ConnServer::AppInited};
    QSignalSpy running{&server, &ConnServer::AppRunning};
    QSignalSpy stopped{&server, &ConnServer::AppStoped};
};

/// Clients in the same process. They do not use QLocalSocket, because the test measures allocated memory.
class RawClients
{
public:
    RawClients(const QString& path, int count, const QByteArray& message)
    {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        qstrncpy(address.sun_path, QFile::encodeName(path).constData(), sizeof address.sun_path);
        for (int i = 0; i < count; ++i) {
            const int client = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
            clients.push_back(client);
            areConnected =
                areConnected && client >= 0 &&
                connect(client, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 &&
                write(client, message.constData(), static_cast<size_t>(message.size())) == message.size();
            // Let the server accept the connection, so that its queue does not become full.
            QCoreApplication::processEvents();
        }
    }
    ~RawClients()
    {
        for (const int client : clients) {
            close(client);
        }
    }
    RawClients(const RawClients&) = delete;
    RawClients& operator=(const RawClients&) = delete;

    bool AreConnected() const { return areConnected; }

private:
    std::vector<int> clients;
    bool areConnected = true;
};

/// Returns the allocated bytes, including the allocator's overhead.
std::size_t Allocated()
{
#if __GLIBC_PREREQ(2, 33)
    const auto info = mallinfo2();
#else
    const auto info = mallinfo();
#endif
    return static_cast<std::size_t>(info.uordblks) + static_cast<std::size_t>(info.hblkhd);
}

const QString NOTHING = QStringLiteral("0 0 0");
const QString INITED = QStringLiteral("1 0 0");
const QString RUNNING = QStringLiteral("0 1 0");
const QString STOPPED = QStringLiteral("0 0 1");
} // namespace

class TestConnServer : public QObject
{
    Q_OBJECT

private slots:
    void init() { log = std::make_unique<CapturedLog>(); }
    void cleanup() { log.reset(); }

    void everyTransitionEmitsItsSignal_data();
    void everyTransitionEmitsItsSignal();
    void invalidMessageIsLoggedAndDropped_data();
    void invalidMessageIsLoggedAndDropped();
    void otherMembersAreIgnored();
    void unknownStatusChangesNothing_data();
    void unknownStatusChangesNothing();
    void repeatsEmitNothing();
    void clientIsServedAndItsDisconnectIsLogged();
    void twoMessagesInOneReadAreBothLost();
    void messageInTwoReadsIsRejectedTwice();
    void twoClientsShareOneStatus();
    void statusIsKeptAfterADisconnect();
    void staleSocketIsReplaced();
    void socketOfAListeningServerIsReplaced();
    void failureOfTheSecondListenIsReported();
    void otherListenErrorIsIgnored();
    void newConnectionSlotFailsWithoutAPendingConnection();
    void pendingConnectionIsAccepted();
    void receivingWithoutASenderIsLogged();
    void disconnectOfAnotherSenderIsOnlyLogged();
    void acceptedSocketIsDestroyedWithTheServer();
    void messageOfAClientThatHasDisconnectedIsRead();
    void closedConnectionKeepsAtMostFourKibibytes();

private:
    std::unique_ptr<CapturedLog> log;
};

void TestConnServer::everyTransitionEmitsItsSignal_data()
{
    QTest::addColumn<QByteArray>("before");
    QTest::addColumn<QByteArray>("message");
    QTest::addColumn<QString>("emitted");
    const QByteArray init(R"({"status":"init"})");
    const QByteArray run(R"({"status":"run"})");
    const QByteArray stop(R"({"status":"stop"})");
    QTest::newRow("empty-init") << QByteArray() << init << INITED;
    QTest::newRow("empty-run") << QByteArray() << run << RUNNING;
    QTest::newRow("empty-stop") << QByteArray() << stop << STOPPED;
    QTest::newRow("init-init") << init << init << NOTHING;
    QTest::newRow("init-run") << init << run << RUNNING;
    QTest::newRow("init-stop") << init << stop << STOPPED;
    QTest::newRow("run-init") << run << init << INITED;
    QTest::newRow("run-run") << run << run << NOTHING;
    QTest::newRow("run-stop") << run << stop << STOPPED;
    QTest::newRow("stop-init") << stop << init << INITED;
    QTest::newRow("stop-run") << stop << run << RUNNING;
    QTest::newRow("stop-stop") << stop << stop << NOTHING;
}

void TestConnServer::everyTransitionEmitsItsSignal()
{
    QFETCH(QByteArray, before);
    QFETCH(QByteArray, message);
    QFETCH(QString, emitted);
    Channel channel;
    if (!before.isEmpty()) {
        QCOMPARE(channel.server.ParseMsg(before), 0);
        channel.Emitted();
    }
    QCOMPARE(channel.server.ParseMsg(message), 0);
    QCOMPARE(channel.Emitted(), emitted);
    COMPARE_LISTS(log->Messages(), QStringList());
}

void TestConnServer::invalidMessageIsLoggedAndDropped_data()
{
    QTest::addColumn<QByteArray>("message");
    QTest::addColumn<QString>("line");
    const QString wrong = QStringLiteral("Message error");
    QTest::newRow("no object") << QByteArray("[1]") << wrong;
    QTest::newRow("no status") << QByteArray("{}") << wrong;
    QTest::newRow("number") << QByteArray(R"({"status":1})") << wrong;
    QTest::newRow("null") << QByteArray(R"({"status":null})") << wrong;
    QTest::newRow("object") << QByteArray(R"({"status":{}})") << wrong;
    QTest::newRow("empty") << QByteArray() << QStringLiteral("Json parse error illegal value");
    QTest::newRow("text") << QByteArray("run") << QStringLiteral("Json parse error illegal value");
    QTest::newRow("incomplete") << QByteArray(R"({"status":"ru)")
                                << QStringLiteral("Json parse error unterminated string");
    QTest::newRow("two messages") << QByteArray(R"({"status":"init"}{"status":"run"})")
                                  << QStringLiteral("Json parse error garbage at the end of the document");
}

void TestConnServer::invalidMessageIsLoggedAndDropped()
{
    QFETCH(QByteArray, message);
    QFETCH(QString, line);
    Channel channel;
    QCOMPARE(channel.server.ParseMsg(message), -1);
    QCOMPARE(channel.Emitted(), NOTHING);
    COMPARE_LISTS(log->Messages(), QStringList(line));
    QVERIFY(log->Contains(QStringLiteral("ERROR"), UTILS, line));
    // The stored status is still empty, so "run" is a change.
    QCOMPARE(channel.server.ParseMsg(R"({"status":"run"})"), 0);
    QCOMPARE(channel.Emitted(), RUNNING);
}

void TestConnServer::otherMembersAreIgnored()
{
    Channel channel;
    QCOMPARE(channel.server.ParseMsg(R"({"status":"run","x":1})"), 0);
    QCOMPARE(channel.Emitted(), RUNNING);
}

void TestConnServer::unknownStatusChangesNothing_data()
{
    QTest::addColumn<QByteArray>("message");
    QTest::newRow("capitals") << QByteArray(R"({"status":"RUN"})");
    QTest::newRow("unknown") << QByteArray(R"({"status":"pause"})");
    QTest::newRow("trailing space") << QByteArray(R"({"status":"run "})");
}

void TestConnServer::unknownStatusChangesNothing()
{
    QFETCH(QByteArray, message);
    Channel channel;
    channel.server.ParseMsg(R"({"status":"init"})");
    channel.Emitted();
    QCOMPARE(channel.server.ParseMsg(message), 0);
    QCOMPARE(channel.server.ParseMsg(R"({"status":"init"})"), 0);
    QCOMPARE(channel.Emitted(), NOTHING);
    COMPARE_LISTS(log->Messages(), QStringList());
}

void TestConnServer::repeatsEmitNothing()
{
    Channel channel;
    for (int i = 0; i < 5; ++i) {
        channel.server.ParseMsg(R"({"status":"run"})");
    }
    QCOMPARE(channel.Emitted(), RUNNING);
    channel.server.ParseMsg(R"({"status":"stop"})");
    channel.server.ParseMsg(R"({"status":"run"})");
    QCOMPARE(channel.Emitted(), QStringLiteral("0 1 1"));
}

void TestConnServer::clientIsServedAndItsDisconnectIsLogged()
{
    Channel channel;
    QCOMPARE(channel.server.ServerStart(), 0);
    QLocalSocket client;
    client.connectToServer(channel.path);
    QTRY_VERIFY(log->Contains(QStringLiteral("INFO"), UTILS, QStringLiteral("New application connected.")));
    client.write(R"({"status":"run"})");
    QVERIFY(channel.running.wait());
    client.disconnectFromServer();
    QTRY_VERIFY(log->Contains(QStringLiteral("INFO"), UTILS, QStringLiteral("App close the connect.")));
    QCOMPARE(channel.Emitted(), RUNNING);
}

void TestConnServer::twoMessagesInOneReadAreBothLost()
{
    Channel channel;
    channel.server.ServerStart();
    QLocalSocket client;
    client.connectToServer(channel.path);
    client.write(R"({"status":"init"}{"status":"run"})");
    QTRY_COMPARE(log->Count(QStringLiteral("Json parse error garbage at the end of the document")), 1);
    QCOMPARE(channel.Emitted(), NOTHING);
    client.write(R"({"status":"run"})");
    QVERIFY(channel.running.wait());
    QCOMPARE(channel.Emitted(), RUNNING);
}

void TestConnServer::messageInTwoReadsIsRejectedTwice()
{
    Channel channel;
    channel.server.ServerStart();
    QLocalSocket client;
    client.connectToServer(channel.path);
    client.write(R"({"status":)");
    QTRY_COMPARE(log->Messages().filter(QStringLiteral("Json parse error")).size(), 1);
    client.write(R"("run"})");
    QTRY_COMPARE(log->Messages().filter(QStringLiteral("Json parse error")).size(), 2);
    QCOMPARE(channel.Emitted(), NOTHING);
}

void TestConnServer::twoClientsShareOneStatus()
{
    Channel channel;
    channel.server.ServerStart();
    QLocalSocket first;
    QLocalSocket second;
    first.connectToServer(channel.path);
    second.connectToServer(channel.path);
    for (int i = 0; i < 3; ++i) {
        first.write(R"({"status":"run"})");
        QVERIFY(channel.running.wait());
        second.write(R"({"status":"stop"})");
        QVERIFY(channel.stopped.wait());
    }
    QCOMPARE(channel.Emitted(), QStringLiteral("0 3 3"));
}

void TestConnServer::statusIsKeptAfterADisconnect()
{
    Channel channel;
    channel.server.ServerStart();
    {
        QLocalSocket client;
        client.connectToServer(channel.path);
        client.write(R"({"status":"init"})");
        QVERIFY(channel.inited.wait());
    }
    QTRY_COMPARE(log->Count(QStringLiteral("App close the connect.")), 1);
    QLocalSocket next;
    next.connectToServer(channel.path);
    next.write(R"({"status":"init"})");
    next.flush();
    QTRY_COMPARE(log->Count(QStringLiteral("New application connected.")), 2);
    next.write(" ");
    QTRY_VERIFY(!log->Messages().filter(QStringLiteral("Json parse error")).isEmpty());
    QCOMPARE(channel.Emitted(), INITED);
}

void TestConnServer::staleSocketIsReplaced()
{
    Channel channel;
    {
        QLocalServer crashed;
        QVERIFY(crashed.listen(channel.path));
        // After a crash, the socket's file remains. QLocalServer removes its file, so the test renames it.
        QVERIFY(QFile::rename(channel.path, channel.path + QStringLiteral(".kept")));
    }
    QVERIFY(QFile::rename(channel.path + QStringLiteral(".kept"), channel.path));
    QCOMPARE(channel.server.ServerStart(), 0);
    QLocalSocket client;
    client.connectToServer(channel.path);
    QVERIFY(client.waitForConnected());
    QCOMPARE(log->Count(QStringLiteral("Start localserver failed.")), 0);
}

void TestConnServer::socketOfAListeningServerIsReplaced()
{
    Channel channel;
    QLocalServer other;
    QVERIFY(other.listen(channel.path));
    QCOMPARE(channel.server.ServerStart(), 0);
    QLocalSocket client;
    client.connectToServer(channel.path);
    client.write(R"({"status":"run"})");
    QVERIFY(channel.running.wait());
}

void TestConnServer::failureOfTheSecondListenIsReported()
{
    // The name is a directory that is not empty: it is in use at the first attempt, and the server cannot
    // remove it before the second.
    Channel channel;
    QVERIFY(QDir(channel.directory.path()).mkpath(QStringLiteral("status/content")));
    QCOMPARE(channel.server.ServerStart(), -1);
    QVERIFY(log->Contains(QStringLiteral("ERROR"), UTILS, QStringLiteral("Start localserver failed.")));
}

void TestConnServer::otherListenErrorIsIgnored()
{
    QTemporaryDir directory;
    ConnServer server(directory.filePath(QStringLiteral("none/status")).toStdString(), nullptr);
    QCOMPARE(server.ServerStart(), 0);
    COMPARE_LISTS(log->Messages(), QStringList());
}

void TestConnServer::newConnectionSlotFailsWithoutAPendingConnection()
{
    Channel channel;
    QCOMPARE(channel.server.OnNewConnect(), -1);
    COMPARE_LISTS(log->Messages(), QStringList());
}

void TestConnServer::pendingConnectionIsAccepted()
{
    Channel channel;
    channel.server.ServerStart();
    auto* listener = channel.server.findChild<QLocalServer*>();
    disconnect(listener, nullptr, &channel.server, nullptr);
    const RawClients client(channel.path, 1, R"({"status":"run"})");
    QTRY_VERIFY(listener->hasPendingConnections());
    QCOMPARE(channel.server.OnNewConnect(), 0);
    COMPARE_LISTS(log->Messages(), QStringList(QStringLiteral("New application connected.")));
}

void TestConnServer::receivingWithoutASenderIsLogged()
{
    Channel channel;
    QCOMPARE(channel.server.RecvMsg(), -1);
    QVERIFY(log->Contains(QStringLiteral("ERROR"), UTILS, QStringLiteral("ConnServer local is nullptr.")));
    channel.server.RemoveConn();
    QCOMPARE(log->Messages().size(), 1);
}

void TestConnServer::disconnectOfAnotherSenderIsOnlyLogged()
{
    Channel channel;
    QObject other;
    connect(&other, &QObject::objectNameChanged, &channel.server, &ConnServer::RemoveConn);
    other.setObjectName(QStringLiteral("changed"));
    COMPARE_LISTS(log->Messages(), QStringList(QStringLiteral("App close the connect.")));
}

void TestConnServer::acceptedSocketIsDestroyedWithTheServer()
{
    Channel channel;
    channel.server.ServerStart();
    {
        QLocalSocket client;
        client.connectToServer(channel.path);
        QTRY_COMPARE(log->Count(QStringLiteral("New application connected.")), 1);
    }
    QTRY_COMPARE(log->Count(QStringLiteral("App close the connect.")), 1);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QCOMPARE(channel.server.findChildren<QLocalSocket*>().size(), 1);
}

void TestConnServer::messageOfAClientThatHasDisconnectedIsRead()
{
    Channel channel;
    channel.server.ServerStart();
    {
        const RawClients client(channel.path, 1, R"({"status":"run"})");
        QVERIFY(client.AreConnected());
    }
    QTRY_COMPARE(log->Count(QStringLiteral("App close the connect.")), 1);
    QCOMPARE(channel.Emitted(), RUNNING);
    const auto sockets = channel.server.findChildren<QLocalSocket*>();
    QCOMPARE(sockets.size(), 1);
    QCOMPARE(sockets.first()->state(), QLocalSocket::UnconnectedState);
    QVERIFY(!sockets.first()->isOpen());
}

void TestConnServer::closedConnectionKeepsAtMostFourKibibytes()
{
    constexpr int ROUNDS = 4;
    constexpr int CONNECTIONS = 500;
    constexpr std::size_t ALLOWED = 4096;
    rlimit files{};
    QCOMPARE(getrlimit(RLIMIT_NOFILE, &files), 0);
    const rlimit enough{std::min<rlim_t>(files.rlim_max, 4096), files.rlim_max};
    QCOMPARE(setrlimit(RLIMIT_NOFILE, &enough), 0);
    Channel channel;
    channel.server.ServerStart();
    QList<std::size_t> costs;
    for (int round = 0; round <= ROUNDS; ++round) {
        const std::size_t before = Allocated();
        {
            const RawClients clients(channel.path, CONNECTIONS, R"({"status":"init"})");
            QVERIFY(clients.AreConnected());
        }
        const int ended = (round + 1) * CONNECTIONS;
        QTRY_COMPARE(log->Count(QStringLiteral("App close the connect.")), ended);
        QCOMPARE(channel.server.findChildren<QLocalSocket*>().size(), ended);
        costs.append((Allocated() - before) / CONNECTIONS);
    }
    setrlimit(RLIMIT_NOFILE, &files);
    // The first round also allocates memory that later rounds reuse.
    for (int round = 1; round <= ROUNDS; ++round) {
        QVERIFY2(costs.at(round) <= ALLOWED, qPrintable(QString::number(costs.at(round))));
    }
}

QTEST_GUILESS_MAIN(TestConnServer)
#include "TestConnServer.moc"
