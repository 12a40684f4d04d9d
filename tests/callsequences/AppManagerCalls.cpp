// The manager emits each signal of an application exactly once while the application is registered and
// connected, and never otherwise.

#include <algorithm>

#include "callsequences/CallSequence.h"
#include "callsequences/Children.h"
#include "callsequences/Client.h"
#include "supervision/AppManager.h"
#include "supervision/TandraApp.h"

namespace {
constexpr std::size_t MAX_CHILDREN = 6;
constexpr int SPARE_DESCRIPTORS = 16;

class ExposedApp : public BaseApp
{
public:
    static auto Program() { return &ExposedApp::program; }
    static auto Arguments() { return &ExposedApp::arguments; }
    static auto Processes() { return &ExposedApp::processVector; }
    static auto Count() { return &ExposedApp::count; }
    static auto Name() { return &ExposedApp::name; }
};

class AppManagerCalls : public CallSequence
{
public:
    explicit AppManagerCalls(quint32 seed);

    void Step() override;
    void End() override;

private:
    /// The numbers of signals of the manager.
    struct Emitted
    {
        int started = 0;
        int finished = 0;
        int errors = 0;
        int events = 0;

        bool operator==(const Emitted& other) const
        {
            return started == other.started && finished == other.finished && errors == other.errors &&
                   events == other.events;
        }
    };

    void CountSignals();
    void ChooseChild();
    void Report();
    void CompareTypes();
    void Reconnect();
    bool IsForwarded() const { return registered && connected; }
    std::vector<std::shared_ptr<QProcess>>& Processes() { return app.*ExposedApp::Processes(); }

    BaseApp& app{*Singleton<TandraApp>::GetInstance()};
    Emitted expected;
    Emitted emitted;
    bool registered = true;
    bool connected = true;
    std::unique_ptr<AppManager> manager;
    std::vector<std::unique_ptr<Client>> clients;
    int descriptors = 0;
};

AppManagerCalls::AppManagerCalls(quint32 seed) : CallSequence(seed)
{
    // These connections exist before the manager's, so each emission is counted here first.
    QObject::connect(&app, &BaseApp::AppStarted, &app, [this] {
        REQUIRE(app.*ExposedApp::Count() == 1);
        expected.started += IsForwarded() ? 1 : 0;
    });
    QObject::connect(&app, &BaseApp::AppFinished, &app, [this] {
        REQUIRE(app.*ExposedApp::Count() == 0);
        expected.finished += IsForwarded() ? 1 : 0;
    });
    QObject::connect(&app, &BaseApp::AppError, &app, [this] { expected.errors += IsForwarded() ? 1 : 0; });
    const auto event = [this] {
        expected.events += IsForwarded() ? 1 : 0;
    };
    QObject::connect(&app, &BaseApp::AppEventInited, &app, event);
    QObject::connect(&app, &BaseApp::AppEventRunning, &app, event);
    QObject::connect(&app, &BaseApp::AppEventStopped, &app, event);
    manager = std::make_unique<AppManager>();
    CountSignals();
    ChooseChild();
    descriptors = OpenDescriptors();
}

void AppManagerCalls::CountSignals()
{
    QObject::connect(manager.get(), &AppManager::AppStarted, &app, [this](AppManager::AppType type) {
        REQUIRE(type == AppManager::TANDRA_APP);
        ++emitted.started;
        StepInSlot();
    });
    QObject::connect(manager.get(), &AppManager::AppFinished, &app, [this](AppManager::AppType type, int) {
        REQUIRE(type == AppManager::TANDRA_APP);
        ++emitted.finished;
        StepInSlot();
    });
    QObject::connect(manager.get(), &AppManager::AppError, &app, [this] {
        ++emitted.errors;
        StepInSlot();
    });
    QObject::connect(manager.get(), &AppManager::AppEvent, &app, [this] {
        ++emitted.events;
        StepInSlot();
    });
}

void AppManagerCalls::ChooseChild()
{
    const Children::Child child = Any(Children::All());
    app.*ExposedApp::Program() = child.program;
    app.*ExposedApp::Arguments() = child.arguments;
}

void AppManagerCalls::Report()
{
    if (clients.empty() || OneIn(4)) {
        clients.push_back(std::make_unique<Client>(QString::fromStdString(app.*ExposedApp::Name())));
    } else if (clients.size() > 4 || OneIn(4)) {
        clients.erase(clients.begin() + Pick(static_cast<int>(clients.size())));
    } else {
        static const QList<QByteArray> MESSAGES{R"({"status":"init"})", R"({"status":"run"})",
                                                R"({"status":"stop"})", R"({"status")", "[]"};
        clients.back()->Send(Any(MESSAGES));
    }
}

void AppManagerCalls::CompareTypes()
{
    const BaseApp unregistered("unregistered");
    REQUIRE(manager->GetTypeFromApp(app) == (registered ? AppManager::TANDRA_APP : AppManager::APP_TYPE_END));
    REQUIRE(manager->GetTypeFromApp(unregistered) == AppManager::APP_TYPE_END);
}

void AppManagerCalls::Reconnect()
{
    switch (Pick(4)) {
    case 0:
        manager->RegisterCallback();
        connected = connected || registered;
        break;
    case 1:
        manager->UnregisterCallback();
        connected = connected && !registered;
        break;
    case 2:
        manager->InitAppMap();
        registered = true;
        break;
    default:
        manager->ReAllocResource();
        registered = true;
        connected = true;
        break;
    }
}

void AppManagerCalls::Step()
{
    const auto registerAgain = [this] {
        connected = connected || !registered;
        registered = true;
    };
    switch (Pick(12)) {
    case 0:
    case 1:
    case 2:
        registerAgain();
        if (Processes().size() < MAX_CHILDREN) {
            manager->StartApp(AppManager::TANDRA_APP);
        } else {
            manager->StopApp(AppManager::TANDRA_APP, false);
        }
        break;
    case 3:
        registerAgain();
        manager->StopApp(AppManager::TANDRA_APP, OneIn(2));
        break;
    case 4:
        registerAgain();
        manager->StopAll();
        break;
    case 5:
        manager->DeleteAll();
        registered = false;
        break;
    case 6:
        // StartApp() and StopApp() register missing applications even if the type is unknown.
        registered = true;
        connected = true;
        if (OneIn(2)) {
            manager->StartApp(AppManager::APP_TYPE_END);
        } else {
            manager->StopApp(AppManager::APP_TYPE_END, true);
        }
        break;
    case 7:
        Reconnect();
        break;
    case 8:
        ChooseChild();
        break;
    case 9:
        Report();
        break;
    case 10:
        CompareTypes();
        break;
    default:
        Spin(Pick(40));
        break;
    }
    REQUIRE(emitted == expected);
    REQUIRE(app.*ExposedApp::Count() >= 0);
}

void AppManagerCalls::End()
{
    DisableStepsInSlots();
    manager->DeleteAll();
    manager->StopAll();
    REQUIRE(SpinUntil([this] {
        return std::all_of(Processes().begin(), Processes().end(),
                           [](const auto& process) { return process->state() == QProcess::NotRunning; });
    }));
    clients.clear();
    Spin(100);
    manager->StopAll();
    REQUIRE(SpinUntil([this] { return OpenDescriptors() <= descriptors + SPARE_DESCRIPTORS; }));
    manager.reset();
}
} // namespace

std::unique_ptr<CallSequence> MakeAppManagerCalls(quint32 seed)
{
    return std::make_unique<AppManagerCalls>(seed);
}
