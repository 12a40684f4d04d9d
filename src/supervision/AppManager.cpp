#include "supervision/AppManager.h"

#include <algorithm>
#include <iterator>
#include <system_error>
#include <thread>

#include "supervision/TandraApp.h"

namespace {
constexpr char MODULE_TAG[] = "VELODESK";

template <typename App>
BaseApp* Get()
{
    return Singleton<App>::GetInstance();
}

/// All applications.
constexpr struct
{
    AppManager::AppType type;
    BaseApp* (*get)();
} APPS[] = {
    {AppManager::TANDRA_APP, &Get<TandraApp>},
};
static_assert(std::size(APPS) == AppManager::APP_TYPE_END, "each type needs its application");
} // namespace

AppManager::AppManager()
{
    // Queued connections need the names with which the signals declare these types.
    qRegisterMetaType<AppManager::AppType>("AppManager::AppType");
    qRegisterMetaType<AppManager::AppEventType>("AppManager::AppEventType");
    ReAllocResource();
}

AppManager::~AppManager()
{
    UnregisterCallback();
    StopAll();
    DeleteAll();
}

void AppManager::StartApp(AppType type)
{
    if (appMap[type] == nullptr) {
        ReAllocResource();
    }
    if (appMap[type] == nullptr) {
        return;
    }
    LOG_INFO("start app[%d]", static_cast<int>(type));
    appMap[type]->Start();
}

void AppManager::StopApp(AppType type, bool wait)
{
    if (appMap[type] == nullptr) {
        ReAllocResource();
    }
    if (appMap[type] == nullptr) {
        return;
    }
    LOG_INFO("stop app[%d]", static_cast<int>(type));
    appMap[type]->Stop(wait);
}

void AppManager::StopAll()
{
    // Registers on this thread, because the workers must not change the map.
    if (std::any_of(std::begin(APPS), std::end(APPS),
                    [this](const auto& app) { return !appMap[app.type]; })) {
        ReAllocResource();
    }
    PausedNotifiers paused;
    for (const auto& app : APPS) {
        if (const BaseApp* known = appMap[app.type]) {
            known->PauseNotifiers(paused);
        }
    }
    std::vector<std::shared_ptr<std::thread>> workers;
    for (const auto& app : APPS) {
        try {
            workers.push_back(std::make_shared<std::thread>([this, &app] { StopApp(app.type, true); }));
        } catch (const std::system_error&) {
            // No thread is available, so stop it on this one. Otherwise the child would outlive the program.
            StopApp(app.type, true);
        }
    }
    for (const auto& worker : workers) {
        worker->join();
    }
}

void AppManager::DeleteAll()
{
    for (const auto& app : APPS) {
        appMap[app.type] = nullptr;
    }
}

void AppManager::ReAllocResource()
{
    LOG_INFO("AppManager ReAllocResource");
    UnregisterCallback();
    InitAppMap();
    RegisterCallback();
}

AppManager::AppType AppManager::GetTypeFromApp(const BaseApp& app) const
{
    for (const auto& known : APPS) {
        if (appMap.at(known.type) == &app) {
            return known.type;
        }
    }
    return APP_TYPE_END;
}

void AppManager::InitAppMap()
{
    for (const auto& app : APPS) {
        appMap[app.type] = app.get();
    }
}

void AppManager::RegisterCallback()
{
    // DeleteAll() does not disconnect, so the connections can exist already.
    constexpr auto ONCE = Qt::UniqueConnection;
    for (const auto& known : APPS) {
        const BaseApp* app = FindApp(known.type);
        if (app == nullptr) {
            continue;
        }
        connect(app, &BaseApp::AppStarted, this, &AppManager::Started, ONCE);
        connect(app, &BaseApp::AppFinished, this, &AppManager::Finished, ONCE);
        connect(app, &BaseApp::AppError, this, &AppManager::Error, ONCE);
        connect(app, &BaseApp::AppEventInited, this, &AppManager::EventInited, ONCE);
        connect(app, &BaseApp::AppEventRunning, this, &AppManager::EventRunning, ONCE);
        connect(app, &BaseApp::AppEventStopped, this, &AppManager::EventStopped, ONCE);
    }
}

void AppManager::UnregisterCallback()
{
    for (const auto& known : APPS) {
        const BaseApp* app = FindApp(known.type);
        if (app == nullptr) {
            continue;
        }
        disconnect(app, &BaseApp::AppStarted, this, &AppManager::Started);
        disconnect(app, &BaseApp::AppFinished, this, &AppManager::Finished);
        disconnect(app, &BaseApp::AppError, this, &AppManager::Error);
        disconnect(app, &BaseApp::AppEventInited, this, &AppManager::EventInited);
        disconnect(app, &BaseApp::AppEventRunning, this, &AppManager::EventRunning);
        disconnect(app, &BaseApp::AppEventStopped, this, &AppManager::EventStopped);
    }
}

void AppManager::Started()
{
    const AppType type = SenderType();
    if (type != APP_TYPE_END) {
        emit AppStarted(type);
    }
}

void AppManager::Finished(int exitCode)
{
    const AppType type = SenderType();
    if (type != APP_TYPE_END) {
        emit AppFinished(type, exitCode);
    }
}

void AppManager::Error(QProcess::ProcessError err)
{
    const AppType type = SenderType();
    if (type != APP_TYPE_END) {
        emit AppError(type, err);
    }
}

void AppManager::EventInited()
{
    const AppType type = SenderType();
    if (type != APP_TYPE_END) {
        emit AppEvent(type, APP_EVENT_INITED);
    }
}

void AppManager::EventRunning()
{
    const AppType type = SenderType();
    if (type != APP_TYPE_END) {
        emit AppEvent(type, APP_EVENT_RUNNING);
    }
}

void AppManager::EventStopped()
{
    const AppType type = SenderType();
    if (type != APP_TYPE_END) {
        emit AppEvent(type, APP_EVENT_STOPPED);
    }
}

BaseApp* AppManager::FindApp(AppType type) const
{
    const auto found = appMap.find(type);
    return found == appMap.end() ? nullptr : found->second;
}

AppManager::AppType AppManager::SenderType() const
{
    const auto* app = qobject_cast<const BaseApp*>(sender());
    return app == nullptr ? APP_TYPE_END : GetTypeFromApp(*app);
}

#include "moc_AppManager.cpp"
