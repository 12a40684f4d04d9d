#include "shell/CardShadow.h"

#include <QBackingStore>
#include <QGraphicsPixmapItem>
#include <QGraphicsScene>
#include <QPainter>
#include <QStyle>
#include <QStyleOption>
#include <QWidget>
#include <QtMath>
#include <qdrawutil.h>

namespace {
/// The distance in pixels from a corner up to which the corner affects the shadow of an edge. Beyond it, the
/// shadow is the same along the edge.
constexpr int CORNER_REACH = 48;
constexpr int OPAQUE = 255;

/// Returns the card's background without its children, as its style draws it.
QPixmap Outline(const QWidget& card, const QSize& size)
{
    QPixmap outline(size);
    outline.fill(Qt::transparent);
    QPainter painter(&outline);
    QStyleOption option;
    option.initFrom(&card);
    option.rect = QRect(QPoint(0, 0), size);
    card.style()->drawPrimitive(QStyle::PE_Widget, &option, &painter, &card);
    return outline;
}
} // namespace

CardShadow::CardShadow(const QWidget* target, QObject* parent)
    : QGraphicsDropShadowEffect(parent), card(target)
{}

void CardShadow::draw(QPainter* painter)
{
    const QSize sample = card->size().boundedTo(QSize(2 * CORNER_REACH, 2 * CORNER_REACH));
    if (renderedSize != sample || renderedStyle != card->styleSheet()) {
        image = RenderShadow(sample);
        renderedSize = sample;
        renderedStyle = card->styleSheet();
    }
    // drawSource() works only if the painter paints on the window's backing store. On another device, for
    // example in QWidget::render(), Qt translates the painter twice.
    if (image.isNull() || painter->device() != card->backingStore()->paintDevice()) {
        QGraphicsDropShadowEffect::draw(painter);
        return;
    }
    const int blur = qCeil(blurRadius());
    const QRect frame = card->rect().adjusted(-blur, -blur, blur, blur).translated(offset().toPoint());
    // The clip excludes the part of the shadow that the card covers. Otherwise, each change on the card would
    // also draw this part. The corners are not excluded, because the card can have round ones.
    QRegion visible(frame);
    visible -= card->rect().adjusted(CORNER_REACH, 0, -CORNER_REACH, 0);
    visible -= card->rect().adjusted(0, CORNER_REACH, 0, -CORNER_REACH);
    const int width = image.width() / 2 - 1;
    const int height = image.height() / 2 - 1;
    painter->save();
    painter->setClipRegion(visible);
    // Replaces the existing pixels, because a shadow that is drawn over a shadow is darker. Qt clears only
    // the changed areas, but draws the effect in their bounding rectangle.
    painter->setCompositionMode(QPainter::CompositionMode_Source);
    qDrawBorderPixmap(painter, frame, QMargins(width, height, width, height), image);
    painter->restore();
    drawSource(painter);
}

QPixmap CardShadow::RenderShadow(const QSize& sampleSize) const
{
    const QPixmap outline = Outline(*card, sampleSize);
    if (qAlpha(outline.toImage().pixel(sampleSize.width() / 2, sampleSize.height() / 2)) != OPAQUE) {
        return QPixmap();
    }
    // The effect draws the outline as well as its shadow. A large offset puts the shadow beside the outline.
    const int aside = sampleSize.width() + 2 * qCeil(blurRadius());
    auto* effect = new QGraphicsDropShadowEffect;
    effect->setOffset(aside, 0);
    effect->setColor(color());
    effect->setBlurRadius(blurRadius());
    QGraphicsScene scene;
    scene.addPixmap(outline)->setGraphicsEffect(effect);

    // The rendered area must also contain the outline: the scene does not draw items outside of the area.
    const int blur = qCeil(blurRadius());
    const QRect shadow = QRect(QPoint(aside, 0), sampleSize).adjusted(-blur, -blur, blur, blur);
    const QRect both = shadow.united(QRect(QPoint(0, 0), sampleSize));
    QPixmap result(both.size());
    result.fill(Qt::transparent);
    QPainter painter(&result);
    scene.render(&painter, QRectF(result.rect()), QRectF(both));
    painter.end();
    return result.copy(shadow.translated(-both.topLeft()));
}
