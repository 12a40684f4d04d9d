#pragma once

#include <QList>
#include <QString>
#include <QTextEdit>

/// A read-only view of an HTML document from the resources, in which web addresses are links that open in the
/// desktop's browser. Interface thread only.
///
/// Link spans are positions in the plain text. Each load adds spans, and nothing removes them, not even
/// clearing the view: a view that loads another document keeps the spans of the earlier one.
class SerProEdit : public QTextEdit
{
    Q_OBJECT

public:
    struct UrlElem
    {
        int start;
        int end;
        QString url;
    };

    explicit SerProEdit(QWidget* parent);

    /// Styles the view, appends the document at `path` (UTF-8 HTML) to its content, and scrolls to the top.
    /// If the document cannot be opened, the content does not change.
    void InitUi(QString path);

    /// Returns the HTML link for an address.
    QString GetLinkUrl(const QString& url) const;

    /// Returns `text` with each address replaced by its link. To measure the spans of the links, the text
    /// before and including the last link is appended to the view.
    QString ProcessHtmlLinkUrl(const QString& text);

protected:
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    /// Returns the length of the view's plain text; the document counts one more character at its end.
    int TextLength() const { return document()->characterCount() - 1; }

    QList<UrlElem> urlList;
};
