// The server emits a signal only if the status changes, regardless of the client and of the split into reads.

#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <vector>

#include "callsequences/CallSequence.h"
#include "callsequences/Client.h"
#include "statuschannel/ConnServer.h"

namespace {
class ConnServerCalls : public CallSequence
{
public:
    explicit ConnServerCalls(quint32 seed) : CallSequence(seed)
    {
        QObject::connect(&server, &ConnServer::AppInited, &server, [this] { Receive("init"); });
        QObject::connect(&server, &ConnServer::AppRunning, &server, [this] { Receive("run"); });
        QObject::connect(&server, &ConnServer::AppStoped, &server, [this] { Receive("stop"); });
        REQUIRE(server.ServerStart() == 0);
    }

    void Step() override;
    void End() override;

private:
    void Receive(const char* status)
    {
        // The server never emits the same status twice in succession.
        REQUIRE(received != QLatin1String(status));
        received = QLatin1String(status);
        StepInSlot();
    }
    QByteArray AnyMessage();
    void Parse();

    QTemporaryDir directory;
    QString path{directory.filePath(QStringLiteral("status"))};
    ConnServer server{path.toStdString(), nullptr};
    QString received;
    std::vector<std::unique_ptr<Client>> clients;
};

QByteArray ConnServerCalls::AnyMessage()
{
    static const QList<QByteArray> MESSAGES{R"({"status":"init"})",
                                            R"({"status":"run"})",
                                            R"({"status":"stop"})",
                                            R"({"status":"run")",
                                            R"({"x":[1],"status":"stop"})",
                                            R"({"status":"RUN"})",
                                            R"({"status":7})",
                                            R"({})",
                                            R"([])"};
    QByteArray message = Any(MESSAGES);
    if (OneIn(4)) {
        message += Any(MESSAGES);
    }
    return OneIn(8) ? AnyBytes(40) : OneIn(8) ? message.left(Pick(message.size())) : message;
}

void ConnServerCalls::Parse()
{
    const QByteArray message = AnyMessage();
    QJsonParseError error{};
    const QJsonValue value = QJsonDocument::fromJson(message, &error).object().value(QLatin1String("status"));
    const bool isMessage = error.error == QJsonParseError::NoError && value.isString();
    REQUIRE(server.ParseMsg(message) == (isMessage ? 0 : -1));
}

void ConnServerCalls::Step()
{
    constexpr std::size_t MAX_CLIENTS = 20;
    switch (Pick(9)) {
    case 0:
        clients.push_back(std::make_unique<Client>(path));
        break;
    case 1:
    case 2:
        if (!clients.empty()) {
            clients.erase(clients.begin() + Pick(static_cast<int>(clients.size())));
        }
        break;
    case 3:
    case 4:
        if (!clients.empty()) {
            clients.at(static_cast<std::size_t>(Pick(static_cast<int>(clients.size()))))->Send(AnyMessage());
        }
        break;
    case 5:
        Parse();
        break;
    case 6:
        REQUIRE(server.RecvMsg() == -1);
        server.RemoveConn();
        break;
    case 7:
        // A connection may be pending or not.
        server.OnNewConnect();
        if (OneIn(50)) {
            server.ServerStart();
        }
        break;
    default:
        Spin(Pick(3));
        break;
    }
    if (clients.size() > MAX_CLIENTS) {
        clients.clear();
    }
}

void ConnServerCalls::End()
{
    DisableStepsInSlots();
    clients.clear();
    Spin(100);
    // The server still receives messages.
    const Client last(path);
    const bool running = received == QLatin1String("run");
    last.Send(running ? R"({"status":"stop"})" : R"({"status":"run"})");
    const QString expected = running ? QStringLiteral("stop") : QStringLiteral("run");
    REQUIRE(SpinUntil([this, expected] { return received == expected; }));
}
} // namespace

std::unique_ptr<CallSequence> MakeConnServerCalls(quint32 seed)
{
    return std::make_unique<ConnServerCalls>(seed);
}
