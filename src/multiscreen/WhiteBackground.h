#pragma once

#include <QObject>

class QWidget;

/// Gives a widget on a page of the main window an opaque white background of its own.
///
/// The page is white there, so the pixels are the same, but Qt paints no layer of the card below an opaque
/// widget: a change of the widget takes a third of the time. A page that is a window by itself is left as it
/// is, because it has the window's colour. Interface thread only.
class WhiteBackground : public QObject
{
public:
    /// `target` lies directly on `page`, and owns this object. Both outlive it.
    WhiteBackground(QWidget* target, const QWidget* page);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QWidget* widget;
    const QWidget* whitePage;
};
