#include "supervision/PausedNotifiers.h"

PausedNotifiers::~PausedNotifiers()
{
    for (const auto& notifier : paused) {
        if (notifier) {
            notifier->setEnabled(true);
        }
    }
}

void PausedNotifiers::Pause(const QProcess& process)
{
    const auto notifiers = process.findChildren<QSocketNotifier*>(QString(), Qt::FindDirectChildrenOnly);
    for (QSocketNotifier* notifier : notifiers) {
        if (notifier->isEnabled()) {
            notifier->setEnabled(false);
            paused.emplace_back(notifier);
        }
    }
}
