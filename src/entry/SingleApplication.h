#pragma once

#include <QApplication>
#include <QString>
#include <string>

#include "statuschannel/LocalServer.h"

class QWidget;

/// The application object, which also ensures that only one instance runs. The first instance listens on a
/// local socket. A later one connects to it and ends; this connection raises the window of the first one. No
/// bytes are exchanged.
///
/// main() owns it and calls InitLocalConnect(), then IsRunning(). Main thread only.
class SingleApplication : public QApplication
{
    Q_OBJECT

public:
    SingleApplication(int& argc, char** argv);

    /// Checks for another instance; blocks for up to 500 ms. Returns 0 if another instance runs, or if this
    /// one listens or runs without listening. Returns -1 if the socket's name is blocked.
    int InitLocalConnect();
    /// True if InitLocalConnect() found another instance.
    bool IsRunning() const;
    /// Sets the window to raise, which is not owned.
    void SetMainWindow(const QWidget& window);
    /// Sets another socket name (UTF-8). Call it before InitLocalConnect().
    void SetServerName(const std::string& name);
    /// Asks the window manager to raise the window of SetMainWindow(), if there is one.
    void ActivateWindow() const;

    /// Removes a link or a directory with the socket's name from the current directory. Returns false if that
    /// fails.
    bool IsServerNameValid();
    /// Listens and takes over a stale socket. Returns 0, or -1 if the name stays in use.
    int NewLocalServer();

private slots:
    int NewAppConnected();

private:
    const QWidget* mainWindow = nullptr;
    bool isRunning = false;
    LocalServer localServer;
    QString serverName;
};
