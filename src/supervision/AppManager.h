#pragma once

#include <QObject>
#include <QProcess>
#include <map>

#include "platform/Singleton.h"

class BaseApp;

/// Starts and stops the supervised applications and forwards their signals. An AppType identifies each
/// application.
///
/// Use it as Singleton<AppManager>, which owns it, on the main thread. Its constructor creates the
/// applications and their status servers. The singletons of the applications own them. No function returns a
/// failure: signals report whether an application started or ended.
class AppManager : public QObject
{
    Q_OBJECT

public:
    enum AppType : int
    {
        TANDRA_APP = 0,
        /// The number of types. GetTypeFromApp() returns it for an unknown object.
        APP_TYPE_END = 1,
    };
    Q_ENUM(AppType)

    enum AppEventType : int
    {
        APP_EVENT_INITED = 0,
        APP_EVENT_RUNNING = 1,
        APP_EVENT_STOPPED = 2,
    };
    Q_ENUM(AppEventType)

    AppManager();
    /// Disconnects from the applications, then calls StopAll(), which can block for 3000 ms per process.
    ~AppManager() override;

    /// Starts one process of the application. Returns before the process runs.
    void StartApp(AppType type);
    /// Sends SIGTERM to the processes of the application, one after the other. If `wait` is true, it waits
    /// for each of them for up to 3000 ms before the next, and kills it if it still runs.
    void StopApp(AppType type, bool wait);
    /// Calls StopApp() with `wait` for all applications in parallel, each on its own worker thread, and
    /// returns when all have stopped. If no thread can be created, it uses the calling thread.
    void StopAll();
    /// Removes the applications from the map without deleting them. The next StartApp(), StopApp() or
    /// StopAll() registers them again.
    void DeleteAll();
    /// Registers all applications and connects their signals again.
    void ReAllocResource();
    /// Returns the type of `app`, or APP_TYPE_END if it is not registered.
    AppType GetTypeFromApp(const BaseApp& app) const;

    /// The steps of ReAllocResource(): disconnect the signals, fill the map, connect the signals.
    void UnregisterCallback();
    void InitAppMap();
    void RegisterCallback();

signals:
    /// The first process of the application runs. It has not reported a status yet.
    void AppStarted(AppManager::AppType type);
    /// The last process of the application has ended.
    void AppFinished(AppManager::AppType type, int exitCode);
    /// A process failed to start, crashed or had another error; AppFinished() may follow.
    void AppError(AppManager::AppType type, QProcess::ProcessError err);
    /// The application has reported a status that differs from its last one.
    void AppEvent(AppManager::AppType type, AppManager::AppEventType event);

private slots:
    void Started();
    void Finished(int exitCode);
    void Error(QProcess::ProcessError err);
    void EventInited();
    void EventRunning();
    void EventStopped();

private:
    BaseApp* FindApp(AppType type) const;
    /// Returns the type of the application whose signal is being handled, or APP_TYPE_END.
    AppType SenderType() const;

    std::map<AppType, BaseApp*> appMap;
};
