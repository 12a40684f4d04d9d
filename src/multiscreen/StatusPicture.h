#pragma once

#include <QHash>
#include <QPair>
#include <QPixmap>
#include <QString>

#include "multiscreen/WhiteGround.h"

/// Paints the border image of a frame from a picture that is made once for each style sheet and background
/// that the frame gets: the style stretches the image to the frame at every paint. Interface thread only.
class StatusPicture : public WhiteGround
{
    Q_OBJECT

public:
    using WhiteGround::WhiteGround;

protected:
    bool PaintGround(QPainter& painter) override;
    void StyleHasChanged() override;

private:
    QPixmap MakePicture() const;

    QHash<QPair<QString, bool>, QPixmap> pictures;
};
