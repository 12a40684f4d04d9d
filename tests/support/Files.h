#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>
#include <string>
#include <sys/stat.h>

/// Small doings with files. Paths are given as QString and handed to the code under test with Local().
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

/// The permission bits; 0 where nothing stands.
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

/// The mask of permissions, for as long as the object lives.
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
