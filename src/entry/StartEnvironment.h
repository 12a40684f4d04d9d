#pragma once

#include <QByteArray>
#include <QStringList>
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

    /// Lets Qt find no plug-ins until all is put back. Once the QApplication has found its own.
    ///
    /// The program's pictures have names without a suffix, and before Qt tries what it can read by itself, it
    /// loads every image plug-in of the machine. Where the user has chosen an OpenGL, this does nothing: that
    /// is a plug-in, and looked for with the first native window.
    void ReadOwnPicturesOnly();
    /// Puts back what was given. After the first window was shown.
    void GiveBack();

private:
    struct Variable
    {
        const char* name;
        bool wasSet;
        QByteArray value;
    };

    void Replace(const char* name, const QByteArray& value);

    std::vector<Variable> given;
    bool openGlIsTheUsers;
    QStringList pluginPaths;
};
