#include <QLocalServer>
#include <QLocalSocket>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <cerrno>
#include <memory>
#include <sys/socket.h>
#include <sys/un.h>
// Engines use syslog, so the header must compile together with the client's.
#include <syslog.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include "platform/Logger.h"
#include "statuschannel/ConnClient.h"
#include "statuschannel/ConnServer.h"
#include "support/CapturedLog.h"

namespace {
const QString UTILS = QStringLiteral("UTILS");
const QString INFO = QStringLiteral("INFO");
const QString ERROR_LEVEL = QStringLiteral("ERROR");
constexpr int TWO_REPEATS_MS = 2500;

/// A server whose connection queue is full, because it accepts no connection.
class FullServer
{
public:
    explicit FullServer(const std::string& path) : listener(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0))
    {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        path.copy(address.sun_path, sizeof address.sun_path - 1);
        const auto* socketAddress = reinterpret_cast<const sockaddr*>(&address);
        full = bind(listener, socketAddress, sizeof address) == 0 && listen(listener, 0) == 0;
        while (full) {
            const int client = socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
            queue.push_back(client);
            if (connect(client, socketAddress, sizeof address) != 0) {
                full = errno == EAGAIN;
                break;
            }
        }
    }
    ~FullServer()
    {
        for (const int client : queue) {
            close(client);
        }
        close(listener);
    }
    FullServer(const FullServer&) = delete;
    FullServer& operator=(const FullServer&) = delete;

    bool IsFull() const { return full; }
    /// Accepts the first connection of the queue and returns its descriptor.
    int Accept() const { return accept4(listener, nullptr, nullptr, SOCK_CLOEXEC); }

private:
    int listener;
    std::vector<int> queue;
    bool full = false;
};
/// A server that reads nothing from its connections.
class PassiveServer
{
public:
    /// Connects `client` to the server at `path`. Returns the socket on the server's side, or null on
    /// failure.
    QLocalSocket* Connect(ConnClient& client, const std::string& path)
    {
        if (!server.listen(QString::fromStdString(path)) || client.ConnToServer() != 0) {
            return nullptr;
        }
        // The connection already exists, and the server only has to accept it.
        server.waitForNewConnection(5000);
        return server.nextPendingConnection();
    }

private:
    QLocalServer server;
};
} // namespace

class TestConnClient : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void idleClientRepeatsInit();
    void eachStateIsSentImmediatelyAndLogged();
    void currentStateIsTheLastOne_data();
    void currentStateIsTheLastOne();
    void statesRepeatOnceASecond();
    void missingServerFailsTheConnect();
    void sendConnectsAfterAFailedStart();
    void sendToAServerThatDoesNotAcceptTimesOut();
    void sendWaitsUntilTheServerAccepts();
    void invalidStatusIsRejected();
    void failedSendIsLoggedTwice();
    void stopAfterADisconnectUsesANewConnection();
    void restartedServerReceivesTheState();
    void callFromAnotherThreadIsQueued();

private:
    std::string Path() const { return directory->filePath(QStringLiteral("status")).toStdString(); }

    std::unique_ptr<CapturedLog> log;
    std::unique_ptr<QTemporaryDir> directory;
};

void TestConnClient::init()
{
    log = std::make_unique<CapturedLog>();
    directory = std::make_unique<QTemporaryDir>();
}

void TestConnClient::cleanup()
{
    directory.reset();
    log.reset();
}

void TestConnClient::idleClientRepeatsInit()
{
    ConnServer server(Path(), nullptr);
    server.ServerStart();
    QSignalSpy inited(&server, &ConnServer::AppInited);
    ConnClient client(Path());
    QCOMPARE(client.ConnToServer(), 0);
    QVERIFY(log->Contains(INFO, UTILS, QStringLiteral("Connection client connected.")));
    QVERIFY(inited.wait(TWO_REPEATS_MS));
}

