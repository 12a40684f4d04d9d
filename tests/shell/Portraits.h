#pragma once

#include <QImage>
#include <QList>
#include <QString>

/// A picture of a window as it draws itself, margins and shadow included, with alpha.
struct Portrait
{
    QString name;
    QImage image;
    /// One that a change of the program must not alter unseen; the others are for people.
    bool golden;
};

/// Every window, page and state in one of the two looks. Needs a display with room for the windows and a
/// scratch home: it writes the settings file.
QList<Portrait> TakePortraits(bool shadow);
