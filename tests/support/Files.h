#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>
#include <string>
#include <sys/stat.h>

/// Helpers for files. They take paths as QString. Local() converts a path for the tested code.
inline std::string Local(const QString& path)
{
    return path.toLocal8Bit().toStdString();
}

inline QByteArray ReadAll(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        qFatal("%s cannot be read", qPrintable(path));
    }
    return file.readAll();
}

inline void WriteAll(const QString& path, const QByteArray& content)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size()) {
        qFatal("%s cannot be written", qPrintable(path));
    }
}

/// Returns the permission bits, or 0 if the file does not exist.
inline mode_t ModeOf(const QString& path)
{
    struct stat status
    {};
    return lstat(Local(path).c_str(), &status) == 0 ? status.st_mode & 07777U : 0U;
}

inline void SetMode(const QString& path, mode_t mode)
{
    if (chmod(Local(path).c_str(), mode) != 0) {
        qFatal("the mode of %s cannot be set", qPrintable(path));
    }
}

/// Sets the file mode creation mask as long as the object exists.
class Umask
{
public:
    explicit Umask(mode_t mask) : before(umask(mask)) {}
    ~Umask() { umask(before); }
    Umask(const Umask&) = delete;
    Umask& operator=(const Umask&) = delete;

private:
    mode_t before;
};
