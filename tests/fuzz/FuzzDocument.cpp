// Input: a document and the position of a click. The view appends the document to its text and shows the top,
// and the click opens only addresses that the document contains.

#include <QApplication>
#include <QDesktopServices>
#include <QFile>
#include <QMouseEvent>
#include <QScrollBar>
#include <QUrl>
#include <filesystem>
#include <unistd.h>

#include "fuzz/FuzzSupport.h"
#include "shell/SerProEdit.h"

namespace {
/// Replaces the browser and counts the opened addresses.
class Browser : public QObject
{
    Q_OBJECT

public:
    Browser()
    {
        QDesktopServices::setUrlHandler(QStringLiteral("http"), this, "Open");
        QDesktopServices::setUrlHandler(QStringLiteral("https"), this, "Open");
    }

    int opened = 0;

public slots:
    void Open(const QUrl&) { ++opened; }
};
} // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static int argc = 1;
    static char name[] = "fuzz";
    static char* argv[] = {name, nullptr};
    static const QApplication application(argc, argv);
    static Browser browser;
    static const QString path = QString::fromStdString(
        std::filesystem::temp_directory_path() / ("velodesk-fuzz-" + std::to_string(getpid()) + ".html"));

    Input input(data, size);
    const QPoint clickPos(input.Byte() * 2, input.Byte() * 2);
    const QByteArray document = QByteArray::fromStdString(input.Rest());
    {
        QFile file(path);
        REQUIRE(file.open(QIODevice::WriteOnly) && file.write(document) == document.size());
    }
    SerProEdit view(nullptr);
    view.setFixedSize(500, 300);
    view.append(QStringLiteral("heading"));
    view.InitUi(path);
    REQUIRE(view.toPlainText().startsWith(QLatin1String("heading")));
    REQUIRE(view.verticalScrollBar()->value() == view.verticalScrollBar()->minimum());
    browser.opened = 0;
    QMouseEvent release(QEvent::MouseButtonRelease, clickPos, Qt::LeftButton, Qt::NoButton, Qt::NoModifier);
    QCoreApplication::sendEvent(view.viewport(), &release);
    REQUIRE(browser.opened == 0 || document.contains("http"));
    view.clear();
    view.InitUi(path);
    return 0;
}

#include "FuzzDocument.moc"
