#pragma once

#include <QMetaObject>
#include <QObject>
#include <QProcess>
#include <QStringList>
#include <memory>
#include <string>
#include <vector>

#include "config/Constant.h"
#include "platform/InheritedState.h"
#include "platform/Log.h"
#include "statuschannel/ConnServer.h"
#include "supervision/PausedNotifiers.h"

/// A supervised application: a program with its arguments, the processes that execute it, and the status
/// server to which they report. Six signals report what happens to the processes, and what they report.
///
/// The singleton of the derived class owns it, and only AppManager calls it. It lives on the main thread.
/// Only Stop(true) also runs on a worker thread of AppManager, while the main thread waits for that thread. A
/// process that ends is not started again.
class BaseApp : public QObject
{
    Q_OBJECT

public:
    /// Starts the status server. `appName` (UTF-8) is the name of its socket, and the application's name in
    /// the log.
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

    /// Connects the signals of `process` to the slots below.
    virtual void RegisterCallback(QProcess& process)
    {
        connect(&process, &QProcess::errorOccurred, this, &BaseApp::Error);
        connect(&process, &QProcess::started, this, &BaseApp::Started);
        connect(&process, QOverload<int>::of(&QProcess::finished), this, &BaseApp::Finished);
    }

    /// Disconnects the signals of `process`.
    virtual void UnregisterCallback(QProcess& process)
    {
        disconnect(&process, &QProcess::errorOccurred, this, &BaseApp::Error);
        disconnect(&process, &QProcess::started, this, &BaseApp::Started);
        disconnect(&process, QOverload<int>::of(&QProcess::finished), this, &BaseApp::Finished);
    }

    /// Starts a process, even if one runs already, and returns before it runs. Signals report whether it
    /// started. The process inherits only the descriptors 0, 1 and 2. Its input is a pipe, which reaches
    /// end-of-file when the assistant ends. Its output goes to the null device.
    virtual void Start()
    {
        ClearVector();
        auto process = std::make_shared<QProcess>();
        RegisterCallback(*process);
        processVector.push_back(process);
        process->setStandardOutputFile(QProcess::nullDevice());
        process->setStandardErrorFile(QProcess::nullDevice());
        Brevora::InheritedState::KeepDescriptorsFromChildren();
        process->start(program, arguments, QIODevice::ReadWrite);
    }

    /// Sends SIGTERM to the processes, one after the other. If `wait` is true, it waits for each of them for
    /// up to APP_STOP_TIMEOUT_MS before the next, and kills it if it still runs. Otherwise, a process that
    /// ignores SIGTERM continues to run.
    virtual void Stop(bool wait)
    {
        ClearVector();
        // Iterates over a copy: waiting emits signals, and a slot may start or stop the application again.
        const auto running = processVector;
        for (const auto& process : running) {
            // A process that is emitting errorOccurred(Crashed) has ended, but its state is still Running.
            if (process->state() == QProcess::NotRunning || process->error() == QProcess::Crashed) {
                continue;
            }
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

    /// Removes every process whose state is not Running. A process that is still starting is killed and
    /// removed, too; its signal started() is not handled. A slot that handles a signal of a process may call
    /// this function: the process is then destroyed later.
    void ClearVector()
    {
        const std::size_t before = processVector.size();
        LOG_INFO("processVector size is %d", static_cast<int>(before));
        for (auto at = processVector.begin(); at != processVector.end();) {
            if ((*at)->state() == QProcess::Running) {
                ++at;
            } else {
                UnregisterCallback(**at);
                (*at)->kill();
                removed.push_back(*at);
                at = processVector.erase(at);
            }
        }
        DestroyRemoved();
        LOG_INFO("delete %d invalid process", static_cast<int>(before - processVector.size()));
    }

    /// Disables the socket notifiers of all processes. Call it on the main thread before another thread waits
    /// for the processes.
    void PauseNotifiers(PausedNotifiers& paused) const
    {
        for (const auto& process : processVector) {
            paused.Pause(*process);
        }
    }

signals:
    /// A process failed to start, crashed or had another error. Unlike the next two signals, it is emitted
    /// for each process.
    void AppError(QProcess::ProcessError err);
    /// The first process of the application runs.
    void AppStarted();
    /// The last process of the application has ended with the exit code `exitCode`.
    void AppFinished(int exitCode);
    /// A process has reported the status "init", "run" or "stop".
    void AppEventInited();
    void AppEventRunning();
    void AppEventStopped();

public slots:
    virtual void Error(QProcess::ProcessError err)
    {
        const Emission emission(*this);
        LOG_INFO("app[%s]error: %d", name.c_str(), static_cast<int>(err));
        emit AppError(err);
    }

    virtual void Started()
    {
        const Emission emission(*this);
        LOG_INFO("app[%s] started", name.c_str());
        ++count;
        LOG_INFO("count is %d", count);
        if (count == 1) {
            emit AppStarted();
        }
    }

    virtual void Finished(int exitCode)
    {
        const Emission emission(*this);
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
    /// Exists while a slot handles a signal of a process.
    class Emission
    {
    public:
        explicit Emission(BaseApp& owner) : app(owner) { ++app.emissions; }
        ~Emission()
        {
            --app.emissions;
            // The event loop destroys the processes, because they are still emitting when the slot returns.
            QMetaObject::invokeMethod(&app, &BaseApp::DestroyRemoved, Qt::QueuedConnection);
        }
        Emission(const Emission&) = delete;
        Emission& operator=(const Emission&) = delete;

    private:
        BaseApp& app;
    };

    /// Destroys the removed processes, unless a signal is being handled.
    void DestroyRemoved()
    {
        if (emissions == 0) {
            removed.clear();
        }
    }

    // Declared before processVector and therefore destroyed after it. The destructor of a QProcess that is
    // starting emits signals, whose slots use these two members.
    int emissions = 0;
    /// Processes that were removed while a signal was being handled.
    std::vector<std::shared_ptr<QProcess>> removed;

protected:
    static constexpr char MODULE_TAG[] = "VELODESK";

    QString program;
    QStringList arguments;
    std::string name;
    std::vector<std::shared_ptr<QProcess>> processVector;
    int count;
    ConnServer connServer;
};
