#pragma once

#include <QFileSystemWatcher>
#include <QLocalSocket>
#include <QObject>
#include <QProcess>
#include <QStringList>
#include <memory>

#include "statuschannel/ConnClient.h"

/// Stand-in for the cast engine. Reports "init", and "run" after half a second. On a termination request, it
/// reports "stop" and ends.
///
/// The script "standin-engine.script" in the user's home replaces this behaviour. It has one step per line:
///   report init|run|stop   sends the status through ConnClient, which repeats it from then on
///   repeat TEXT MS         sends TEXT every MS milliseconds, on a separate connection
///   send TEXT              sends TEXT once and unchanged, on a separate connection
///   wait MS                continues after that many milliseconds
///   await NAME             continues when the file NAME exists in the home
///   flood COUNT TEXT       sends TEXT that many times without a pause, on a separate connection
///   bulk BYTES             sends that many bytes that form no message, without a pause
///   connections COUNT      opens that many connections in turn, and closes each immediately
///   print BYTES            writes that many bytes to standard output, and as many to standard error
///   linger                 leaves a child process that ignores the termination request for a minute
///   await-end-of-input     waits for the end of standard input, then ends as after a termination request
///   drop                   closes the ConnClient's connection; its next repeat opens a new one
///   show                   shows the image of a phone in a window until the engine ends; when the window
///                          is closed, the engine ends as after a termination request
///   ignore-terminate       ignores termination requests from then on
///   exit CODE | crash      ends this process
/// The engine appends its events to "standin-engine.events" in the home: nanoseconds of the monotonic clock,
/// then one or two words.
class Engine : public QObject
{
    Q_OBJECT

public:
    /// `homeDir`: the user's home. `daemonPid`: the only argument, which is written as an event.
    Engine(const QString& homeDir, const QString& daemonPid);

    /// Runs the script. Call it once, before the event loop.
    void Start();

    /// Appends an event.
    void Note(const QString& what) const;

public slots:
    /// Handles the termination request.
    void Terminate();

private slots:
    void NextStep();
    void CheckForAwaitedFile();

private:
    /// Executes one step. Returns false if the script continues later.
    bool Do(const QString& verb, const QString& rest);
    void Report(const QString& status);
    void SendRaw(const QByteArray& bytes);
    void Connect(QLocalSocket& socket) const;
    void MakeConnections(int count) const;
    void Print(int count) const;
    void Linger() const;
    void Show();

    QString home;
    QStringList script;
    std::unique_ptr<ConnClient> client;
    QLocalSocket rawSocket;
    QProcess phone;
    QFileSystemWatcher watcher;
    QString awaited;
    bool ignoresTerminate = false;
};
