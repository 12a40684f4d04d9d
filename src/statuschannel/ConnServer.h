#pragma once

#include <QObject>
#include <QString>
#include <string>

#include "statuschannel/LocalServer.h"

/// The assistant's end of the status channel: listens on a named local socket, takes the messages of any
/// number of clients and fires a signal whenever the reported status changes.
///
/// Owned by a BaseApp; everything runs on the thread of its event loop. The stored status is one for all
/// clients and outlives each of them.
class ConnServer : public QObject
{
    Q_OBJECT

public:
    /// `name`: the socket's name or full path, UTF-8. Nothing listens yet.
    ConnServer(const std::string& name, QObject* parent);

    /// Listens, taking over a stale socket file. 0, or -1 if the name stays taken. A failure of another kind
    /// gives 0 too: the server is then deaf.
    int ServerStart();

    /// Takes in one message. 0 if it was handled or means nothing to us, -1 if it is malformed.
    int ParseMsg(const QByteArray& msg);

signals:
    /// The status has become "init", "run" or "stop".
    void AppInited();
    void AppRunning();
    void AppStoped();

public slots:
    /// Takes one pending connection. 0, or -1 if there is none.
    int OnNewConnect();
    /// Reads all that the sending socket holds and parses it as one message; gives ParseMsg()'s result, or
    /// -1.
    int RecvMsg();
    /// Logs that a client has disconnected, and closes its socket. The object lives as long as the server and
    /// costs up to 4 KiB.
    void RemoveConn() const;

private:
    QString serverName;
    LocalServer localServer;
    QString curStatus;
};
