#pragma once

#include <QFileSystemWatcher>
#include <QLocalSocket>
#include <QObject>
#include <QProcess>
#include <QStringList>
#include <memory>

#include "statuschannel/ConnClient.h"

/// Stands where the cast engine does: reports "init", then "run" after a moment, and on a termination request
/// reports "stop" and ends.
///
/// A script in the user's home, "standin-engine.script", replaces that by a step a line:
///   report init|run|stop   through ConnClient, with its repeats from then on
///   repeat TEXT MS         writes TEXT again and again, on a connection of its own
///   send TEXT              writes TEXT once, as it stands, on a connection of its own
///   wait MS                goes on after that many milliseconds
///   await NAME             goes on once a file NAME stands in the home
///   flood COUNT TEXT       writes TEXT that many times without a pause, on a connection of its own
///   bulk BYTES             writes that many bytes that are no message, without a pause
///   connections COUNT      makes that many connections one after the other, each closed at once
///   print BYTES            writes that many bytes to standard output, and as many to standard error
///   linger                 leaves a child behind that ignores the termination request for a minute
///   await-end-of-input     notes the end of standard input, and ends as after a termination request
///   drop                   closes the ConnClient's connection; its next repeat makes a new one
///   show                   shows a drawn phone in a window of its own until the engine ends; closing it ends
///                          the engine as a termination request does
///   ignore-terminate       from then on a termination request changes nothing
///   exit CODE | crash      ends this process
/// What happens goes to "standin-engine.events" in the home: nanoseconds of the monotonic clock, and a word
/// or two.
class Engine : public QObject
{
    Q_OBJECT

public:
    /// `homeDir`: the user's home; `daemonPid`: the one argument, noted.
    Engine(const QString& homeDir, const QString& daemonPid);

    /// Runs the script. Once, before the event loop.
    void Start();

    /// Appends a line to the events.
    void Note(const QString& what) const;

public slots:
    /// The termination request.
    void Terminate();

private slots:
    void NextStep();
    void LookForAwaited();

private:
    /// Does one step; false if the script goes on later.
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
