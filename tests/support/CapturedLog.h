#pragma once

#include <QList>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include "support/Lists.h"

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
        /// The whole line.
        QString text;
    };

    CapturedLog();
    ~CapturedLog();

    QString Path() const;
    QList<Line> Lines() const;
    /// The messages of the lines that contain `part`, for instance a source file ("AppManager.cpp"), a level
    /// ("[ERROR]") or the socket of an application.
    QStringList Messages(const QString& part = QString()) const;
    /// `level` is the word: "INFO", "WARNING", "ERROR".
    bool Contains(const QString& level, const QString& module, const QString& message) const;
    int Count(const QString& message) const;
    /// Begins with an empty log.
    void Clear();

private:
    QTemporaryDir directory;
};
