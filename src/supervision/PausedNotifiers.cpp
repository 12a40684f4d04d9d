#include "supervision/PausedNotifiers.h"

#include <sys/stat.h>

namespace {
/// What a descriptor stands for; zeros if it is closed.
struct stat StatusOf(const QSocketNotifier& notifier)
{
    struct stat status
    {};
    fstat(static_cast<int>(notifier.socket()), &status);
    return status;
}
} // namespace

void PausedNotifiers::Pause(const QProcess& process)
{
    const auto notifiers = process.findChildren<QSocketNotifier*>(QString(), Qt::FindDirectChildrenOnly);
    for (QSocketNotifier* notifier : notifiers) {
        if (notifier->isEnabled()) {
            const struct stat status = StatusOf(*notifier);
            notifier->setEnabled(false);
            paused.push_back({notifier, status.st_dev, status.st_ino});
        }
    }
}

void PausedNotifiers::Resume()
{
    for (const Paused& one : paused) {
        if (!one.notifier) {
            continue;
        }
        // The wait leaves a notifier behind whose channel has come to its end; another file may have its
        // number by now.
        const struct stat status = StatusOf(*one.notifier);
        if (status.st_dev == one.device && status.st_ino == one.inode) {
            one.notifier->setEnabled(true);
        }
    }
    paused.clear();
}
