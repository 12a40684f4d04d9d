// bench [--quick] [--list] [ITEM...]: measures and prints a table.
// Exit status: 0 if all limits are met, 1 if some are missed, 2 if the command line is wrong.

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
    QList<const Item*> selected;
    for (const QString& argument : qAsConst(arguments)) {
        selected.append(Find(argument));
    }
    if (selected.contains(nullptr)) {
        std::fprintf(stderr, "the items are:\n");
        return List(stderr, 2);
    }
    if (selected.isEmpty()) {
        for (const Item& item : ITEMS) {
            selected.append(&item);
        }
    }
    Report report;
    int number = 0;
    for (const Item* item : qAsConst(selected)) {
        // The table is on the standard output, the progress on the standard error.
        std::fprintf(stderr, "measuring %s, %d of %d\n", item->name, ++number, int(selected.size()));
        item->measure(report, effort);
    }
    std::printf("%d of the limits missed\n", report.Missed());
    return report.Missed() == 0 ? 0 : 1;
}
