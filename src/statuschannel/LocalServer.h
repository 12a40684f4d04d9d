#pragma once

#include <QLocalServer>
#include <QString>

/// A local server that replaces the socket file of a server that no longer runs, and that listens again after
/// a lack of file descriptors.
///
/// QLocalServer stops listening when accept() fails, and does not report this. This class detects it and
/// listens again within one second after descriptors are free. For this reason, close() has no lasting
/// effect: the server listens again. The owner's thread needs an event loop.
class LocalServer : public QLocalServer
{
    Q_OBJECT

public:
    using QLocalServer::QLocalServer;

    /// Listens on `name`, a socket name or a full path. Returns 0, or -1 if an existing socket file of this
    /// name cannot be replaced. Also returns 0 after any other failure; the server then gets no connections.
    int Start(const QString& name);

private slots:
    void ListenAgain();

private:
    bool Listen();

    QString wantedName;
};
