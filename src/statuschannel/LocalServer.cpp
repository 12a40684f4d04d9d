#include "statuschannel/LocalServer.h"

#include <QAbstractSocket>
#include <QSocketNotifier>
#include <QTimer>

#include "platform/Log.h"

namespace {
constexpr char MODULE_TAG[] = "UTILS";
constexpr int RETRY_INTERVAL_MS = 1000;
} // namespace

int LocalServer::Start(const QString& name)
{
    wantedName = name;
    if (Listen()) {
        return 0;
    }
    if (serverError() != QAbstractSocket::AddressInUseError) {
        // Not a failure for the caller: the program also works without this server.
        return 0;
    }
    removeServer(wantedName);
    if (!Listen()) {
        LOG_ERROR("Start localserver failed.");
        return -1;
    }
    return 0;
}

void LocalServer::ListenAgain()
{
    // Required, because isListening() still returns true after Qt has closed the socket.
    close();
    if (Listen()) {
        LOG_WARNING("Local server closed, listen again.");
    } else {
        QTimer::singleShot(RETRY_INTERVAL_MS, this, &LocalServer::ListenAgain);
    }
}

bool LocalServer::Listen()
{
    if (!listen(wantedName)) {
        return false;
    }
    // Qt does not report that it closes the server. It destroys the notifier of the listening socket, and
    // this is observable.
    connect(findChild<QSocketNotifier*>(), &QObject::destroyed, this, &LocalServer::ListenAgain);
    return true;
}

#include "moc_LocalServer.cpp"
