#pragma once

#include <string>

#include <QTemporaryDir>

/// Returns a path in this process's temporary folder. All benchmarks use the same file system.
inline std::string ScratchPath(const char* name)
{
    static const QTemporaryDir folder;
    return folder.filePath(QString::fromLatin1(name)).toStdString();
}
