// The application object listens on its socket, whatever exists under that name, and answers every
// connection.

#include <QDir>
#include <QTemporaryDir>
#include <QWidget>
#include <vector>

#include "callsequences/CallSequence.h"
#include "callsequences/Client.h"
#include "entry/SingleApplication.h"
#include "support/Files.h"

namespace {
class SingleApplicationCalls : public CallSequence
{
public:
    explicit SingleApplicationCalls(quint32 seed) : CallSequence(seed) { ChooseName(); }

    void Step() override;

private:
    void ChooseName();
    void Block();
    void Establish();

    QTemporaryDir directory;
    SingleApplication& application{*static_cast<SingleApplication*>(QCoreApplication::instance())};
    QWidget window;
    QString name;
    bool listens = false;
    bool isOther = false;
    std::vector<std::unique_ptr<Client>> clients;
};

void SingleApplicationCalls::ChooseName()
{
    static int number = 0;
    clients.clear();
    name = directory.filePath(QStringLiteral("name-%1").arg(++number));
    application.SetServerName(Local(name));
    isOther = true;
}

void SingleApplicationCalls::Block()
{
    if (!isOther) {
        return;
    }
    switch (Pick(3)) {
    case 0:
        QDir().mkpath(name + QStringLiteral("/content/more"));
        break;
    case 1:
        if (!QFile::exists(name)) {
            WriteAll(directory.filePath(QStringLiteral("kept")), "kept");
            QFile::link(directory.filePath(QStringLiteral("kept")), name);
        }
        break;
    default:
        if (!QFile::exists(name)) {
            WriteAll(name, "stale");
        }
        break;
    }
}

void SingleApplicationCalls::Establish()
{
    if (!isOther) {
        // The application finds its own server and takes it for another instance.
        REQUIRE(application.InitLocalConnect() == 0);
        REQUIRE(application.IsRunning());
        return;
    }
    // The server listens only once: with a second name, InitLocalConnect() succeeds without listening there,
    // or fails as the first attempt did.
    const int result = application.InitLocalConnect();
    REQUIRE(result == 0 || (listens && result == -1));
    REQUIRE(!application.IsRunning());
    isOther = listens;
    listens = true;
}

void SingleApplicationCalls::Step()
{
    constexpr std::size_t MAX_CLIENTS = 5;
    switch (Pick(8)) {
    case 0:
        if (OneIn(4)) {
            ChooseName();
        }
        break;
    case 1:
        Block();
        break;
    case 2:
        Establish();
        break;
    case 3:
        if (clients.size() < MAX_CLIENTS) {
            clients.push_back(std::make_unique<Client>(name));
            clients.back()->Send(OneIn(2) ? AnyBytes(10) : QByteArray());
        }
        break;
    case 4:
        // The server waits for a silent client.
        clients.clear();
        break;
    case 5:
        application.SetMainWindow(window);
        application.ActivateWindow();
        break;
    case 6:
        if (isOther) {
            REQUIRE(application.IsServerNameValid());
            REQUIRE(!QDir(name).exists());
        }
        break;
    default:
        clients.clear();
        Spin(Pick(5));
        break;
    }
    REQUIRE(!QFile::exists(directory.filePath(QStringLiteral("kept"))) ||
            ReadAll(directory.filePath(QStringLiteral("kept"))) == "kept");
}
} // namespace

std::unique_ptr<CallSequence> MakeSingleApplicationCalls(quint32 seed)
{
    return std::make_unique<SingleApplicationCalls>(seed);
}
