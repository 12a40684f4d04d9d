#include "statuschannel/ConnServer.h"

#include <QAbstractSocket>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLocalSocket>
#include <malloc.h>

#include "platform/Logger.h"
#include "statuschannel/AppMessage.h"

namespace {
constexpr char MODULE_TAG[] = "UTILS";
/// A crowd that leaves is cleared up behind in a few goes; one client's buffers wait for the next.
constexpr int GONE_BEFORE_TRIM = 64;

/// Takes from a device what only a living connection needs. The call past its own open() leaves it closed and
/// drops the text of its last error, for which there is no other door.
void GiveBack(QIODevice& device)
{
    device.close();
    device.QIODevice::open(QIODevice::NotOpen);
    device.disconnect();
}
} // namespace

ConnServer::ConnServer(const std::string& name, QObject* parent)
    : QObject(parent), serverName(QString::fromStdString(name)), localServer(this)
{}

int ConnServer::ServerStart()
{
    connect(&localServer, &QLocalServer::newConnection, this, &ConnServer::OnNewConnect);
    if (localServer.listen(serverName)) {
        return 0;
    }
    if (localServer.serverError() != QAbstractSocket::AddressInUseError) {
        // Not a failure: the processes still tell of their end, only the reports stay away.
        return 0;
    }
    QLocalServer::removeServer(serverName);
    if (!localServer.listen(serverName)) {
        LOG_ERROR("Start localserver failed.");
        return -1;
    }
    return 0;
}

int ConnServer::OnNewConnect()
{
    // The server stays the socket's parent and frees it when it dies itself, not earlier.
    QLocalSocket* socket = localServer.nextPendingConnection();
    if (socket == nullptr) {
        return -1;
    }
    connect(socket, &QIODevice::readyRead, this, &ConnServer::RecvMsg);
    connect(socket, &QLocalSocket::disconnected, this, &ConnServer::RemoveConn);
    LOG_INFO("New application connected.");
    return 0;
}

int ConnServer::RecvMsg()
{
    auto* socket = qobject_cast<QLocalSocket*>(sender());
    if (socket == nullptr) {
        LOG_ERROR("ConnServer local is nullptr.");
        return -1;
    }
    return ParseMsg(socket->readAll());
}

void ConnServer::RemoveConn() const
{
    if (sender() == nullptr) {
        return;
    }
    LOG_INFO("App close the connect.");
    auto* socket = qobject_cast<QLocalSocket*>(sender());
    if (socket == nullptr) {
        return;
    }
    // It stays until the server goes, so it keeps as little as it can: its buffers alone are ten times what
    // is left.
    const auto inner = socket->findChildren<QAbstractSocket*>(QString(), Qt::FindDirectChildrenOnly);
    GiveBack(*socket);
    for (QAbstractSocket* one : inner) {
        GiveBack(*one);
    }
    if (++gone % GONE_BEFORE_TRIM == 0) {
        // What lies between sockets that stay would otherwise never go back to the system.
        malloc_trim(0);
    }
}

int ConnServer::ParseMsg(const QByteArray& msg)
{
    QJsonParseError parseError{};
    const QJsonDocument document = QJsonDocument::fromJson(msg, &parseError);
    if (document.isNull() || parseError.error != QJsonParseError::NoError) {
        LOG_ERROR("Json parse error %s", parseError.errorString().toUtf8().constData());
        return -1;
    }
    if (!document.isObject()) {
        LOG_ERROR("Message error");
        return -1;
    }
    const QJsonObject message = document.object();
    if (!message.contains(StatusText::KEY)) {
        LOG_ERROR("Message error");
        return -1;
    }
    const QJsonValue value = message.value(StatusText::KEY);
    if (value.type() != QJsonValue::String) {
        LOG_ERROR("Message error");
        return -1;
    }
    const QString status = value.toString();
    if (status == curStatus) {
        return 0;
    }
    if (status == StatusText::INIT) {
        curStatus = status;
        emit AppInited();
    } else if (status == StatusText::RUN) {
        curStatus = status;
        emit AppRunning();
    } else if (status == StatusText::STOP) {
        curStatus = status;
        emit AppStoped();
    }
    return 0;
}

#include "moc_ConnServer.cpp"
