#pragma once

#include <QGraphicsDropShadowEffect>
#include <QPixmap>
#include <QString>

class QWidget;

/// The drop shadow of a card, drawn from a picture that is made once.
///
/// Qt's own effect draws the whole card into a picture and blurs that for every change of the smallest label
/// on it. Here only what has changed is drawn anew: the card is opaque and has straight edges, so one small
/// picture of the shadow, stretched, does for its whole life. Colour, offset and blur radius are those of the
/// base class and have to be set before the first paint.
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

    void MakeTiles();
    void DrawFrame(QPainter& painter) const;

    const QWidget* card;
    QPixmap picture;
    /// Of each corner of the picture, and what lies between two of them.
    QSize corner;
    QPixmap top;
    QPixmap bottom;
    QPixmap left;
    QPixmap right;
    /// What the picture was made of.
    QString pictureStyle;
    QSize pictureSample;
};
