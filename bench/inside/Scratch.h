#pragma once

#include <string>

#include <QTemporaryDir>

/// A folder of this process's own, on the same file system for all that is measured.
inline std::string ScratchPath(const char* name)
{
    static const QTemporaryDir folder;
    return folder.filePath(QString::fromLatin1(name)).toStdString();
}
