#pragma once

#include <QApplication>
#include <QString>
#include <string>

#include "statuschannel/LocalServer.h"

class QWidget;

/// The application object, which also makes sure that one instance runs: the first listens on a local socket,
/// a later one connects to it and gives up, and that connection alone raises the first one's window. No bytes
/// are exchanged.
///
/// main() owns it; construct, InitLocalConnect(), then ask IsRunning(). Main thread only.
class SingleApplication : public QApplication
{
    Q_OBJECT

public:
    SingleApplication(int& argc, char** argv);

    /// The instance check, blocking for up to 500 ms. 0 if another instance runs or this one listens (or must
    /// go on without listening), -1 if neither could be established.
    int InitLocalConnect();
    /// True once another instance has answered.
    bool IsRunning() const;
    /// The window to raise; not owned.
    void SetMainWindow(const QWidget& window);
    /// Another socket name, UTF-8, before InitLocalConnect().
    void SetServerName(const std::string& name);
    /// Asks the window manager to raise the window that was set, if any.
    void ActivateWindow() const;

    /// Removes a link or a directory of the socket's name from the current directory; false if it could not.
    bool IsServerNameValid();
    /// Listens, taking over a stale socket. 0, or -1 if the name stays taken.
    int NewLocalServer();

private slots:
    int NewAppConnected();

private:
    const QWidget* mainWindow = nullptr;
    bool isRunning = false;
    LocalServer localServer;
    QString serverName;
};
