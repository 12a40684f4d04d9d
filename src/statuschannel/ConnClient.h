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
/// The program owns it and calls ConnToServer() once. Whenever its status changes, it calls AppInit(),
/// AppRun() or AppStop(). Each new status is sent immediately, and the current status is repeated every 1000
/// ms. If the connection is lost, the next send connects again.
///
/// The object's thread needs an event loop. A send can block this thread for up to 1000 ms if the server does
/// not answer. Any thread may call AppInit(), AppRun() and AppStop(); the object's thread then sends.
class ConnClient : public QObject
{
    Q_OBJECT

public:
    /// `name`: the server's socket name or full path (UTF-8). Does not connect yet.
    explicit ConnClient(const std::string& name);
    ~ConnClient() override;

    /// Connects and starts to repeat the status. Blocks for up to 1000 ms. Returns 0, or -1 on failure; the
    /// status is then not repeated.
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
