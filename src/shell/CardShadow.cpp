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
/// The corners affect the shadow up to this distance in pixels; beyond it, an edge looks the same everywhere.
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
    // drawSource() works only on the window's own surface. For any other one, for example in
    // QWidget::render(), Qt translates the painter to the card twice.
    if (image.isNull() || painter->device() != card->backingStore()->paintDevice()) {
        QGraphicsDropShadowEffect::draw(painter);
        return;
    }
    const int blur = qCeil(blurRadius());
    const QRect frame = card->rect().adjusted(-blur, -blur, blur, blur).translated(offset().toPoint());
    // The card covers the shadow inside, except near the corners. Without the clip, each change on the card
    // would draw the covered shadow, too.
    QRegion visible(frame);
    visible -= card->rect().adjusted(CORNER_REACH, 0, -CORNER_REACH, 0);
    visible -= card->rect().adjusted(0, CORNER_REACH, 0, -CORNER_REACH);
    const int width = image.width() / 2 - 1;
    const int height = image.height() / 2 - 1;
    painter->save();
    painter->setClipRegion(visible);
    // Replaces the existing pixels. Qt clears only the changed areas, but the clip is their bounding
    // rectangle, and a shadow drawn over a shadow would be darker.
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
    // Qt draws the shadow together with its source. A large offset separates them.
    const int aside = sampleSize.width() + 2 * qCeil(blurRadius());
    auto* effect = new QGraphicsDropShadowEffect;
    effect->setOffset(aside, 0);
    effect->setColor(color());
    effect->setBlurRadius(blurRadius());
    QGraphicsScene scene;
    scene.addPixmap(outline)->setGraphicsEffect(effect);

    // The rendered area contains both, because the scene skips items outside of it.
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
