#pragma once

#include <QByteArray>
#include <vector>

/// Sets the environment variables that make Qt look the same on every desktop: the X server in every kind of
/// session, 96 dots per inch, Qt's own style and colours, and no OpenGL.
///
/// main() owns it and constructs it before the QApplication, which reads these variables. Qt reads the OpenGL
/// variable later, when it creates the first native window. Call Restore() after that and before a child is
/// started, because children inherit the environment. Main thread only.
class StartEnvironment
{
public:
    StartEnvironment();
    ~StartEnvironment();
    StartEnvironment(const StartEnvironment&) = delete;
    StartEnvironment& operator=(const StartEnvironment&) = delete;

    /// Restores the variables that the constructor has changed. A second call has no effect.
    void Restore();

private:
    struct Variable
    {
        const char* name;
        /// The original value; null if the variable was not set.
        QByteArray value;
    };

    void Replace(const char* name, const QByteArray& value);

    std::vector<Variable> replaced;
};
