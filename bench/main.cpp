// bench [--quick] [--list] [ITEM...]: measures and prints a table.
// Exit status: 0 all limits hold, 1 some are missed, 2 wrong command line.

#include <QCoreApplication>
#include <cstdio>

#include "Items.h"

namespace {
constexpr Item ITEMS[] = {
    {"start", MeasureStart},       {"busy-start", MeasureBusyStart},
    {"memory", MeasureMemory},     {"cast", MeasureCast},
    {"idle", MeasureIdle},         {"quit", MeasureQuit},
    {"log", MeasureLog},           {"rotation", MeasureRotation},
    {"settings", MeasureSettings}, {"erase", MeasureErase},
};

const Item* Find(const QString& name)
{
    for (const Item& item : ITEMS) {
        if (name == QLatin1String(item.name)) {
            return &item;
        }
    }
    return nullptr;
}

int List(FILE* where, int status)
{
    for (const Item& item : ITEMS) {
        std::fprintf(where, "%s\n", item.name);
    }
    return status;
}
} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    QStringList arguments = QCoreApplication::arguments().mid(1);
    if (arguments.contains(QStringLiteral("--list"))) {
        return List(stdout, 0);
    }
    const Effort effort{arguments.removeAll(QStringLiteral("--quick")) > 0};
    QList<const Item*> wanted;
    for (const QString& argument : qAsConst(arguments)) {
        wanted.append(Find(argument));
    }
    if (wanted.contains(nullptr)) {
        std::fprintf(stderr, "the items are:\n");
        return List(stderr, 2);
    }
    if (wanted.isEmpty()) {
        for (const Item& item : ITEMS) {
            wanted.append(&item);
        }
    }
    Report report;
    int number = 0;
    for (const Item* item : qAsConst(wanted)) {
        // Beside the table, which goes to the standard output.
        std::fprintf(stderr, "measuring %s, %d of %d\n", item->name, ++number, int(wanted.size()));
        item->measure(report, effort);
    }
    std::printf("%d of the limits missed\n", report.Missed());
    return report.Missed() == 0 ? 0 : 1;
}
