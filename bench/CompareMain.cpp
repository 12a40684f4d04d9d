// bench-compare OLD.json NEW.json: says which figures differ by more than chance.
// Exit status: 0 none, 1 some, 2 wrong command line or nothing to compare.

#include <QFile>
#include <QJsonDocument>
#include <cstdio>

#include "Compare.h"

namespace {
QJsonObject Load(const char* path)
{
    QFile file(QString::fromLocal8Bit(path));
    return file.open(QIODevice::ReadOnly) ? QJsonDocument::fromJson(file.readAll()).object() : QJsonObject();
}
} // namespace

int main(int argc, char** argv)
{
    if (argc != 3) {
        std::fprintf(stderr, "bench-compare OLD.json NEW.json\n");
        return 2;
    }
    const QList<Change> changes = Compare(Load(argv[1]), Load(argv[2]));
    if (changes.isEmpty()) {
        std::fprintf(stderr, "the two have no row in common\n");
        return 2;
    }
    int differing = 0;
    std::printf("%-52s %9s %9s %9s\n", "item, baseline", "before", "after", "noise");
    for (const Change& change : changes) {
        differing += change.IsBeyondNoise() ? 1 : 0;
        std::printf("%-52s %9.3f %9.3f %9.3f %s\n", qUtf8Printable(change.name), change.before, change.after,
                    change.noise, change.IsBeyondNoise() ? "DIFFERS" : "");
    }
    std::printf("%d of %d figures differ by more than chance\n", differing, int(changes.size()));
    return differing == 0 ? 0 : 1;
}
