#pragma once

#include <QList>
#include <QString>
#include <QTextEdit>

/// A read-only view of an HTML document from the resources, in which web addresses are links that open in the
/// desktop's browser. Interface thread only.
///
/// Link spans are positions in the plain text. They are added at each load and never removed, not even when
/// the view is cleared: a view that loads other documents later keeps the spans of the earlier ones.
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

    /// Styles the view and loads the document at `path` (UTF-8 HTML) behind what the view already holds, with
    /// its top on show. A document that cannot be opened leaves the view as it was.
    void InitUi(QString path);

    /// The link that stands for an address.
    QString GetLinkUrl(const QString& url) const;

    /// `text` with every address replaced by its link. The view measures the links' spans for this: it holds
    /// the measured text afterwards.
    QString ProcessHtmlLinkUrl(const QString& text);

protected:
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    /// The length of the view's plain text; the document counts one more mark at its end.
    int TextLength() const { return document()->characterCount() - 1; }

    QList<UrlElem> urlList;
};
