// Creates images of every window, page and state, with and without shadow.
//
//   window-images --sheet DIR    creates all images and an index.html that shows them
//   window-images --golden DIR   updates the golden images in DIR: replaces those that the tests reject,
//                                and removes those that belong to no window
//
// Needs a display and a scratch home. scripts/images provides both.

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
constexpr int COMPRESSION = 9;

QString FileName(const WindowImage& image)
{
    return image.name + QStringLiteral(".png");
}

bool Save(const QDir& directory, const WindowImage& image)
{
    return image.image.save(directory.filePath(FileName(image)), "PNG", 100 - 10 * COMPRESSION);
}

void WriteIndex(const QDir& directory, const QList<WindowImage>& images)
{
    QFile file(directory.filePath(QStringLiteral("index.html")));
    if (!file.open(QIODevice::WriteOnly)) {
        return;
    }
    QTextStream page(&file);
    page << "<html><head><title>Windows, pages and states</title><style>"
            "body{background:#9AA4B5;font-family:sans-serif}figure{display:inline-block;margin:12px}"
            "</style></head><body>\n";
    for (const WindowImage& image : images) {
        page << "<figure><img src=\"" << image.name << ".png\"><figcaption>" << image.name
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
        std::fprintf(stderr, "usage: window-images --sheet DIR | --golden DIR\n");
        return 2;
    }
    QDir directory(arguments.at(2));
    directory.mkpath(QStringLiteral("."));
    QList<WindowImage> images;
    for (const bool shadow : {true, false}) {
        images += TakeWindowImages(shadow);
    }
    QStringList unused = sheet ? QStringList() : directory.entryList({QStringLiteral("*.png")});
    for (const WindowImage& image : images) {
        unused.removeOne(FileName(image));
        const bool mustSave =
            sheet || (image.golden &&
                      !FindDifference(image.image, QImage(directory.filePath(FileName(image)))).isEmpty());
        if (mustSave && !Save(directory, image)) {
            std::fprintf(stderr, "%s cannot be written\n", qUtf8Printable(image.name));
            return 1;
        }
        if (mustSave && !sheet) {
            std::printf("replaced: %s\n", qUtf8Printable(image.name));
        }
    }
    for (const QString& name : qAsConst(unused)) {
        directory.remove(name);
        std::printf("removed: %s\n", qUtf8Printable(name));
    }
    if (sheet) {
        WriteIndex(directory, images);
    }
    std::printf("images in %s\n", qUtf8Printable(directory.absolutePath()));
    return 0;
}
