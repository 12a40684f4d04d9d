#include "multiscreen/StatusPicture.h"

#include <QPainter>
#include <QStyle>
#include <QStyleOption>
#include <QWidget>

bool StatusPicture::PaintGround(QPainter& painter)
{
    QPixmap& picture = pictures[{widget->styleSheet(), LiesOnWhite()}];
    if (picture.size() != widget->size() * widget->devicePixelRatioF()) {
        picture = MakePicture();
    }
    painter.drawPixmap(0, 0, picture);
    return true;
}

void StatusPicture::StyleHasChanged()
{
    WhiteGround::StyleHasChanged();
    // Qt is not to paint the image a second time.
    widget->setAttribute(Qt::WA_StyledBackground, false);
}

QPixmap StatusPicture::MakePicture() const
{
    const qreal ratio = widget->devicePixelRatioF();
    QPixmap picture(widget->size() * ratio);
    picture.setDevicePixelRatio(ratio);
    picture.fill(LiesOnWhite() ? Qt::white : Qt::transparent);
    QPainter painter(&picture);
    QStyleOption option;
    option.initFrom(widget);
    widget->style()->drawPrimitive(QStyle::PE_Widget, &option, &painter, widget);
    return picture;
}

#include "moc_StatusPicture.cpp"
