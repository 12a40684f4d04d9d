// Creates images of every window, page and state, with and without shadow.
//
//   portraits --sheet DIR    creates all images and an index.html that shows them
//   portraits --golden DIR   updates the golden images in DIR: replaces those that the tests
//                            reject, and removes those that belong to no window
//
// Needs a display and a scratch home; scripts/images provides both.

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QTextStream>
#include <cstdio>

#include "WindowImages.h"
#include "entry/StartEnvironment.h"
#include "shell/Typeface.h"
#include "support/ImageComparison.h"

namespace {
constexpr int OFTEN_ENOUGH = 9;

QString FileName(const Portrait& portrait)
{
    return portrait.name + QStringLiteral(".png");
}

bool Save(const QDir& directory, const Portrait& portrait)
{
    return portrait.image.save(directory.filePath(FileName(portrait)), "PNG", 100 - 10 * OFTEN_ENOUGH);
}

void WriteIndex(const QDir& directory, const QList<Portrait>& portraits)
{
    QFile file(directory.filePath(QStringLiteral("index.html")));
    if (!file.open(QIODevice::WriteOnly)) {
        return;
    }
    QTextStream page(&file);
    page << "<html><head><title>Windows, pages and states</title><style>"
            "body{background:#9AA4B5;font-family:sans-serif}figure{display:inline-block;margin:12px}"
            "</style></head><body>\n";
    for (const Portrait& portrait : portraits) {
        page << "<figure><img src=\"" << portrait.name << ".png\"><figcaption>" << portrait.name
             << "</figcaption></figure>\n";
    }
    page << "</body></html>\n";
}
} // namespace

int main(int argc, char** argv)
{
    const StartEnvironment environment;
    const QApplication application(argc, argv);
    Typeface::UseEverywhere();
    const QStringList arguments = QApplication::arguments();
    const bool sheet = arguments.value(1) == QLatin1String("--sheet");
    if (arguments.size() != 3 || (!sheet && arguments.at(1) != QLatin1String("--golden"))) {
        std::fprintf(stderr, "usage: portraits --sheet DIR | --golden DIR\n");
        return 2;
    }
    QDir directory(arguments.at(2));
    directory.mkpath(QStringLiteral("."));
    QList<Portrait> portraits;
    for (const bool shadow : {true, false}) {
        portraits += TakePortraits(shadow);
    }
    QStringList leftOver = sheet ? QStringList() : directory.entryList({QStringLiteral("*.png")});
    for (const Portrait& portrait : portraits) {
        leftOver.removeOne(FileName(portrait));
        const bool wanted =
            sheet ||
            (portrait.golden &&
             !FindDifference(portrait.image, QImage(directory.filePath(FileName(portrait)))).isEmpty());
        if (wanted && !Save(directory, portrait)) {
            std::fprintf(stderr, "%s cannot be written\n", qUtf8Printable(portrait.name));
            return 1;
        }
        if (wanted && !sheet) {
            std::printf("replaced: %s\n", qUtf8Printable(portrait.name));
        }
    }
    for (const QString& name : qAsConst(leftOver)) {
        directory.remove(name);
        std::printf("removed: %s\n", qUtf8Printable(name));
    }
    if (sheet) {
        WriteIndex(directory, portraits);
    }
    std::printf("images in %s\n", qUtf8Printable(directory.absolutePath()));
    return 0;
}
