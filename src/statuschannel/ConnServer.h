#pragma once

#include <QObject>
#include <QString>
#include <string>

#include "statuschannel/LocalServer.h"

/// The server side of the status channel: listens on a local socket, receives the messages of any number of
/// clients, and emits a signal when the reported status changes.
///
/// A BaseApp owns it, and it lives on the thread of that object. It stores one status for all clients. This
/// status does not change when a client disconnects.
class ConnServer : public QObject
{
    Q_OBJECT

public:
    /// `name`: the socket's name or full path (UTF-8). Does not listen yet.
    ConnServer(const std::string& name, QObject* parent);

    /// Listens. Replaces the socket file of a server that no longer runs. Returns 0, or -1 if the file cannot
    /// be replaced. Also returns 0 after any other failure; the server then receives nothing.
    int ServerStart();

    /// Handles one message, and emits a signal if it changes the status. Returns 0, also if the message
    /// contains an unknown status. Returns -1 if it is not a JSON object with a text under "status".
    int ParseMsg(const QByteArray& msg);

signals:
    /// The status has changed to "init", "run" or "stop".
    void AppInited();
    void AppRunning();
    void AppStoped();

public slots:
    /// Accepts one pending connection. Returns 0, or -1 if there is none.
    int OnNewConnect();
    /// Reads all bytes from the socket that sent the signal, as one message. Returns the result of
    /// ParseMsg(), or -1 if no socket sent a signal.
    int RecvMsg();
    /// Logs that a client has disconnected, and closes its socket. The socket object needs up to 4 KiB of
    /// memory until the server is destroyed.
    void RemoveConn() const;

private:
    QString serverName;
    LocalServer localServer;
    QString curStatus;
};
