#pragma once

#include <QObject>

class QWidget;

/// Gives a widget on a page of the main window an opaque white background of its own.
///
/// The page is white there, so the pixels do not change. Qt does not paint the layers of the card below an
/// opaque widget, so a change of the widget takes a third of the time. Has no effect while the page is a
/// window, because a window has another colour. Interface thread only.
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
