#include "entry/SingleApplication.h"

#include <QLocalSocket>
#include <QWidget>
#include <memory>
#include <unistd.h>

#include "entry/RawxWindowOpt.h"
#include "platform/DirOperator.h"
#include "platform/FileOperator.h"
#include "platform/Log.h"

namespace {
constexpr char MODULE_TAG[] = "UTILS";
constexpr int CONNECT_TIMEOUT_MS = 500;
constexpr int CLOSE_TIMEOUT_MS = 1000;
} // namespace

SingleApplication::SingleApplication(int& argc, char** argv)
    : QApplication(argc, argv), serverName(QStringLiteral("VelodeskServer"))
{}

int SingleApplication::InitLocalConnect()
{
    if (!IsServerNameValid()) {
        return -1;
    }
    isRunning = false;
    {
        QLocalSocket socket;
        socket.connectToServer(serverName, QIODevice::ReadWrite);
        if (socket.waitForConnected(CONNECT_TIMEOUT_MS)) {
            LOG_INFO("Application already running.");
            isRunning = true;
            return 0;
        }
    }
    return NewLocalServer();
}

bool SingleApplication::IsRunning() const
{
    return isRunning;
}

void SingleApplication::SetMainWindow(const QWidget& window)
{
    mainWindow = &window;
}

void SingleApplication::SetServerName(const std::string& name)
{
    serverName = QString::fromStdString(name);
}

void SingleApplication::ActivateWindow() const
{
    if (mainWindow != nullptr) {
        RawxWindowOpt::ActivexWindow(static_cast<int>(mainWindow->winId()));
    }
}

bool SingleApplication::IsServerNameValid()
{
    const std::string name = serverName.toStdString();
    if (Brevora::FileOperator::GetInstance().IsLinkExist(name)) {
        unlink(name.c_str());
    }
    if (!DIR_OPERATOR.IsDirExist(name)) {
        return true;
    }
    if (DIR_OPERATOR.RemoveDir(name) < 0) {
        LOG_WARNING("RemoveDir dir:%s failed", name.c_str());
        return false;
    }
    return true;
}

int SingleApplication::NewLocalServer()
{
    connect(&localServer, &QLocalServer::newConnection, this, &SingleApplication::NewAppConnected);
    return localServer.Start(serverName);
}

int SingleApplication::NewAppConnected()
{
    std::unique_ptr<QLocalSocket> socket(localServer.nextPendingConnection());
    if (socket == nullptr) {
        LOG_ERROR("No connection.");
        return -1;
    }
    // The peer sends nothing: this wait ends when the peer closes the connection.
    socket->waitForReadyRead(CLOSE_TIMEOUT_MS);
    socket.reset();
    LOG_INFO("Active application.");
    ActivateWindow();
    return 0;
}

#include "moc_SingleApplication.cpp"
