#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>

#include "config/Constant.h"

/// Direct access to the settings file in the test's home, without the program's classes.
namespace SettingsFile {
inline QString Path()
{
    return QString::fromStdString(GetConstant(Velodesk::CONF_FILE));
}

inline void Write(const QByteArray& content)
{
    QFile file(Path());
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size()) {
        qFatal("%s cannot be written", qPrintable(Path()));
    }
}

inline QByteArray Content()
{
    QFile file(Path());
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// Returns the value of "key=" in that section, or null if there is none.
inline QByteArray Value(const QByteArray& section, const QByteArray& key)
{
    QByteArray current;
    const QList<QByteArray> lines = Content().split('\n');
    for (const QByteArray& line : lines) {
        if (line.startsWith('[')) {
            current = line.mid(1, line.indexOf(']') - 1);
        } else if (current == section && line.startsWith(key + '=')) {
            return line.mid(key.size() + 1);
        }
    }
    return QByteArray();
}

inline QByteArray DeviceName()
{
    return Value("Tandra", "devicename");
}

inline QByteArray SavePath()
{
    return Value("Tandra", "fileStorePath");
}

inline QByteArray TrustNum()
{
    return Value("VelodeskServer", "trustNum");
}
} // namespace SettingsFile
