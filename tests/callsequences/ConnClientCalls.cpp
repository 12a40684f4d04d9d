// The client sends complete messages, also while the server stops and starts.

#include <QLocalServer>
#include <QLocalSocket>
#include <QTemporaryDir>
#include <thread>

#include "callsequences/CallSequence.h"
#include "statuschannel/ConnClient.h"

namespace {
class ConnClientCalls : public CallSequence
{
public:
    explicit ConnClientCalls(quint32 seed) : CallSequence(seed)
    {
        Listen();
        Make();
    }

    void Step() override;
    void End() override;

private:
    void Make();
    void Listen();
    void Read(QLocalSocket* socket);
    void SetState();
    void Send();

    QTemporaryDir directory;
    QString path{directory.filePath(QStringLiteral("status"))};
    std::unique_ptr<QLocalServer> server;
    std::unique_ptr<ConnClient> client;
    QByteArray received;
    int connections = 0;
};

void ConnClientCalls::Make()
{
    client = std::make_unique<ConnClient>(path.toStdString());
    connections = 0;
    QObject::connect(client.get(), &ConnClient::SendStatusSig, client.get(), [this] { StepInSlot(); });
}

void ConnClientCalls::Listen()
{
    server.reset();
    QLocalServer::removeServer(path);
    server = std::make_unique<QLocalServer>();
    REQUIRE(server->listen(path));
    QObject::connect(server.get(), &QLocalServer::newConnection, server.get(), [this] {
        QLocalSocket* socket = server->nextPendingConnection();
        QObject::connect(socket, &QIODevice::readyRead, server.get(), [this, socket] { Read(socket); });
        QObject::connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
    });
}

void ConnClientCalls::Read(QLocalSocket* socket)
{
    QByteArray bytes = socket->readAll();
    received = bytes;
    for (const char* message : {R"({"status":"init"})", R"({"status":"run"})", R"({"status":"stop"})"}) {
        bytes.replace(message, "");
    }
    // A message is too small to be split by the socket.
    REQUIRE(bytes.isEmpty());
}

void ConnClientCalls::SetState()
{
    switch (Pick(3)) {
    case 0:
        client->AppInit();
        break;
    case 1:
        client->AppRun();
        break;
    default:
        client->AppStop();
        break;
    }
}

void ConnClientCalls::Send()
{
    const int result = client->SendAppStatus(R"({"status":"run"})");
    REQUIRE(result == 0 || server == nullptr || !server->isListening() || result == -1);
    client->SendStatusOnce(static_cast<char>(Pick(256)));
    client->SendCurStatus();
}

void ConnClientCalls::Step()
{
    constexpr int MAX_CONNECTIONS = 3;
    switch (Pick(10)) {
    case 0:
        // Limits the calls, because each further call connects the signals once more.
        if (connections < MAX_CONNECTIONS) {
            ++connections;
            const int result = client->ConnToServer();
            REQUIRE(result == 0 || result == -1);
        }
        break;
    case 1:
    case 2:
        SetState();
        break;
    case 3:
        Send();
        break;
    case 4:
        client->DisConnect();
        break;
    case 5:
        if (OneIn(4)) {
            server.reset();
        }
        break;
    case 6:
        if (server == nullptr) {
            Listen();
        }
        break;
    case 7: {
        // The other thread sets the state. The client sends it on this thread.
        ConnClient& other = *client;
        std::thread([&other] { other.AppRun(); }).join();
        break;
    }
    default:
        Spin(Pick(5));
        break;
    }
}

void ConnClientCalls::End()
{
    DisableStepsInSlots();
    if (server == nullptr) {
        Listen();
    }
    Make();
    received.clear();
    REQUIRE(client->ConnToServer() == 0);
    client->AppStop();
    REQUIRE(SpinUntil([this] { return received == R"({"status":"stop"})"; }));
}
} // namespace

std::unique_ptr<CallSequence> MakeConnClientCalls(quint32 seed)
{
    return std::make_unique<ConnClientCalls>(seed);
}
