// Makes pictures of every window, page and state, in both looks.
//
//   portraits --sheet DIR    all of them, and an index.html to look through
//   portraits --golden DIR   those that the tests compare, as they look now
//
// Needs a display and a scratch home; scripts/pictures brings both.

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QTextStream>
#include <cstdio>

#include "Portraits.h"
#include "entry/StartEnvironment.h"
#include "shell/Typeface.h"

namespace {
constexpr int OFTEN_ENOUGH = 9;

bool Save(const QDir& directory, const Portrait& portrait)
{
    return portrait.image.save(directory.filePath(portrait.name + QStringLiteral(".png")), "PNG",
                               100 - 10 * OFTEN_ENOUGH);
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
    int saved = 0;
    for (const Portrait& portrait : portraits) {
        if (sheet || portrait.golden) {
            if (!Save(directory, portrait)) {
                std::fprintf(stderr, "%s cannot be written\n", qUtf8Printable(portrait.name));
                return 1;
            }
            ++saved;
        }
    }
    if (sheet) {
        WriteIndex(directory, portraits);
    }
    std::printf("%d pictures in %s\n", saved, qUtf8Printable(directory.absolutePath()));
    return 0;
}