void TestConnClient::eachStateIsSentImmediatelyAndLogged()
{
    ConnServer server(Path(), nullptr);
    server.ServerStart();
    QSignalSpy inited(&server, &ConnServer::AppInited);
    QSignalSpy running(&server, &ConnServer::AppRunning);
    QSignalSpy stopped(&server, &ConnServer::AppStoped);
    ConnClient client(Path());
    QCOMPARE(client.ConnToServer(), 0);
    client.AppInit();
    QVERIFY(inited.wait(500));
    client.AppRun();
    QVERIFY(running.wait(500));
    client.AppStop();
    QVERIFY(stopped.wait(500));
    QVERIFY(log->Contains(INFO, UTILS, QStringLiteral("App status init.")));
    QVERIFY(log->Contains(INFO, UTILS, QStringLiteral("App status running.")));
    QVERIFY(log->Contains(INFO, UTILS, QStringLiteral("App status stop.")));
    // Success is not logged, and no new connection is needed.
    COMPARE_LISTS(log->Messages().filter(QStringLiteral("failed")), QStringList());
    COMPARE_LISTS(log->Messages().filter(QStringLiteral("start connect")), QStringList());
}

void TestConnClient::currentStateIsTheLastOne_data()
{
    QTest::addColumn<QByteArray>("first");
    QTest::addColumn<QByteArray>("last");
    QTest::newRow("init") << QByteArray("run") << QByteArray("init");
    QTest::newRow("run") << QByteArray("init") << QByteArray("run");
    QTest::newRow("stop") << QByteArray("run") << QByteArray("stop");
}

void TestConnClient::currentStateIsTheLastOne()
{
    QFETCH(QByteArray, first);
    QFETCH(QByteArray, last);
    PassiveServer server;
    ConnClient client(Path());
    QLocalSocket* socket = server.Connect(client, Path());
    QVERIFY(socket != nullptr);
    const auto set = [&client](const QByteArray& state) {
        if (state == "init") {
            client.AppInit();
        } else if (state == "run") {
            client.AppRun();
        } else {
            client.AppStop();
        }
    };
    set(first);
    set(last);
    client.SendCurStatus();
    const auto message = [](const QByteArray& state) {
        return "{\"status\":\"" + state + "\"}";
    };
    const QByteArray expected = message(first) + message(last) + message(last);
    // The client may repeat a state before and after these messages.
    QByteArray received;
    QTRY_VERIFY((received += socket->readAll()).contains(expected));
    COMPARE_LISTS(log->Messages().filter(QStringLiteral("failed")), QStringList());
}

void TestConnClient::statesRepeatOnceASecond()
{
    PassiveServer server;
    ConnClient client(Path());
    QLocalSocket* socket = server.Connect(client, Path());
    QVERIFY(socket != nullptr);
    QSignalSpy received(socket, &QIODevice::readyRead);
    client.AppRun();
    QVERIFY(received.wait());
    QCOMPARE(socket->readAll(), QByteArray(R"({"status":"run"})"));
    QElapsedTimer timer;
    timer.start();
    for (int i = 0; i < 2; ++i) {
        QVERIFY(received.wait(TWO_REPEATS_MS));
        QCOMPARE(socket->readAll(), QByteArray(R"({"status":"run"})"));
    }
    const qint64 elapsed = timer.elapsed();
    QVERIFY2(elapsed > 1500 && elapsed < 2400, qPrintable(QString::number(elapsed)));
}

void TestConnClient::missingServerFailsTheConnect()
{
    ConnClient client(Path());
    QCOMPARE(client.ConnToServer(), -1);
    QVERIFY(log->Contains(ERROR_LEVEL, UTILS, QStringLiteral("Connection client connect timeout.")));
    // The client does not repeat the state, so a server that starts later receives nothing.
    ConnServer server(Path(), nullptr);
    server.ServerStart();
    QSignalSpy inited(&server, &ConnServer::AppInited);
    QVERIFY(!inited.wait(1300));
}

void TestConnClient::sendConnectsAfterAFailedStart()
{
    ConnClient client(Path());
    QCOMPARE(client.ConnToServer(), -1);
    ConnServer server(Path(), nullptr);
    server.ServerStart();
    QSignalSpy running(&server, &ConnServer::AppRunning);
    client.AppRun();
    QVERIFY(running.wait());
    QVERIFY(log->Contains(INFO, UTILS, QStringLiteral("Client start connect.")));
}

