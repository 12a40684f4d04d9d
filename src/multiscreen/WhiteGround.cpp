#include "multiscreen/WhiteGround.h"

#include <QEvent>
#include <QPainter>
#include <QWidget>

WhiteGround::WhiteGround(QWidget* target, const QWidget* page)
    : QObject(target), widget(target), whitePage(page)
{
    widget->installEventFilter(this);
}

bool WhiteGround::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::StyleChange || event->type() == QEvent::Show) {
        StyleHasChanged();
    } else if (event->type() == QEvent::Paint) {
        QPainter painter(widget);
        return PaintGround(painter);
    }
    return QObject::eventFilter(watched, event);
}

bool WhiteGround::PaintGround(QPainter& painter)
{
    if (LiesOnWhite()) {
        painter.fillRect(widget->rect(), Qt::white);
    }
    return false;
}

void WhiteGround::StyleHasChanged()
{
    widget->setAttribute(Qt::WA_OpaquePaintEvent, LiesOnWhite());
}

bool WhiteGround::LiesOnWhite() const
{
    return !whitePage->isWindow();
}

#include "moc_WhiteGround.cpp"
