#pragma once

#include <QPointer>
#include <QProcess>
#include <QSocketNotifier>
#include <sys/types.h>
#include <vector>

/// The socket notifiers of processes, switched off while another thread waits for those processes. A wait on
/// another thread deletes notifiers that it cannot take out of the main thread's event loop; switched off,
/// they are in no loop. Main thread only.
class PausedNotifiers
{
public:
    /// Switches off the enabled notifiers of `process`.
    void Pause(const QProcess& process);

    /// Switches on again those that still exist and whose descriptors are still open: the end of a process
    /// that outlived the wait has to be heard.
    void Resume();

private:
    struct Paused
    {
        QPointer<QSocketNotifier> notifier;
        dev_t device;
        ino_t inode;
    };

    std::vector<Paused> paused;
};
