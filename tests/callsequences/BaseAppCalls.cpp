// The signals of an application agree with its count, and ClearVector() keeps the running processes in their
// order.

#include <QTemporaryDir>
#include <algorithm>

#include "callsequences/CallSequence.h"
#include "callsequences/Children.h"
#include "supervision/BaseApp.h"

namespace {
constexpr std::size_t MAX_CHILDREN = 6;

class ExposedApp : public BaseApp
{
public:
    using BaseApp::arguments;
    using BaseApp::BaseApp;
    using BaseApp::count;
    using BaseApp::processVector;
    using BaseApp::program;
};

class BaseAppCalls : public CallSequence
{
public:
    explicit BaseAppCalls(quint32 seed) : CallSequence(seed) { Make(); }

    void Step() override;
    void End() override;

private:
    void Make();
    void Clear();
    void Start();
    void CallASlot();

    QTemporaryDir directory;
    std::unique_ptr<ExposedApp> app;
    int slotDepth = 0;
};

void BaseAppCalls::Make()
{
    app.reset();
    app = std::make_unique<ExposedApp>(directory.filePath(QStringLiteral("ipc")).toStdString());
    // The destructor of an application still emits signals of its processes.
    const auto step = [this] {
        if (app == nullptr) {
            return;
        }
        ++slotDepth;
        StepInSlot();
        --slotDepth;
    };
    QObject::connect(app.get(), &BaseApp::AppStarted, app.get(), [this, step] {
        REQUIRE(app == nullptr || app->count == 1);
        step();
    });
    QObject::connect(app.get(), &BaseApp::AppFinished, app.get(), [this, step] {
        REQUIRE(app == nullptr || app->count == 0);
        step();
    });
    QObject::connect(app.get(), &BaseApp::AppError, app.get(), step);
    QObject::connect(app.get(), &BaseApp::AppEventInited, app.get(), step);
}

void BaseAppCalls::Clear()
{
    std::vector<QProcess*> running;
    for (const auto& process : app->processVector) {
        if (process->state() == QProcess::Running) {
            running.push_back(process.get());
        }
    }
    app->ClearVector();
    std::vector<QProcess*> remaining;
    for (const auto& process : app->processVector) {
        remaining.push_back(process.get());
    }
    REQUIRE(remaining == running);
}

void BaseAppCalls::Start()
{
    const Children::Child child = Any(Children::All());
    app->program = child.program;
    app->arguments = child.arguments;
    app->Start();
}

void BaseAppCalls::CallASlot()
{
    switch (Pick(4)) {
    case 0:
        app->Started();
        break;
    case 1:
        app->Finished(Pick(256));
        break;
    case 2:
        app->Error(QProcess::ReadError);
        break;
    default:
        app->EventInited();
        break;
    }
}

void BaseAppCalls::Step()
{
    if (app->processVector.size() >= MAX_CHILDREN) {
        app->Stop(OneIn(2));
        Clear();
    }
    switch (Pick(8)) {
    case 0:
    case 1:
    case 2:
        Start();
        break;
    case 3:
        app->Stop(OneIn(3));
        break;
    case 4:
        Clear();
        break;
    case 5:
        CallASlot();
        break;
    case 6:
        // Destroys the application while its processes may run, but never in a slot of its own signals.
        if (slotDepth == 0 && OneIn(4)) {
            Make();
        }
        break;
    default:
        Spin(Pick(30));
        break;
    }
    REQUIRE(app->count >= 0);
}

void BaseAppCalls::End()
{
    DisableStepsInSlots();
    app->Stop(true);
    const ExposedApp& last = *app;
    REQUIRE(SpinUntil([&last] {
        return std::all_of(last.processVector.begin(), last.processVector.end(),
                           [](const auto& process) { return process->state() == QProcess::NotRunning; });
    }));
    app->ClearVector();
    REQUIRE(app->processVector.empty());
    app.reset();
}
} // namespace

std::unique_ptr<CallSequence> MakeBaseAppCalls(quint32 seed)
{
    return std::make_unique<BaseAppCalls>(seed);
}
