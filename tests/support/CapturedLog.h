#pragma once

#include <QList>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include "support/Lists.h"

/// Redirects the program's log to a temporary file as long as the object exists. Only one object may exist at
/// a time.
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
    /// Returns the messages of the lines that contain `part`, for instance a source file ("AppManager.cpp"),
    /// a level ("[ERROR]") or the socket of an application.
    QStringList Messages(const QString& part = QString()) const;
    /// Returns whether the log has such a line. `level`: "INFO", "WARNING" or "ERROR".
    bool Contains(const QString& level, const QString& module, const QString& message) const;
    int Count(const QString& message) const;
    /// Empties the log.
    void Clear();

private:
    QTemporaryDir directory;
};
