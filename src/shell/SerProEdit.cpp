#include "shell/SerProEdit.h"

#include <QDesktopServices>
#include <QFile>
#include <QMouseEvent>
#include <QRegExp>
#include <QScrollBar>
#include <QTextCursor>
#include <QUrl>

#include "platform/Log.h"

namespace {
constexpr char MODULE_TAG[] = "VELODESK";

const QString URL_PATTERN =
    QStringLiteral("http[s]{0,1}://[-A-Za-z0-9+&@#/%?=~_|!:,.;]+[-A-Za-z0-9+&@#/%=~_|]");

const QString VIEW_STYLE = QStringLiteral("background-color:rgba(249,249,249,1)");

const QString SCROLL_BAR_STYLE = QStringLiteral(R"(QScrollBar:vertical {
width:4px;
background:rgba(0,0,0,0%);
padding-top:9px;
padding-bottom:9px;
}
QScrollBar::handle:vertical, QScrollBar::handle:vertical:hover {
width:4px;
background:rgba(240,240,240,100%);
border-radius:2px;
min-height:54px;
}
QScrollBar::add-line:vertical, QScrollBar::add-line:vertical:hover {
height:9px;
width:4px;
background:rgba(0,0,0,0%);
subcontrol-position:bottom;
}
QScrollBar::sub-line:vertical, QScrollBar::sub-line:vertical:hover {
height:9px;
width:4px;
background:rgba(0,0,0,0%);
subcontrol-position:top;
}
QScrollBar::add-page:vertical, QScrollBar::sub-page:vertical {
background:rgba(0,0,0,0%);
border-radius:2px;
})");
} // namespace

SerProEdit::SerProEdit(QWidget* parent) : QTextEdit(parent) {}

void SerProEdit::InitUi(QString path)
{
    setReadOnly(true);
    setStyleSheet(VIEW_STYLE);
    verticalScrollBar()->setStyleSheet(SCROLL_BAR_STYLE);

    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        LOG_INFO("File %s open failed.", path.toUtf8().constData());
        file.close();
        return;
    }
    LOG_DEBUG("File %s open successful.", path.toUtf8().constData());
    const QByteArray bytes = file.readAll();
    const int position = TextLength();
    // The conversion ends at the first zero byte: the rest of such a document is not shown.
    const QString html = ProcessHtmlLinkUrl(QString::fromUtf8(bytes.constData()));

    // Removes the text that ProcessHtmlLinkUrl() has appended.
    QTextCursor cursor = textCursor();
    cursor.beginEditBlock();
    cursor.setPosition(position);
    cursor.movePosition(QTextCursor::End, QTextCursor::KeepAnchor);
    cursor.removeSelectedText();
    cursor.insertHtml(html);
    cursor.movePosition(QTextCursor::Start);
    cursor.endEditBlock();
    setTextCursor(cursor);
    // Required, because setTextCursor() does not scroll to the top if the cursor is already visible.
    verticalScrollBar()->setValue(verticalScrollBar()->minimum());
    file.close();
}

QString SerProEdit::GetLinkUrl(const QString& url) const
{
    return QStringLiteral("<a href='") + url + QStringLiteral("'><span style='text-decoration:none'>") + url +
           QStringLiteral("</span></a>");
}

QString SerProEdit::ProcessHtmlLinkUrl(const QString& text)
{
    const QRegExp pattern(URL_PATTERN, Qt::CaseSensitive, QRegExp::RegExp);
    QString result;
    int from = 0;
    for (int pos = pattern.indexIn(text); pos != -1; pos = pattern.indexIn(text, from)) {
        const QString before = text.mid(from, pos - from);
        result += before;
        append(before);

        UrlElem elem;
        elem.start = TextLength();
        elem.url = pattern.cap(0);
        const QString link = GetLinkUrl(elem.url);
        result += link;
        append(link);
        elem.end = TextLength();
        urlList.append(elem);

        from = pos + elem.url.length();
    }
    return result + text.mid(from);
}

void SerProEdit::mouseReleaseEvent(QMouseEvent* event)
{
    const int anchor = textCursor().anchor();
    for (const UrlElem& elem : qAsConst(urlList)) {
        if (anchor > elem.start && anchor < elem.end) {
            QDesktopServices::openUrl(QUrl(elem.url, QUrl::TolerantMode));
        }
    }
    // Intentionally calls the press handler: the base class must handle a release as a second press.
    QTextEdit::mousePressEvent(event);
}

#include "moc_SerProEdit.cpp"
