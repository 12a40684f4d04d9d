#pragma once

#include <QElapsedTimer>
#include <QString>

/// How long a wait goes on: as long as anything of this world still works, since a busy machine only makes it
/// slower, and for a while after nothing does any more, since then nothing more will come.
///
/// Looks at all processes that can be seen but this one and the X server, which works because this one asks
/// it. In a process namespace these are the test's own.
class Patience
{
public:
    /// Begins to count.
    Patience();

    /// Whether there is no sense in waiting any longer. To be asked again and again.
    bool IsOver();

    /// How long it was waited, and what ended it.
    QString Reason() const;

private:
    QElapsedTimer since;
    QElapsedTimer sinceLook;
    QElapsedTimer sinceWork;
    qint64 workedTicks = 0;
};
