#pragma once

#include <QMetaObject>
#include <QObject>
#include <QProcess>
#include <QStringList>
#include <algorithm>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "config/Constant.h"
#include "platform/Logger.h"
#include "statuschannel/ConnServer.h"
#include "supervision/PausedNotifiers.h"

/// One child application as the assistant sees it: a program with its arguments, the processes that run it,
/// and a status server on which it reports what it is doing. Process events and reports become six signals.
///
/// Lives on the main thread, AppManager being its only caller. Nothing here starts a child again by itself.
/// The one thing that runs elsewhere is Stop(true) on AppManager's stop worker, while the main thread waits
/// for it.
class BaseApp : public QObject
{
    Q_OBJECT

public:
    /// `appName`: goes into the log lines and is the status server's socket name, UTF-8. The server listens
    /// from here on.
    explicit BaseApp(const std::string& appName) : name(appName), count(0), connServer(name, this)
    {
        qRegisterMetaType<QProcess::ProcessError>(
            QMetaObject::normalizedType("QProcess::ProcessError").constData());
        connServer.ServerStart();
        connect(&connServer, &ConnServer::AppInited, this, &BaseApp::EventInited);
        connect(&connServer, &ConnServer::AppRunning, this, &BaseApp::EventRunning);
        connect(&connServer, &ConnServer::AppStoped, this, &BaseApp::EventStopped);
    }

    ~BaseApp() override
    {
        disconnect(&connServer, &ConnServer::AppInited, this, &BaseApp::EventInited);
        disconnect(&connServer, &ConnServer::AppRunning, this, &BaseApp::EventRunning);
        disconnect(&connServer, &ConnServer::AppStoped, this, &BaseApp::EventStopped);
    }

    virtual void RegisterCallback(QProcess& process)
    {
        connect(&process, &QProcess::errorOccurred, this, &BaseApp::Error);
        connect(&process, &QProcess::started, this, &BaseApp::Started);
        connect(&process, QOverload<int>::of(&QProcess::finished), this, &BaseApp::Finished);
    }

    virtual void UnregisterCallback(QProcess& process)
    {
        disconnect(&process, &QProcess::errorOccurred, this, &BaseApp::Error);
        disconnect(&process, &QProcess::started, this, &BaseApp::Started);
        disconnect(&process, QOverload<int>::of(&QProcess::finished), this, &BaseApp::Finished);
    }

    /// Starts one more process, beside any that runs. The answer comes as signals.
    virtual void Start()
    {
        ClearVector();
        auto process = std::make_shared<QProcess>();
        RegisterCallback(*process);
        processVector.push_back(process);
        process->start(program, arguments, QIODevice::ReadWrite);
    }

    /// Asks each process to terminate. With `wait`, each gets APP_STOP_TIMEOUT_MS to end and is then killed;
    /// without, a process that ignores the request goes on.
    virtual void Stop(bool wait)
    {
        ClearVector();
        // A copy: the wait lets an end be heard, and who hears it may start the application anew.
        const auto running = processVector;
        for (const auto& process : running) {
            process->terminate();
            LOG_INFO("terminate process[%s]", name.c_str());
            if (!wait) {
                continue;
            }
            if (process->waitForFinished(GetConstant(Velodesk::APP_STOP_TIMEOUT_MS))) {
                continue;
            }
            LOG_INFO("kill process[%s]", name.c_str());
            process->kill();
        }
    }

    /// Forgets every process that does not run. One that is still starting counts as dead: it is destroyed,
    /// and its `started` never comes. One in whose own signal this is called is destroyed as soon as that
    /// signal has been delivered.
    void ClearVector()
    {
        const std::size_t before = processVector.size();
        LOG_INFO("processVector size is %d", static_cast<int>(before));
        for (auto at = processVector.begin(); at != processVector.end();) {
            if ((*at)->state() == QProcess::Running) {
                ++at;
            } else {
                UnregisterCallback(**at);
                if (IsBeingHeard(**at)) {
                    outlived.push_back(*at);
                }
                at = processVector.erase(at);
            }
        }
        LOG_INFO("delete %d invalid process", static_cast<int>(before - processVector.size()));
    }

