#pragma once

#include <QGraphicsDropShadowEffect>
#include <QPixmap>
#include <QString>

class QWidget;

/// The drop shadow of a card, drawn from an image that is rendered once.
///
/// Each time a widget on the card changes, the base class paints the whole card into an image and blurs it.
/// This class paints only the changed area. The card is opaque and has straight edges, so one small image of
/// the shadow, whose edges are stretched, is sufficient. Set colour, offset and blur radius before the first
/// paint. The effect's parent owns it. Main thread only.
class CardShadow : public QGraphicsDropShadowEffect
{
public:
    /// `card` is the widget that gets the effect, and must outlive it. The outline of the shadow is that of
    /// the card's own background, without its children.
    CardShadow(const QWidget* card, QObject* parent);

protected:
    void draw(QPainter* painter) override;

private:
    /// Returns the shadow of a card of the size `sampleSize`. Returns a null image if the card's own
    /// background is not opaque. The outline of the shadow then depends on the children, and the base class
    /// draws it.
    QPixmap RenderShadow(const QSize& sampleSize) const;

    const QWidget* card;
    QPixmap image;
    /// The style sheet and the size from which the image was rendered.
    QString renderedStyle;
    QSize renderedSize;
};
