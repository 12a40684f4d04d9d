// The application listens on its socket even if another file has that name, and answers each connection.

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
    void OccupyName();
    void Listen();

    QTemporaryDir directory;
    SingleApplication& application{*static_cast<SingleApplication*>(QCoreApplication::instance())};
    QWidget window;
    QString name;
    bool listens = false;
    bool isNewName = false;
    std::vector<std::unique_ptr<Client>> clients;
};

void SingleApplicationCalls::ChooseName()
{
    static int number = 0;
    clients.clear();
    name = directory.filePath(QStringLiteral("name-%1").arg(++number));
    application.SetServerName(Local(name));
    isNewName = true;
}

void SingleApplicationCalls::OccupyName()
{
    if (!isNewName) {
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

void SingleApplicationCalls::Listen()
{
    if (!isNewName) {
        // The application connects to its own server, so it reports another instance.
        REQUIRE(application.InitLocalConnect() == 0);
        REQUIRE(application.IsRunning());
        return;
    }
    // The server listens only once. With a second name, InitLocalConnect() succeeds without listening, or
    // fails like the first attempt.
    const int result = application.InitLocalConnect();
    REQUIRE(result == 0 || (listens && result == -1));
    REQUIRE(!application.IsRunning());
    isNewName = listens;
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
        OccupyName();
        break;
    case 2:
        Listen();
        break;
    case 3:
        if (clients.size() < MAX_CLIENTS) {
            clients.push_back(std::make_unique<Client>(name));
            clients.back()->Send(OneIn(2) ? AnyBytes(10) : QByteArray());
        }
        break;
    case 4:
        // The server waits for data from each client, so clients that send nothing would delay it.
        clients.clear();
        break;
    case 5:
        application.SetMainWindow(window);
        application.ActivateWindow();
        break;
    case 6:
        if (isNewName) {
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
