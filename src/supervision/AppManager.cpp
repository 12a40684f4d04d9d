#include "supervision/AppManager.h"

#include <thread>

#include "supervision/TandraApp.h"

namespace {
constexpr char MODULE_TAG[] = "VELODESK";

constexpr AppManager::AppType FIRST_TYPE = AppManager::TANDRA_APP;

AppManager::AppType Next(AppManager::AppType type)
{
    return static_cast<AppManager::AppType>(type + 1);
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
    std::vector<QPointer<QSocketNotifier>> paused;
    for (AppType type = FIRST_TYPE; type < APP_TYPE_END; type = Next(type)) {
        if (const BaseApp* app = FindApp(type)) {
            const auto notifiers = app->PauseNotifiers();
            paused.insert(paused.end(), notifiers.begin(), notifiers.end());
        }
    }
    std::vector<std::shared_ptr<std::thread>> workers;
    for (AppType type = FIRST_TYPE; type < APP_TYPE_END; type = Next(type)) {
        workers.push_back(std::make_shared<std::thread>([this, type] { StopApp(type, true); }));
    }
    for (const auto& worker : workers) {
        worker->join();
    }
    // Those of a process that outlived the wait are still there, and its end has to be heard.
    for (const auto& notifier : paused) {
        if (notifier) {
            notifier->setEnabled(true);
        }
    }
}

void AppManager::DeleteAll()
{
    for (AppType type = FIRST_TYPE; type < APP_TYPE_END; type = Next(type)) {
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
    for (AppType type = FIRST_TYPE; type < APP_TYPE_END; type = Next(type)) {
        if (appMap.at(type) == &app) {
            return type;
        }
    }
    return APP_TYPE_END;
}

void AppManager::InitAppMap()
{
    appMap[TANDRA_APP] = Singleton<TandraApp>::GetInstance();
}

void AppManager::RegisterCallback()
{
    for (AppType type = FIRST_TYPE; type < APP_TYPE_END; type = Next(type)) {
        const BaseApp* app = FindApp(type);
        if (app == nullptr) {
            continue;
        }
        connect(app, &BaseApp::AppStarted, this, &AppManager::Started);
        connect(app, &BaseApp::AppFinished, this, &AppManager::Finished);
        connect(app, &BaseApp::AppError, this, &AppManager::Error);
        connect(app, &BaseApp::AppEventInited, this, &AppManager::EventInited);
        connect(app, &BaseApp::AppEventRunning, this, &AppManager::EventRunning);
        connect(app, &BaseApp::AppEventStopped, this, &AppManager::EventStopped);
    }
}

void AppManager::UnregisterCallback()
{
    for (AppType type = FIRST_TYPE; type < APP_TYPE_END; type = Next(type)) {
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
