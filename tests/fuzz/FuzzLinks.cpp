// Input: a document. If the added links are replaced by their addresses, the result is the document.

#include <QApplication>
#include <QRegularExpression>

#include "fuzz/FuzzSupport.h"
#include "shell/SerProEdit.h"

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static int argc = 1;
    static char name[] = "fuzz";
    static char* argv[] = {name, nullptr};
    static const QApplication application(argc, argv);

    SerProEdit view(nullptr);
    const QString text = QString::fromUtf8(reinterpret_cast<const char*>(data), static_cast<int>(size));
    QString result = view.ProcessHtmlLinkUrl(text);
    static const QRegExp pattern(
        QStringLiteral("http[s]{0,1}://[-A-Za-z0-9+&@#/%?=~_|!:,.;]+[-A-Za-z0-9+&@#/%=~_|]"));
    int links = 0;
    for (int at = pattern.indexIn(text); at >= 0; at = pattern.indexIn(text, at + pattern.matchedLength())) {
        const QString url = pattern.cap();
        const QString link = view.GetLinkUrl(url);
        const int found = result.indexOf(link);
        REQUIRE(found >= 0);
        result.replace(found, link.size(), url);
        ++links;
    }
    REQUIRE(result == text);
    REQUIRE(links > 0 || view.toPlainText().isEmpty());
    return 0;
}
