#include "supervision/AppManager.h"

#include <system_error>
#include <thread>

#include "supervision/TandraApp.h"

namespace {
constexpr char MODULE_TAG[] = "VELODESK";

constexpr AppManager::AppType ALL_TYPES[] = {AppManager::TANDRA_APP};

/// The application of that type, whether the manager knows it at the moment or not.
BaseApp* AppOf(AppManager::AppType type)
{
    return type == AppManager::TANDRA_APP ? Singleton<TandraApp>::GetInstance() : nullptr;
}
} // namespace

AppManager::AppManager()
{
    // Under their full names, so that the signals can be queued to other threads.
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
    // A forgotten application comes back in its worker, with processes that live on the main thread.
    PausedNotifiers paused;
    for (const AppType type : ALL_TYPES) {
        if (const BaseApp* app = AppOf(type)) {
            app->PauseNotifiers(paused);
        }
    }
    std::vector<std::shared_ptr<std::thread>> workers;
    for (const AppType type : ALL_TYPES) {
        try {
            workers.push_back(std::make_shared<std::thread>([this, type] { StopApp(type, true); }));
        } catch (const std::system_error&) {
            // No child outlives the program because the system has no thread left.
            StopApp(type, true);
        }
    }
    for (const auto& worker : workers) {
        worker->join();
    }
    paused.Resume();
}

void AppManager::DeleteAll()
{
    for (const AppType type : ALL_TYPES) {
        appMap[type] = nullptr;
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
    for (const AppType type : ALL_TYPES) {
        if (appMap.at(type) == &app) {
            return type;
        }
    }
    return APP_TYPE_END;
}

void AppManager::InitAppMap()
{
    for (const AppType type : ALL_TYPES) {
        appMap[type] = AppOf(type);
    }
}

void AppManager::RegisterCallback()
{
    // The wiring of a forgotten application is still there when it comes back.
    constexpr auto ONCE = Qt::UniqueConnection;
    for (const AppType type : ALL_TYPES) {
        const BaseApp* app = FindApp(type);
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
    for (const AppType type : ALL_TYPES) {
        const BaseApp* app = FindApp(type);
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
