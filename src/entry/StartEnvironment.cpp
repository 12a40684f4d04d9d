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

/// The scale factor of the first screen, or 1. Qt divides a screen's dots per inch by this factor, so they
/// are multiplied by it first. Desktops that set factors by screen ("1.5;1.5", "eDP-1=1.5;HDMI-1=1.5;") use
/// one factor for all screens.
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
        // In a Wayland session Qt would use its Wayland plug-in, with which windows can be neither placed nor
        // raised.
        Replace(PLATFORM, "xcb");
    }
    // The attribute alone does not affect the fonts of widgets.
    QCoreApplication::setAttribute(Qt::AA_Use96Dpi);
    Replace(FONT_DPI, QByteArray::number(DOTS_PER_INCH * ScreenFactor(), 'f', 0));
    // The forms do not set every colour. Those of a dark desktop would give white text on white.
    QApplication::setDesktopSettingsAware(false);
    Replace(STYLE, "fusion");
    if (!qEnvironmentVariableIsSet(GL_INTEGRATION)) {
        // No window uses OpenGL. Loading it takes more than half of the start and 20 MiB.
        Replace(GL_INTEGRATION, "none");
    }
}

StartEnvironment::~StartEnvironment()
{
    Restore();
}

void StartEnvironment::Restore()
{
    for (const Variable& variable : given) {
        if (variable.value.isNull()) {
            qunsetenv(variable.name);
        } else {
            qputenv(variable.name, variable.value);
        }
    }
    given.clear();
}

void StartEnvironment::Replace(const char* name, const QByteArray& value)
{
    given.push_back({name, qgetenv(name)});
    qputenv(name, value);
}
