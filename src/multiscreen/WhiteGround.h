#pragma once

#include <QObject>

class QPainter;
class QWidget;

/// Gives a widget on a page of the main window a white ground of its own.
///
/// The page is white there, so the pixels are the same. But a widget that covers its place needs nothing
/// painted below it, and Qt leaves out all layers of the card. A page that is a window by itself is left as
/// it is: there the widgets have the window's colour behind them. Interface thread only.
class WhiteGround : public QObject
{
    Q_OBJECT

public:
    /// `target` lies on `page`, and nothing else between them; both outlive this object, which `target` owns.
    WhiteGround(QWidget* target, const QWidget* page);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

    /// Paints below what the widget paints; true where the widget has nothing to add.
    virtual bool PaintGround(QPainter& painter);
    /// The style has been set anew, and with it the widget's attributes.
    virtual void StyleHasChanged();
    bool LiesOnWhite() const;

    QWidget* widget;

private:
    const QWidget* whitePage;
};
