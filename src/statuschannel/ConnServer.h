#pragma once

#include <QObject>
#include <QString>
#include <string>

#include "statuschannel/LocalServer.h"

/// The server side of the status channel: listens on a local socket, receives the messages of any number of
/// clients, and emits a signal when the reported status changes.
///
/// A BaseApp owns it, and it lives on the thread of that object. It stores one status for all clients, which
/// does not change when a client disconnects.
class ConnServer : public QObject
{
    Q_OBJECT

public:
    /// `name`: the socket's name or full path (UTF-8). Does not listen yet.
    ConnServer(const std::string& name, QObject* parent);

    /// Listens and takes over a stale socket file. Returns 0, or -1 if the name stays in use. Returns 0 after
    /// any other failure, too: the server then receives nothing.
    int ServerStart();

    /// Handles one message: a JSON object (RFC 8259). Returns 0 if it was handled or its status is unknown,
    /// -1 if it is malformed.
    int ParseMsg(const QByteArray& msg);

signals:
    /// The status has changed to "init", "run" or "stop".
    void AppInited();
    void AppRunning();
    void AppStoped();

public slots:
    /// Accepts one pending connection. Returns 0, or -1 if there is none.
    int OnNewConnect();
    /// Reads everything from the sending socket as one message. Returns the result of ParseMsg(), or -1.
    int RecvMsg();
    /// Logs that a client has disconnected, and closes its socket. The object lives as long as the server and
    /// costs up to 4 KiB.
    void RemoveConn() const;

private:
    QString serverName;
    LocalServer localServer;
    QString curStatus;
};
