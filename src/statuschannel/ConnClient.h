#pragma once

#include <QLocalSocket>
#include <QObject>
#include <QString>
#include <QTimer>
#include <atomic>
#include <string>

#include "statuschannel/AppMessage.h"

/// The client side of the status channel, for a program that the assistant supervises.
///
/// Construct it, call ConnToServer() once, then AppInit(), AppRun() and AppStop() when the program's status
/// changes. Each new status is sent immediately, and the current one is repeated every 1000 ms. The next send
/// restores a lost connection. The object needs an event loop on its thread; a send can block that thread for
/// up to 1000 ms while the server does not answer. AppInit(), AppRun() and AppStop() may be called on any
/// thread; the object's thread sends.
class ConnClient : public QObject
{
    Q_OBJECT

public:
    /// `name`: the server's socket name or full path (UTF-8). Does not connect yet.
    explicit ConnClient(const std::string& name);
    ~ConnClient() override;

    /// Connects, which can take up to 1000 ms, and starts to repeat the status. Returns 0, or -1 on failure;
    /// then it does not repeat.
    int ConnToServer();

    /// Sets the status and sends it.
    void AppInit();
    void AppRun();
    void AppStop();

    /// Sends one message; connects first if necessary. Returns 0, or -1 if the socket does not accept it.
    int SendAppStatus(const QByteArray& msg);

signals:
    /// The status was set; `status` is an AppStatus.
    void SendStatusSig(char status);

public slots:
    /// Disconnects the socket, so that the next send connects again.
    void DisConnect();
    /// Sends the current status.
    void SendCurStatus();
    /// Sends `status`. A value that is no AppStatus is logged and not sent.
    void SendStatusOnce(char status);

private:
    QLocalSocket localSocket;
    QString serverName;
    /// Set by any thread, read by the thread of this object.
    std::atomic<AppStatus> curStatus;
    QTimer statusTimer;
};
