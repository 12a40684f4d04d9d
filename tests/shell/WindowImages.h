#pragma once

#include <QImage>
#include <QList>
#include <QString>

/// An image of a window as it paints itself, with margins, shadow and alpha channel.
struct WindowImage
{
    QString name;
    QImage image;
    /// Whether the tests compare it with a golden image. The other images are only for people.
    bool golden;
};

/// Creates the images of every window, page and state, with or without shadow. Needs a display with room for
/// the windows, and a scratch home because it writes the settings file.
QList<WindowImage> TakeWindowImages(bool shadow);
