#pragma once

#include <QPointer>
#include <QProcess>
#include <QSocketNotifier>
#include <vector>

/// Keeps the socket notifiers of processes switched off while another thread waits for these processes: that
/// wait deletes notifiers, which it cannot remove from the main thread's event loop. Main thread only.
class PausedNotifiers
{
public:
    PausedNotifiers() = default;
    /// Switches on those that still exist.
    ~PausedNotifiers();
    PausedNotifiers(const PausedNotifiers&) = delete;
    PausedNotifiers& operator=(const PausedNotifiers&) = delete;

    /// Switches off the enabled notifiers of `process`.
    void Pause(const QProcess& process);

private:
    std::vector<QPointer<QSocketNotifier>> paused;
};
