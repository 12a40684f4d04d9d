#pragma once

#include <QPointer>
#include <QProcess>
#include <QSocketNotifier>
#include <vector>

/// Disables the socket notifiers of processes while another thread waits for these processes.
///
/// The waiting thread deletes notifiers, but cannot remove them from the main thread's event loop. The event
/// loop would then use deleted notifiers. The caller owns the object and destroys it after the wait. Main
/// thread only.
class PausedNotifiers
{
public:
    PausedNotifiers() = default;
    /// Enables those of the disabled notifiers that still exist.
    ~PausedNotifiers();
    PausedNotifiers(const PausedNotifiers&) = delete;
    PausedNotifiers& operator=(const PausedNotifiers&) = delete;

    /// Disables the enabled notifiers of `process`.
    void Pause(const QProcess& process);

private:
    std::vector<QPointer<QSocketNotifier>> paused;
};
