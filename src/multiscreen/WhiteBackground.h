#pragma once

#include <QObject>

class QWidget;

/// Gives a widget on a page of the main window an opaque white background of its own.
///
/// The page is white at this place, so the pixels do not change. Below an opaque widget, Qt does not paint
/// the card and the page, so a change of the widget is painted in a third of the time. The object has no
/// effect while the page is a window, because a window has another colour. Main thread only.
class WhiteBackground : public QObject
{
public:
    /// `target` is a child of `page` and owns this object. `page` must outlive it.
    WhiteBackground(QWidget* target, const QWidget* page);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QWidget* widget;
    const QWidget* whitePage;
};
