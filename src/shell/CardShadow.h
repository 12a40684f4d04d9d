#pragma once

#include <QGraphicsDropShadowEffect>
#include <QPixmap>
#include <QString>

class QWidget;

/// The drop shadow of a card, drawn from a picture that is made once.
///
/// Qt's own effect draws the whole card into an image and blurs it for each change of the smallest label on
/// the card. Here only what has changed is drawn: the card is opaque and has straight edges, so the shadow is
/// a small image of which the edges are stretched. Colour, offset and blur radius are those of the base
/// class; set them before the first paint.
class CardShadow : public QGraphicsDropShadowEffect
{
public:
    /// `card`: the widget that gets the effect; its own style alone decides on the outline.
    CardShadow(const QWidget* card, QObject* parent);

protected:
    void draw(QPainter* painter) override;

private:
    /// Null for a card whose own background does not fill it: its children cast the shadow, and Qt draws it.
    QPixmap MakePicture(const QSize& sampleSize) const;

    const QWidget* card;
    QPixmap picture;
    /// What the picture was made of.
    QString pictureStyle;
    QSize pictureSample;
};
