#pragma once

#include <QByteArray>
#include <vector>

/// What Qt is to find while it starts, so that the program is the same on every desktop: the X server in
/// whatever session, 96 dots per inch, the style and the colours that Qt brings along, no OpenGL.
///
/// Built before the QApplication. That one reads the environment, all but the OpenGL switch, which is read
/// with the first native window. Children inherit the environment, so it has to be given back before one is
/// started.
class StartEnvironment
{
public:
    StartEnvironment();
    ~StartEnvironment();
    StartEnvironment(const StartEnvironment&) = delete;
    StartEnvironment& operator=(const StartEnvironment&) = delete;

    /// Puts back what was given. After the first window was shown.
    void GiveBack();

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
