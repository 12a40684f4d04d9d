#pragma once

#include <QLocalServer>
#include <QString>

/// A listening local socket that takes over a stale socket file and survives a lack of descriptors.
///
/// Qt closes a QLocalServer for good when `accept` fails, and does not report it. This class notices that and
/// listens again, within a second after descriptors are free; a close() by hand is undone, too. It lives on
/// the thread of its event loop.
class LocalServer : public QLocalServer
{
    Q_OBJECT

public:
    using QLocalServer::QLocalServer;

    /// Listens on `name` (a socket name or a full path). Returns 0, or -1 if the name stays in use. Returns 0
    /// after any other failure, too: the server then gets no connections.
    int Start(const QString& name);

private slots:
    void ListenAgain();

private:
    bool Listen();

    QString wantedName;
};
