#pragma once

#include <QList>
#include <QString>
#include <QTextEdit>

/// A read-only view of an HTML document from the resources, in which web addresses are links that open in the
/// desktop's browser. Main thread only.
///
/// The view stores the position of each link in its plain text. Each load adds positions, and nothing removes
/// them, not even clear(). A view that loads a second document keeps the positions of the first one.
class SerProEdit : public QTextEdit
{
    Q_OBJECT

public:
    /// A web address and the positions in the plain text between which a click opens it.
    struct UrlElem
    {
        int start;
        int end;
        QString url;
    };

    explicit SerProEdit(QWidget* parent);

    /// Applies the style, appends the document with the resource path `path` (HTML in UTF-8) to the content,
    /// and scrolls to the top. If the document cannot be opened, the content does not change.
    void InitUi(QString path);

    /// Returns the HTML link for an address.
    QString GetLinkUrl(const QString& url) const;

    /// Returns the HTML `text` with a link in place of each web address, and stores the positions of the
    /// links. To find these positions, it appends the text up to the last link to the view. The caller
    /// removes it.
    QString ProcessHtmlLinkUrl(const QString& text);

protected:
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    /// Returns the number of characters of the plain text. QTextDocument counts one more, the end of the last
    /// paragraph.
    int TextLength() const { return document()->characterCount() - 1; }

    QList<UrlElem> urlList;
};
