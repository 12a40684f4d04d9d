#include "multiscreen/WhiteBackground.h"

#include <QEvent>
#include <QPainter>
#include <QPixmapCache>
#include <QStyle>
#include <QStyleOption>
#include <QWidget>

namespace {
/// Returns the background of the widget's style sheet, painted on white. The result is cached: the style
/// would scale the background image at each paint, which takes as long as all other work of a status change.
QPixmap StyledBackground(const QWidget& widget)
{
    const QSize size = widget.size() * widget.devicePixelRatioF();
    const QString key =
        QStringLiteral("%1 %2 %3").arg(widget.styleSheet()).arg(size.width()).arg(size.height());
    QPixmap background;
    if (!QPixmapCache::find(key, &background)) {
        background = QPixmap(size);
        background.setDevicePixelRatio(widget.devicePixelRatioF());
        background.fill(Qt::white);
        QPainter painter(&background);
        QStyleOption option;
        option.initFrom(&widget);
        widget.style()->drawPrimitive(QStyle::PE_Widget, &option, &painter, &widget);
        QPixmapCache::insert(key, background);
    }
    return background;
}
} // namespace

WhiteBackground::WhiteBackground(QWidget* target, const QWidget* page)
    : QObject(target), widget(target), whitePage(page)
{
    widget->installEventFilter(this);
}

bool WhiteBackground::eventFilter(QObject* watched, QEvent* event)
{
    const bool isWhite = !whitePage->isWindow();
    if (event->type() == QEvent::StyleChange || event->type() == QEvent::Show) {
        // A new style sheet has reset the attribute.
        widget->setAttribute(Qt::WA_OpaquePaintEvent, isWhite);
    } else if (event->type() == QEvent::Paint && isWhite) {
        QPainter painter(widget);
        if (widget->testAttribute(Qt::WA_StyledBackground)) {
            // Qt does not paint the styled background of an opaque widget.
            painter.drawPixmap(0, 0, StyledBackground(*widget));
        } else {
            painter.fillRect(widget->rect(), Qt::white);
        }
    }
    return QObject::eventFilter(watched, event);
}
