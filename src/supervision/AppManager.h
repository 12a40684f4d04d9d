#pragma once

#include <QObject>
#include <QProcess>
#include <map>

#include "platform/Singleton.h"

class BaseApp;

/// The one object through which child applications are started, stopped and heard, each by its AppType.
/// Reached as Singleton<AppManager>; making it makes the applications, and with them their status servers.
///
/// Main thread only. Nothing reports a failure to the caller: what becomes of a request is told by the
/// signals.
class AppManager : public QObject
{
    Q_OBJECT

public:
    enum AppType : int
    {
        TANDRA_APP = 0,
        /// The end of the range; also the answer that an object is no known application.
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
    /// Cuts the wiring and stops all children, which blocks as StopAll() does.
    ~AppManager() override;

    /// Starts one process of the application and returns before it is up.
    void StartApp(AppType type);
    /// Stops all processes of the application. With `wait`, blocks for up to 3000 ms for each and then kills
    /// it.
    void StopApp(AppType type, bool wait);
    /// Stops all applications side by side, each on a worker thread with `wait`, and returns when that is
    /// done. Where no thread can be made, on the caller's.
    void StopAll();
    /// Forgets the applications without deleting them; the next StartApp() or StopApp() brings them back.
    void DeleteAll();
    /// Rebuilds the map of applications and the wiring.
    void ReAllocResource();
    /// The type of `app`, or APP_TYPE_END.
    AppType GetTypeFromApp(const BaseApp& app) const;

    /// The steps of ReAllocResource(): cuts the wiring, takes the applications into the map, wires them.
    void UnregisterCallback();
    void InitAppMap();
    void RegisterCallback();

signals:
    /// The first process of the application runs; its own state is not known yet.
    void AppStarted(AppManager::AppType type);
    /// The last process of the application has ended.
    void AppFinished(AppManager::AppType type, int exitCode);
    /// A process failed to start, crashed or had another error; AppFinished() may follow.
    void AppError(AppManager::AppType type, QProcess::ProcessError err);
    /// The child's own report has changed.
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
    /// The type of the application whose signal is being handled, or APP_TYPE_END.
    AppType SenderType() const;

    std::map<AppType, BaseApp*> appMap;
};
