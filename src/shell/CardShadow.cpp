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
/// Along an edge the shadow is the same everywhere once the corners are this far away.
constexpr int CORNER_REACH = 48;
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
    // Drawing the source works on the window's own surface only: with any other, as of QWidget::render(), Qt
    // moves the painter to the card a second time.
    if (picture.isNull() || painter->device() != card->backingStore()->paintDevice()) {
        QGraphicsDropShadowEffect::draw(painter);
        return;
    }
    const int blur = qCeil(blurRadius());
    const QRect frame = card->rect().adjusted(-blur, -blur, blur, blur).translated(offset().toPoint());
    // The card covers its inside, except near the corners. Without the clip each change on the card would
    // draw the shadow below it, too.
    QRegion visible(frame);
    visible -= card->rect().adjusted(CORNER_REACH, 0, -CORNER_REACH, 0);
    visible -= card->rect().adjusted(0, CORNER_REACH, 0, -CORNER_REACH);
    const int width = picture.width() / 2 - 1;
    const int height = picture.height() / 2 - 1;
    painter->save();
    painter->setClipRegion(visible);
    // Replaces what is there: Qt has cleared the places that changed, but lets the effect paint everything
    // between them, and a shadow on a shadow is darker.
    painter->setCompositionMode(QPainter::CompositionMode_Source);
    qDrawBorderPixmap(painter, frame, QMargins(width, height, width, height), picture);
    painter->restore();
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

    // The scene leaves out what lies beside the area it is to draw, so that holds both.
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
