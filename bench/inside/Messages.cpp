#include <QCoreApplication>
#include <benchmark/benchmark.h>
#include <memory>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <vector>

#include "inside/Scratch.h"
#include "statuschannel/AppMessage.h"
#include "statuschannel/ConnServer.h"

namespace {
/// A server with so many clients connected, of which the last one reports.
class Channel
{
public:
    explicit Channel(int count) : server(ScratchPath("ipc"), nullptr)
    {
        QObject::connect(&server, &ConnServer::AppRunning, [this] { ++changes; });
        QObject::connect(&server, &ConnServer::AppStoped, [this] { ++changes; });
        server.ServerStart();
        for (int i = 0; i < count; ++i) {
            Connect();
            Report(i);
        }
    }
    ~Channel()
    {
        for (const int client : clients) {
            close(client);
        }
        QCoreApplication::processEvents();
    }
    Channel(const Channel&) = delete;
    Channel& operator=(const Channel&) = delete;

    static const QByteArray& Message(int number)
    {
        static const QByteArray run = AppMessage(APP_STATUS_RUN).GetAppMsg();
        static const QByteArray stop = AppMessage(APP_STATUS_STOP).GetAppMsg();
        return number % 2 == 0 ? run : stop;
    }

    /// Writes a change of status, and goes on until it was passed on.
    void Report(int number)
    {
        const QByteArray& message = Message(number);
        const int before = changes;
        if (write(clients.back(), message.constData(), static_cast<std::size_t>(message.size())) < 0) {
            qFatal("the status channel does not take a message");
        }
        while (changes == before) {
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        }
    }

    ConnServer server;

private:
    void Connect()
    {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        ScratchPath("ipc").copy(address.sun_path, sizeof address.sun_path - 1);
        const int client = socket(AF_UNIX, SOCK_STREAM, 0);
        if (connect(client, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
            qFatal("the status channel does not answer");
        }
        clients.push_back(client);
    }

    std::vector<int> clients;
    int changes = 0;
};

void Parse(benchmark::State& state)
{
    const auto count = static_cast<int>(state.range(0));
    Channel channel(count);
    int number = count;
    for (auto _ : state) {
        channel.server.ParseMsg(Channel::Message(number++));
    }
}

void Arrive(benchmark::State& state)
{
    const auto count = static_cast<int>(state.range(0));
    Channel channel(count);
    int number = count;
    for (auto _ : state) {
        channel.Report(number++);
    }
}
} // namespace

BENCHMARK(Parse)->Name("messages/parse")->UseRealTime()->Arg(1)->Arg(10)->Arg(100);
BENCHMARK(Arrive)->Name("messages/arrive")->UseRealTime()->Arg(1)->Arg(10)->Arg(100);