void TestConnClient::sendToAServerThatDoesNotAcceptTimesOut()
{
    const FullServer server(Path());
    QVERIFY(server.IsFull());
    ConnClient client(Path());
    QCOMPARE(client.ConnToServer(), -1);
    log->Clear();
    QCOMPARE(client.SendAppStatus("message"), -1);
    client.DisConnect();
    QElapsedTimer timer;
    timer.start();
    client.AppRun();
    QVERIFY2(timer.elapsed() >= 1000, qPrintable(QString::number(timer.elapsed())));
    QCOMPARE(log->Count(QStringLiteral("Connection client connect timeout.")), 2);
    for (const CapturedLog::Line& line : log->Lines()) {
        QVERIFY(line.level == ERROR_LEVEL || !line.message.endsWith(QStringLiteral("timeout.")));
    }
    QVERIFY(!log->Contains(INFO, UTILS, QStringLiteral("Connection client connected.")));
}

void TestConnClient::sendWaitsUntilTheServerAccepts()
{
    const FullServer server(Path());
    QVERIFY(server.IsFull());
    ConnClient client(Path());
    QCOMPARE(client.ConnToServer(), -1);
    std::thread acceptor([&server] { close(server.Accept()); });
    QCOMPARE(client.SendAppStatus("message"), 0);
    acceptor.join();
    QVERIFY(log->Contains(INFO, UTILS, QStringLiteral("Connection client connected.")));
}

void TestConnClient::invalidStatusIsRejected()
{
    ConnServer server(Path(), nullptr);
    server.ServerStart();
    ConnClient client(Path());
    client.SendStatusOnce(3);
    client.SendStatusOnce(-1);
    COMPARE_LISTS(log->Messages(), QStringList({QStringLiteral("Error message type."),
                                                QStringLiteral("Error message type.")}));
    QVERIFY(log->Contains(ERROR_LEVEL, UTILS, QStringLiteral("Error message type.")));
}

void TestConnClient::failedSendIsLoggedTwice()
{
    ConnClient client(Path());
    client.SendStatusOnce(1);
    // The socket is unconnected immediately if there is no server, so the write fails.
    COMPARE_LISTS(log->Messages(), QStringList({QStringLiteral("Client start connect."),
                                                QStringLiteral("Send message failed."),
                                                QStringLiteral("Send message failed.")}));
    QCOMPARE(log->Lines().at(1).level, ERROR_LEVEL);
    QCOMPARE(log->Lines().at(2).level, ERROR_LEVEL);
    QCOMPARE(client.SendAppStatus("message"), -1);
    log->Clear();
    client.SendCurStatus();
    QCOMPARE(log->Messages().last(), QStringLiteral("Send status message failed."));
    QCOMPARE(log->Lines().last().level, ERROR_LEVEL);
}

void TestConnClient::stopAfterADisconnectUsesANewConnection()
{
    ConnServer server(Path(), nullptr);
    server.ServerStart();
    QSignalSpy stopped(&server, &ConnServer::AppStoped);
    ConnClient client(Path());
    QCOMPARE(client.ConnToServer(), 0);
    client.DisConnect();
    QTRY_COMPARE(log->Count(QStringLiteral("App close the connect.")), 1);
    client.AppStop();
    QVERIFY(stopped.wait());
    QVERIFY(log->Contains(INFO, UTILS, QStringLiteral("Client start connect.")));
}

void TestConnClient::restartedServerReceivesTheState()
{
    auto server = std::make_unique<ConnServer>(Path(), nullptr);
    server->ServerStart();
    QSignalSpy running(server.get(), &ConnServer::AppRunning);
    ConnClient client(Path());
    QCOMPARE(client.ConnToServer(), 0);
    client.AppRun();
    QVERIFY(running.wait());
    server.reset();
    QTRY_VERIFY(!QFile::exists(QString::fromStdString(Path())));
    server = std::make_unique<ConnServer>(Path(), nullptr);
    server->ServerStart();
    QSignalSpy runningAgain(server.get(), &ConnServer::AppRunning);
    QVERIFY(runningAgain.wait(TWO_REPEATS_MS));
}

void TestConnClient::callFromAnotherThreadIsQueued()
{
    ConnServer server(Path(), nullptr);
    server.ServerStart();
    QSignalSpy running(&server, &ConnServer::AppRunning);
    ConnClient client(Path());
    QCOMPARE(client.ConnToServer(), 0);
    std::thread([&client] { client.AppRun(); }).join();
    QCOMPARE(running.count(), 0);
    QVERIFY(running.wait());
}

QTEST_GUILESS_MAIN(TestConnClient)
#include "TestConnClient.moc"
