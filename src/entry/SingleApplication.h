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

    /// Checks for another instance, which then raises its window, and blocks for up to 500 ms. If there is
    /// none, listens for later instances. Returns 0, or -1 if something with the socket's name cannot be
    /// removed.
    int InitLocalConnect();
    /// Returns true if InitLocalConnect() found another instance.
    bool IsRunning() const;
    /// Sets the window to raise. The caller owns it; it must exist as long as the event loop runs.
    void SetMainWindow(const QWidget& window);
    /// Sets another socket name (UTF-8). Call it before InitLocalConnect().
    void SetServerName(const std::string& name);
    /// Asks the window manager to raise the window of SetMainWindow(), if there is one.
    void ActivateWindow() const;

    /// Removes a link to a file, or a directory, with the socket's name from the current directory. Returns
    /// false if the directory cannot be removed.
    bool IsServerNameValid();
    /// Listens; see LocalServer::Start() for the replaced socket file and the result.
    int NewLocalServer();

private slots:
    int NewAppConnected();

private:
    const QWidget* mainWindow = nullptr;
    bool isRunning = false;
    LocalServer localServer;
    QString serverName;
};
