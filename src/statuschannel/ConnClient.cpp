#include "statuschannel/ConnClient.h"

#include "platform/Log.h"

namespace {
constexpr char MODULE_TAG[] = "UTILS";
constexpr int CONNECT_TIMEOUT_MS = 1000;
constexpr int REPEAT_INTERVAL_MS = 1000;
} // namespace

ConnClient::ConnClient(const std::string& name)
    : serverName(QString::fromStdString(name)), curStatus(APP_STATUS_INIT)
{}

ConnClient::~ConnClient()
{
    if (statusTimer.isActive()) {
        statusTimer.stop();
    }
}

int ConnClient::ConnToServer()
{
    connect(&localSocket, &QLocalSocket::disconnected, this, &ConnClient::DisConnect);
    connect(this, &ConnClient::SendStatusSig, this, &ConnClient::SendStatusOnce);
    localSocket.connectToServer(serverName, QIODevice::ReadWrite);
    if (!localSocket.waitForConnected(CONNECT_TIMEOUT_MS)) {
        LOG_ERROR("Connection client connect timeout.");
        return -1;
    }
    LOG_INFO("Connection client connected.");
    connect(&statusTimer, &QTimer::timeout, this, &ConnClient::SendCurStatus);
    statusTimer.start(REPEAT_INTERVAL_MS);
    return 0;
}

void ConnClient::AppInit()
{
    curStatus = APP_STATUS_INIT;
    emit SendStatusSig(APP_STATUS_INIT);
    LOG_INFO("App status init.");
}

void ConnClient::AppRun()
{
    curStatus = APP_STATUS_RUN;
    emit SendStatusSig(APP_STATUS_RUN);
    LOG_INFO("App status running.");
}

void ConnClient::AppStop()
{
    curStatus = APP_STATUS_STOP;
    emit SendStatusSig(APP_STATUS_STOP);
    LOG_INFO("App status stop.");
}

int ConnClient::SendAppStatus(const QByteArray& msg)
{
    if (localSocket.state() == QLocalSocket::UnconnectedState) {
        localSocket.connectToServer(serverName, QIODevice::ReadWrite);
        LOG_INFO("Client start connect.");
    }
    if (localSocket.state() == QLocalSocket::ConnectingState) {
        if (!localSocket.waitForConnected(CONNECT_TIMEOUT_MS)) {
            LOG_ERROR("Connection client connect timeout.");
            return -1;
        }
        LOG_INFO("Connection client connected.");
    }
    if (localSocket.write(msg) == -1) {
        LOG_ERROR("Send message failed.");
        return -1;
    }
    return 0;
}

void ConnClient::DisConnect()
{
    localSocket.disconnectFromServer();
}

void ConnClient::SendCurStatus()
{
    if (SendAppStatus(AppMessage(curStatus).GetAppMsg()) != 0) {
        LOG_ERROR("Send status message failed.");
    }
}

void ConnClient::SendStatusOnce(char status)
{
    if (status != APP_STATUS_INIT && status != APP_STATUS_RUN && status != APP_STATUS_STOP) {
        LOG_ERROR("Error message type.");
        return;
    }
    if (SendAppStatus(AppMessage(static_cast<AppStatus>(status)).GetAppMsg()) != 0) {
        LOG_ERROR("Send message failed.");
    }
}

#include "moc_ConnClient.cpp"
