#include "shell/CardShadow.h"

#include <QGraphicsPixmapItem>
#include <QGraphicsScene>
#include <QPainter>
#include <QStyle>
#include <QStyleOption>
#include <QWidget>
#include <QtMath>
#include <qdrawutil.h>

namespace {
/// Along an edge the shadow is the same everywhere once the corners are this far away.
constexpr int CORNER_REACH = 80;
constexpr int OPAQUE = 255;

/// The card's background alone, as its style draws it.
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
    if (pictureSample != sample || pictureStyle != card->styleSheet()) {
        picture = MakePicture(sample);
        pictureSample = sample;
        pictureStyle = card->styleSheet();
    }
    if (picture.isNull()) {
        QGraphicsDropShadowEffect::draw(painter);
        return;
    }
    const int blur = qCeil(blurRadius());
    const int halfWidth = blur + sample.width() / 2 - 1;
    const int halfHeight = blur + sample.height() / 2 - 1;
    const QRect place = card->rect().adjusted(-blur, -blur, blur, blur).translated(offset().toPoint());
    qDrawBorderPixmap(painter, place, QMargins(halfWidth, halfHeight, halfWidth, halfHeight), picture);
    drawSource(painter);
}

QPixmap CardShadow::MakePicture(const QSize& sampleSize) const
{
    const QPixmap outline = Outline(*card, sampleSize);
    if (qAlpha(outline.toImage().pixel(sampleSize.width() / 2, sampleSize.height() / 2)) != OPAQUE) {
        return QPixmap();
    }
    // Qt draws the shadow together with what casts it, so it is cast far to the side.
    const int aside = sampleSize.width() + 2 * qCeil(blurRadius());
    auto* effect = new QGraphicsDropShadowEffect;
    effect->setOffset(aside, 0);
    effect->setColor(color());
    effect->setBlurRadius(blurRadius());
    QGraphicsScene scene;
    scene.addPixmap(outline)->setGraphicsEffect(effect);

    const int blur = qCeil(blurRadius());
    const QRect area = QRect(QPoint(aside, 0), sampleSize).adjusted(-blur, -blur, blur, blur);
    QPixmap result(area.size());
    result.fill(Qt::transparent);
    QPainter painter(&result);
    scene.render(&painter, QRectF(result.rect()), QRectF(area));
    return result;
}
