#pragma once

#include <QByteArray>
#include <vector>

/// Sets the environment variables that make Qt look the same on every desktop: the X server in every kind of
/// session, 96 dots per inch, Qt's own style and colours, and no OpenGL.
///
/// Construct it before the QApplication, which reads these variables; the OpenGL variable is read when the
/// first native window is created. Children inherit the environment: call Restore() before one is started.
/// Main thread only.
class StartEnvironment
{
public:
    StartEnvironment();
    ~StartEnvironment();
    StartEnvironment(const StartEnvironment&) = delete;
    StartEnvironment& operator=(const StartEnvironment&) = delete;

    /// Restores the environment. Call it after the first window is shown; a second call has no effect.
    void Restore();

private:
    struct Variable
    {
        const char* name;
        /// Null if it was not set.
        QByteArray value;
    };

    void Replace(const char* name, const QByteArray& value);

    std::vector<Variable> given;
};
