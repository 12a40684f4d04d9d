#include "entry/StartEnvironment.h"

#include <QApplication>
#include <QtGlobal>
#include <cmath>

namespace {
constexpr char DISPLAY_NAME[] = "DISPLAY";
constexpr char PLATFORM[] = "QT_QPA_PLATFORM";
constexpr char FONT_DPI[] = "QT_FONT_DPI";
constexpr char SCREEN_FACTORS[] = "QT_SCREEN_SCALE_FACTORS";
constexpr char STYLE[] = "QT_STYLE_OVERRIDE";
constexpr char GL_INTEGRATION[] = "QT_XCB_GL_INTEGRATION";
constexpr int DOTS_PER_INCH = 96;

/// Returns the scale factor of the first screen in QT_SCREEN_SCALE_FACTORS, or 1. Examples of the variable
/// are "1.5;1.5" and "eDP-1=1.5;HDMI-1=1.5;"; desktops set the same factor for all screens. Qt divides the
/// dots per inch by this factor, so the caller multiplies them by it first.
double ScreenFactor()
{
    const QByteArray first = qgetenv(SCREEN_FACTORS).split(';').first();
    const double factor = first.mid(first.lastIndexOf('=') + 1).toDouble();
    return std::isfinite(factor) && factor > 0 ? factor : 1;
}
} // namespace

StartEnvironment::StartEnvironment()
{
    if (!qEnvironmentVariableIsEmpty(DISPLAY_NAME) && qEnvironmentVariableIsEmpty(PLATFORM)) {
        // In a Wayland session, Qt would otherwise use its Wayland plug-in, which can neither place nor raise
        // windows.
        Replace(PLATFORM, "xcb");
    }
    // The attribute does not affect the fonts of widgets, so QT_FONT_DPI is also needed.
    QCoreApplication::setAttribute(Qt::AA_Use96Dpi);
    Replace(FONT_DPI, QByteArray::number(DOTS_PER_INCH * ScreenFactor(), 'f', 0));
    // Not every colour is set in the forms. With the colours of a dark desktop, some text would be white on
    // white.
    QApplication::setDesktopSettingsAware(false);
    Replace(STYLE, "fusion");
    if (!qEnvironmentVariableIsSet(GL_INTEGRATION)) {
        // No window uses OpenGL. Without this variable, Qt would load it, which takes time and 20 MiB.
        Replace(GL_INTEGRATION, "none");
    }
}

StartEnvironment::~StartEnvironment()
{
    Restore();
}

void StartEnvironment::Restore()
{
    for (const Variable& variable : replaced) {
        if (variable.value.isNull()) {
            qunsetenv(variable.name);
        } else {
            qputenv(variable.name, variable.value);
        }
    }
    replaced.clear();
}

void StartEnvironment::Replace(const char* name, const QByteArray& value)
{
    replaced.push_back({name, qgetenv(name)});
    qputenv(name, value);
}