    /// Switches off the socket notifiers of all processes, before another thread waits for them. Main thread.
    void PauseNotifiers(PausedNotifiers& paused) const
    {
        for (const auto& process : processVector) {
            paused.Pause(*process);
        }
    }

signals:
    /// A process failed to start, crashed or had another error; sent for each.
    void AppError(QProcess::ProcessError err);
    /// The first process of the application runs.
    void AppStarted();
    /// The last process of the application has ended, with its exit code.
    void AppFinished(int exitCode);
    /// The child's report has changed to "init", "run" or "stop".
    void AppEventInited();
    void AppEventRunning();
    void AppEventStopped();

public slots:
    virtual void Error(QProcess::ProcessError err)
    {
        const Hearing hearing(*this);
        LOG_INFO("app[%s]error: %d", name.c_str(), static_cast<int>(err));
        emit AppError(err);
    }

    virtual void Started()
    {
        const Hearing hearing(*this);
        LOG_INFO("app[%s] started", name.c_str());
        ++count;
        LOG_INFO("count is %d", count);
        if (count == 1) {
            emit AppStarted();
        }
    }

    virtual void Finished(int exitCode)
    {
        const Hearing hearing(*this);
        LOG_INFO("app[%s] finished: %d", name.c_str(), exitCode);
        if (count > 0) {
            --count;
        }
        LOG_INFO("count is %d", count);
        if (count == 0) {
            emit AppFinished(exitCode);
        }
    }

    virtual void EventInited()
    {
        LOG_INFO("app[%s] event inited", name.c_str());
        emit AppEventInited();
    }

    virtual void EventRunning()
    {
        LOG_INFO("app[%s] event running", name.c_str());
        emit AppEventRunning();
    }

    virtual void EventStopped()
    {
        LOG_INFO("app[%s] event stopped", name.c_str());
        emit AppEventStopped();
    }

private:
    /// Holds a process until the event loop is back where the process's signal came from.
    class Holder : public QObject
    {
    public:
        Holder(std::shared_ptr<QProcess> held, QObject* parent) : QObject(parent), process(std::move(held)) {}

    private:
        std::shared_ptr<QProcess> process;
    };

    /// Notes the process whose signal is being handled, for as long as a slot runs.
    class Hearing
    {
    public:
        explicit Hearing(BaseApp& owner) : app(owner)
        {
            app.heard.push_back(qobject_cast<QProcess*>(app.sender()));
        }
        ~Hearing()
        {
            app.heard.pop_back();
            app.LetGo();
        }
        Hearing(const Hearing&) = delete;
        Hearing& operator=(const Hearing&) = delete;

    private:
        BaseApp& app;
    };

    bool IsBeingHeard(const QProcess& process) const
    {
        return std::find(heard.begin(), heard.end(), &process) != heard.end();
    }

    /// Hands processes whose signals have been handled to the event loop. Not earlier: a deletion that is
    /// asked for in a loop inside of the handler would happen in there.
    void LetGo()
    {
        const auto done = std::stable_partition(
            outlived.begin(), outlived.end(), [this](const auto& process) { return IsBeingHeard(*process); });
        std::for_each(done, outlived.end(),
                      [this](auto& process) { (new Holder(std::move(process), this))->deleteLater(); });
        outlived.erase(done, outlived.end());
    }

    // In front of the processes: the destructor of one that is still starting is heard too.
    /// The senders of the signals that are being handled, the innermost last.
    std::vector<QProcess*> heard;
    /// Forgotten while one of their signals was being handled.
    std::vector<std::shared_ptr<QProcess>> outlived;

protected:
    static constexpr char MODULE_TAG[] = "VELODESK";

    QString program;
    QStringList arguments;
    std::string name;
    std::vector<std::shared_ptr<QProcess>> processVector;
    int count;
    ConnServer connServer;
};
