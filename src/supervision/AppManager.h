#pragma once

#include <QObject>
#include <QProcess>
#include <map>

#include "platform/Singleton.h"

class BaseApp;

/// Starts and stops the supervised applications, each by its AppType, and forwards their signals. Use it as
/// Singleton<AppManager>. Its construction creates the applications and their status servers.
///
/// Main thread only. No function returns a failure: the signals report what became of a request.
class AppManager : public QObject
{
    Q_OBJECT

public:
    enum AppType : int
    {
        TANDRA_APP = 0,
        /// The number of types; also returned for an object that is no known application.
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
    /// Disconnects from the applications, then calls StopAll(), which can block for seconds.
    ~AppManager() override;

    /// Starts one process of the application. Returns before the process runs.
    void StartApp(AppType type);
    /// Asks all processes of the application to terminate. With `wait`, waits up to 3000 ms for each and then
    /// kills it.
    void StopApp(AppType type, bool wait);
    /// Stops all applications in parallel, each with `wait` on its own worker thread, and returns when all
    /// have stopped. Uses the calling thread if no thread can be created.
    void StopAll();
    /// Removes the applications from the map without deleting them. The next StartApp(), StopApp() or
    /// StopAll() registers them again.
    void DeleteAll();
    /// Registers all applications and connects their signals again.
    void ReAllocResource();
    /// Returns the type of `app`, or APP_TYPE_END.
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
    /// The child has reported another status.
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
