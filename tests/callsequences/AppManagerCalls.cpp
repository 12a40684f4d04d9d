// The manager: what the application says reaches it exactly once while it is known and wired, and never
// otherwise, whoever starts, stops or forgets it from wherever.

#include <algorithm>

#include "callsequences/CallSequence.h"
#include "callsequences/Children.h"
#include "callsequences/Client.h"
#include "supervision/AppManager.h"
#include "supervision/TandraApp.h"

namespace {
constexpr std::size_t MOST_CHILDREN = 6;
constexpr int SPARE_DESCRIPTORS = 16;

class OpenApp : public BaseApp
{
public:
    static auto Program() { return &OpenApp::program; }
    static auto Arguments() { return &OpenApp::arguments; }
    static auto Processes() { return &OpenApp::processVector; }
    static auto Count() { return &OpenApp::count; }
    static auto Name() { return &OpenApp::name; }
};

class AppManagerCalls : public CallSequence
{
public:
    explicit AppManagerCalls(quint32 seed);

    void Step() override;
    void End() override;

private:
    /// Counts of the manager's signals: the expected ones and the emitted ones.
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

    void Watch();
    void ChooseChild();
    void Report();
    void Ask();
    void Rewire();
    bool Reaches() const { return known && wired; }
    std::vector<std::shared_ptr<QProcess>>& Processes() { return app.*OpenApp::Processes(); }

    BaseApp& app{*Singleton<TandraApp>::GetInstance()};
    Emitted expected;
    Emitted emitted;
    bool known = true;
    bool wired = true;
    std::unique_ptr<AppManager> manager;
    std::vector<std::unique_ptr<Client>> clients;
    int descriptors = 0;
};

AppManagerCalls::AppManagerCalls(quint32 seed) : CallSequence(seed)
{
    // In front of the manager's own wiring: what is counted here has to come out there next.
    QObject::connect(&app, &BaseApp::AppStarted, &app, [this] {
        REQUIRE(app.*OpenApp::Count() == 1);
        expected.started += Reaches() ? 1 : 0;
    });
    QObject::connect(&app, &BaseApp::AppFinished, &app, [this] {
        REQUIRE(app.*OpenApp::Count() == 0);
        expected.finished += Reaches() ? 1 : 0;
    });
    QObject::connect(&app, &BaseApp::AppError, &app, [this] { expected.errors += Reaches() ? 1 : 0; });
    const auto event = [this] {
        expected.events += Reaches() ? 1 : 0;
    };
    QObject::connect(&app, &BaseApp::AppEventInited, &app, event);
    QObject::connect(&app, &BaseApp::AppEventRunning, &app, event);
    QObject::connect(&app, &BaseApp::AppEventStopped, &app, event);
    manager = std::make_unique<AppManager>();
    Watch();
    ChooseChild();
    descriptors = OpenDescriptors();
}

void AppManagerCalls::Watch()
{
    QObject::connect(manager.get(), &AppManager::AppStarted, &app, [this](AppManager::AppType type) {
        REQUIRE(type == AppManager::TANDRA_APP);
        ++emitted.started;
        StepInside();
    });
    QObject::connect(manager.get(), &AppManager::AppFinished, &app, [this](AppManager::AppType type, int) {
        REQUIRE(type == AppManager::TANDRA_APP);
        ++emitted.finished;
        StepInside();
    });
    QObject::connect(manager.get(), &AppManager::AppError, &app, [this] {
        ++emitted.errors;
        StepInside();
    });
    QObject::connect(manager.get(), &AppManager::AppEvent, &app, [this] {
        ++emitted.events;
        StepInside();
    });
}

void AppManagerCalls::ChooseChild()
{
    const Children::Child child = Any(Children::All());
    app.*OpenApp::Program() = child.program;
    app.*OpenApp::Arguments() = child.arguments;
}

void AppManagerCalls::Report()
{
    if (clients.empty() || OneIn(4)) {
        clients.push_back(std::make_unique<Client>(QString::fromStdString(app.*OpenApp::Name())));
    } else if (clients.size() > 4 || OneIn(4)) {
        clients.erase(clients.begin() + Pick(static_cast<int>(clients.size())));
    } else {
        static const QList<QByteArray> MESSAGES{R"({"status":"init"})", R"({"status":"run"})",
                                                R"({"status":"stop"})", R"({"status")", "[]"};
        clients.back()->Send(Any(MESSAGES));
    }
}

void AppManagerCalls::Ask()
{
    const BaseApp stranger("stranger");
    REQUIRE(manager->GetTypeFromApp(app) == (known ? AppManager::TANDRA_APP : AppManager::APP_TYPE_END));
    REQUIRE(manager->GetTypeFromApp(stranger) == AppManager::APP_TYPE_END);
}

void AppManagerCalls::Rewire()
{
    switch (Pick(4)) {
    case 0:
        manager->RegisterCallback();
        wired = wired || known;
        break;
    case 1:
        manager->UnregisterCallback();
        wired = wired && !known;
        break;
    case 2:
        manager->InitAppMap();
        known = true;
        break;
    default:
        manager->ReAllocResource();
        known = true;
        wired = true;
        break;
    }
}

void AppManagerCalls::Step()
{
    const auto comeBack = [this] {
        wired = wired || !known;
        known = true;
    };
    switch (Pick(12)) {
    case 0:
    case 1:
    case 2:
        comeBack();
        if (Processes().size() < MOST_CHILDREN) {
            manager->StartApp(AppManager::TANDRA_APP);
        } else {
            manager->StopApp(AppManager::TANDRA_APP, false);
        }
        break;
    case 3:
        comeBack();
        manager->StopApp(AppManager::TANDRA_APP, OneIn(2));
        break;
    case 4:
        comeBack();
        manager->StopAll();
        break;
    case 5:
        manager->DeleteAll();
        known = false;
        break;
    case 6:
        // Both look for the application anew, whatever type they were asked for.
        known = true;
        wired = true;
        if (OneIn(2)) {
            manager->StartApp(AppManager::APP_TYPE_END);
        } else {
            manager->StopApp(AppManager::APP_TYPE_END, true);
        }
        break;
    case 7:
        Rewire();
        break;
    case 8:
        ChooseChild();
        break;
    case 9:
        Report();
        break;
    case 10:
        Ask();
        break;
    default:
        Spin(Pick(40));
        break;
    }
    REQUIRE(emitted == expected);
    REQUIRE(app.*OpenApp::Count() >= 0);
}

void AppManagerCalls::End()
{
    StayOutside();
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
