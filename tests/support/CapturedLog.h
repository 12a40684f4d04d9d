#pragma once

#include <QList>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

/// The program's log in a file of its own, for as long as the object lives. One at a time.
class CapturedLog
{
public:
    struct Line
    {
        QString level;
        QString file;
        int number;
        QString module;
        QString message;
    };

    CapturedLog();
    ~CapturedLog();

    QString Path() const;
    QList<Line> Lines() const;
    QStringList Messages() const;
    /// `level` is the word: "INFO", "WARNING", "ERROR".
    bool Contains(const QString& level, const QString& module, const QString& message) const;
    int Count(const QString& message) const;
    /// Begins with an empty log.
    void Clear();

private:
    QTemporaryDir directory;
};
