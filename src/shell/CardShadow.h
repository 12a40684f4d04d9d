#pragma once

#include <QGraphicsDropShadowEffect>
#include <QPixmap>
#include <QString>

class QWidget;

/// The drop shadow of a card, drawn from an image that is rendered once.
///
/// The base class draws the whole card into an image and blurs it each time a widget on the card changes.
/// This class draws only the changed area. The card is opaque and has straight edges, so a small image of the
/// shadow with stretched edges is sufficient. Set the base class's colour, offset and blur radius before the
/// first paint. The effect's parent owns it. Interface thread only.
class CardShadow : public QGraphicsDropShadowEffect
{
public:
    /// `card`: the widget that gets the effect. Only its own style defines the outline, not its children.
    CardShadow(const QWidget* card, QObject* parent);

protected:
    void draw(QPainter* painter) override;

private:
    /// Returns the shadow of a card of that size. Returns a null image if the card's own background does not
    /// fill it: then its children cast the shadow, and the base class draws it.
    QPixmap RenderShadow(const QSize& sampleSize) const;

    const QWidget* card;
    QPixmap image;
    /// The style sheet and the size from which the image was rendered.
    QString renderedStyle;
    QSize renderedSize;
};
