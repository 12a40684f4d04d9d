#include "statuschannel/ConnServer.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QLocalSocket>

#include "platform/Log.h"
#include "statuschannel/AppMessage.h"

namespace {
constexpr char MODULE_TAG[] = "UTILS";
} // namespace

ConnServer::ConnServer(const std::string& name, QObject* parent)
    : QObject(parent), serverName(QString::fromStdString(name)), localServer(this)
{}

int ConnServer::ServerStart()
{
    connect(&localServer, &QLocalServer::newConnection, this, &ConnServer::OnNewConnect);
    return localServer.Start(serverName);
}

int ConnServer::OnNewConnect()
{
    // The server remains the parent of the socket and deletes it in its destructor.
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
    if (auto* socket = qobject_cast<QLocalSocket*>(sender())) {
        socket->close();
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
