#include "shell/CardShadow.h"

#include <QBackingStore>
#include <QGraphicsPixmapItem>
#include <QGraphicsScene>
#include <QPainter>
#include <QStyle>
#include <QStyleOption>
#include <QWidget>
#include <QtMath>

namespace {
/// Along an edge the shadow is the same everywhere once the corners are this far away.
constexpr int CORNER_REACH = 48;
/// As wide or as high as a strip is laid out at a time.
constexpr int TILE_LENGTH = 64;
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

/// What of the picture is the same along one direction, long enough to be laid out side by side.
QPixmap Tile(const QPixmap& picture, const QRect& part, const QSize& size)
{
    return picture.copy(part).scaled(size, Qt::IgnoreAspectRatio, Qt::FastTransformation);
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
        MakeTiles();
        pictureSample = sample;
        pictureStyle = card->styleSheet();
    }
    // Drawing the source works on the window's own surface only: with any other, as of QWidget::render(), Qt
    // moves the painter to the card a second time.
    if (picture.isNull() || painter->device() != card->backingStore()->paintDevice()) {
        QGraphicsDropShadowEffect::draw(painter);
        return;
    }
    // In place of what is there: Qt has cleared the places that changed, but lets the effect paint all that
    // lies between them, and a shadow on a shadow grows darker.
    painter->setCompositionMode(QPainter::CompositionMode_Source);
    DrawFrame(*painter);
    painter->setCompositionMode(QPainter::CompositionMode_SourceOver);
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

void CardShadow::MakeTiles()
{
    if (picture.isNull()) {
        return;
    }
    corner = QSize(picture.width() / 2 - 1, picture.height() / 2 - 1);
    const QPoint end(picture.width() - corner.width(), picture.height() - corner.height());
    const QSize middle(end.x() - corner.width(), end.y() - corner.height());
    const QSize along(TILE_LENGTH, corner.height());
    const QSize down(corner.width(), TILE_LENGTH);
    top = Tile(picture, {QPoint(corner.width(), 0), QSize(middle.width(), corner.height())}, along);
    bottom = Tile(picture, {QPoint(corner.width(), end.y()), QSize(middle.width(), corner.height())}, along);
    left = Tile(picture, {QPoint(0, corner.height()), QSize(corner.width(), middle.height())}, down);
    right = Tile(picture, {QPoint(end.x(), corner.height()), QSize(corner.width(), middle.height())}, down);
}

void CardShadow::DrawFrame(QPainter& painter) const
{
    const int blur = qCeil(blurRadius());
    const QRect frame = card->rect().adjusted(-blur, -blur, blur, blur).translated(offset().toPoint());
    const QPoint endOfPicture(picture.width() - corner.width(), picture.height() - corner.height());
    const int endX = frame.x() + frame.width() - corner.width();
    const int endY = frame.y() + frame.height() - corner.height();

    painter.drawPixmap(frame.topLeft(), picture, QRect(QPoint(0, 0), corner));
    painter.drawPixmap(QPoint(endX, frame.y()), picture, QRect(QPoint(endOfPicture.x(), 0), corner));
    painter.drawPixmap(QPoint(frame.x(), endY), picture, QRect(QPoint(0, endOfPicture.y()), corner));
    painter.drawPixmap(QPoint(endX, endY), picture, QRect(endOfPicture, corner));

    // The card is opaque behind its edges: of the sides only what lies beside it is seen.
    const QRect inner = frame.adjusted(corner.width(), corner.height(), -corner.width(), -corner.height());
    const int above = -frame.y();
    const int below = frame.y() + frame.height() - card->height();
    const int before = -frame.x();
    const int behind = frame.x() + frame.width() - card->width();
    painter.drawTiledPixmap(QRect(inner.x(), frame.y(), inner.width(), above), top);
    painter.drawTiledPixmap(QRect(inner.x(), card->height(), inner.width(), below), bottom,
                            QPoint(0, corner.height() - below));
    painter.drawTiledPixmap(QRect(frame.x(), inner.y(), before, inner.height()), left);
    painter.drawTiledPixmap(QRect(card->width(), inner.y(), behind, inner.height()), right,
                            QPoint(corner.width() - behind, 0));
}
