#pragma once

#include <QLocalSocket>
#include <QObject>
#include <QString>
#include <QTimer>
#include <atomic>
#include <string>

#include "statuschannel/AppMessage.h"

/// The reporting end of the status channel, for a program that the assistant supervises.
///
/// Construct it, call ConnToServer() once, then AppInit(), AppRun() and AppStop() as the program's state
/// changes. Each new state is sent at once, the current one is repeated every 1000 ms, and a lost connection
/// is made again by the next send. It needs an event loop on its thread, which a send can block for up to
/// 1000 ms while the server is away. AppInit(), AppRun() and AppStop() may be called from another thread; the
/// send then happens on the object's.
class ConnClient : public QObject
{
    Q_OBJECT

public:
    /// `name`: the server's socket name or full path, UTF-8. Nothing is connected yet.
    explicit ConnClient(const std::string& name);
    ~ConnClient() override;

    /// Connects, waiting for at most 1000 ms, and starts the repeats. 0, or -1 on failure: then nothing is
    /// repeated.
    int ConnToServer();

    /// Set the state and send it.
    void AppInit();
    void AppRun();
    void AppStop();

    /// Sends one message, connecting first where needed. 0, or -1 if it could not be handed to the socket.
    int SendAppStatus(const QByteArray& msg);

signals:
    /// A state has been set: an AppStatus as a char.
    void SendStatusSig(char status);

public slots:
    /// Leaves the socket unconnected, so that the next send connects anew.
    void DisConnect();
    /// Sends the current state.
    void SendCurStatus();
    /// Sends the state given; a value that is no AppStatus is only logged.
    void SendStatusOnce(char status);

private:
    QLocalSocket localSocket;
    QString serverName;
    /// Set by any thread, read by the object's own.
    std::atomic<AppStatus> curStatus;
    QTimer statusTimer;
};
