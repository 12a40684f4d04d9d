#include "shell/CardShadow.h"

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
/// Where a length is cut in two ends and a middle.
struct Cuts
{
    int start[3];
    int length[3];
};

Cuts Cut(int start, int length, int end)
{
    return {{start, start + end, start + length - end}, {end, length - 2 * end, end}};
}

/// The corners of the picture as they are, its sides stretched, and no middle: the card hides that.
void DrawFrame(QPainter& painter, const QRect& place, const QPixmap& picture)
{
    const int endX = picture.width() / 2 - 1;
    const int endY = picture.height() / 2 - 1;
    const Cuts toX = Cut(place.x(), place.width(), endX);
    const Cuts toY = Cut(place.y(), place.height(), endY);
    const Cuts fromX = Cut(0, picture.width(), endX);
    const Cuts fromY = Cut(0, picture.height(), endY);
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 3; ++column) {
            if (row != 1 || column != 1) {
                painter.drawPixmap(
                    QRect(toX.start[column], toY.start[row], toX.length[column], toY.length[row]), picture,
                    QRect(fromX.start[column], fromY.start[row], fromX.length[column], fromY.length[row]));
            }
        }
    }
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
    // In place of what is there: Qt has cleared the places that changed, but lets the effect paint all that
    // lies between them, and a shadow on a shadow grows darker.
    painter->setCompositionMode(QPainter::CompositionMode_Source);
    DrawFrame(*painter, card->rect().adjusted(-blur, -blur, blur, blur).translated(offset().toPoint()),
              picture);
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
