// The server: only a change to one of the three words counts, whoever sends it and in whatever pieces.

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
        QObject::connect(&server, &ConnServer::AppInited, &server, [this] { Hear("init"); });
        QObject::connect(&server, &ConnServer::AppRunning, &server, [this] { Hear("run"); });
        QObject::connect(&server, &ConnServer::AppStoped, &server, [this] { Hear("stop"); });
        REQUIRE(server.ServerStart() == 0);
    }

    void Step() override;
    void End() override;

private:
    void Hear(const char* word)
    {
        // Never the same word twice in a row.
        REQUIRE(heard != QLatin1String(word));
        heard = QLatin1String(word);
        StepInside();
    }
    QByteArray AnyMessage();
    void Parse();

    QTemporaryDir directory;
    QString path{directory.filePath(QStringLiteral("status"))};
    ConnServer server{path.toStdString(), nullptr};
    QString heard;
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
    constexpr std::size_t MOST_CLIENTS = 20;
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
        // Takes one that waits, or finds none.
        server.OnNewConnect();
        if (OneIn(50)) {
            server.ServerStart();
        }
        break;
    default:
        Spin(Pick(3));
        break;
    }
    if (clients.size() > MOST_CLIENTS) {
        clients.clear();
    }
}

void ConnServerCalls::End()
{
    StayOutside();
    clients.clear();
    Spin(100);
    // It still hears.
    const Client last(path);
    const bool running = heard == QLatin1String("run");
    last.Send(running ? R"({"status":"stop"})" : R"({"status":"run"})");
    const QString wanted = running ? QStringLiteral("stop") : QStringLiteral("run");
    REQUIRE(SpinUntil([this, wanted] { return heard == wanted; }));
}
} // namespace

std::unique_ptr<CallSequence> MakeConnServerCalls(quint32 seed)
{
    return std::make_unique<ConnServerCalls>(seed);
}
