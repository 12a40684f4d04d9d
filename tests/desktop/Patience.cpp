#include "Patience.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QStringList>

namespace {
constexpr int LOOK_MS = 500;
/// A program that is only slow is not still for so long.
constexpr int STILL_MS = 20000;
/// What works for ever has lost its way.
constexpr int LONGEST_MS = 280000;
/// A hundredth of a second a look is what timers and notifications take.
constexpr qint64 STILL_TICKS = 2;

struct Work
{
    qint64 ticks = 0;
    bool waitsForProcessor = false;
};

/// The processor time of everybody else so far. Fields as in proc(5), counted behind the name.
Work WorkOfOthers()
{
    Work work;
    const QString self = QString::number(QCoreApplication::applicationPid());
    const QStringList entries = QDir(QStringLiteral("/proc")).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    for (const QString& entry : entries) {
        QFile file(QStringLiteral("/proc/%1/stat").arg(entry));
        if (!entry.at(0).isDigit() || entry == self || !file.open(QIODevice::ReadOnly)) {
            continue;
        }
        const QByteArray stat = file.readAll();
        const int end = stat.lastIndexOf(')');
        const QList<QByteArray> fields = stat.mid(end + 2).split(' ');
        if (fields.size() < 15 || stat.mid(stat.indexOf('(') + 1, 4) == "Xvfb") {
            continue;
        }
        work.waitsForProcessor = work.waitsForProcessor || fields.at(0) == "R" || fields.at(0) == "D";
        work.ticks += fields.at(11).toLongLong() + fields.at(12).toLongLong();
    }
    return work;
}
} // namespace

Patience::Patience()
{
    since.start();
    sinceLook.start();
    sinceWork.start();
}

bool Patience::IsOver()
{
    if (sinceLook.elapsed() >= LOOK_MS) {
        sinceLook.start();
        const Work work = WorkOfOthers();
        if (work.waitsForProcessor || qAbs(work.ticks - workedTicks) > STILL_TICKS) {
            sinceWork.start();
        }
        workedTicks = work.ticks;
    }
    return sinceWork.elapsed() > STILL_MS || since.elapsed() > LONGEST_MS;
}

QString Patience::Reason() const
{
    return QStringLiteral("waited for %1 s; nothing worked any more for the last %2 s")
        .arg(since.elapsed() / 1000)
        .arg(sinceWork.elapsed() / 1000);
}
