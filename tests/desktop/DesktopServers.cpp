// Starts the servers of a DesktopWorld: display, window manager, compositor, buses.

#include <QDir>
#include <QFile>
#include <QProcess>

#include "DesktopWorld.h"

namespace {
constexpr int STARTED_MS = 120000;

constexpr char BUS_CONFIGURATION[] =
    R"(<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
 <type>%1</type>
 <listen>unix:tmpdir=%2</listen>
 <servicedir>%2/services</servicedir>
 <auth>EXTERNAL</auth>
 <policy context="default">
  <allow user="*"/>
  <allow own="*"/>
  <allow send_destination="*"/>
  <allow receive_sender="*"/>
 </policy>
</busconfig>
)";

/// The Xorg configuration of a dummy graphics card with two monitors.
constexpr char TWO_MONITORS[] = R"(Section "ServerFlags"
 Option "AutoAddDevices" "false"
 Option "DontVTSwitch" "true"
EndSection
Section "Device"
 Identifier "card"
 Driver "dummy"
 VideoRam 32768
EndSection
Section "Monitor"
 Identifier "monitor"
 HorizSync 5.0-1000.0
 VertRefresh 5.0-200.0
 Modeline "1280x800" 83.50 1280 1352 1480 1680 800 803 809 831
EndSection
Section "Screen"
 Identifier "screen"
 Device "card"
 Monitor "monitor"
 DefaultDepth 24
 SubSection "Display"
  Depth 24
  Virtual 2560 800
  Modes "1280x800"
 EndSubSection
EndSection
)";

QString FirstLine(QProcess& process)
{
    while (!process.canReadLine()) {
        if (!process.waitForReadyRead(STARTED_MS)) {
            return QString();
        }
    }
    return QString::fromLocal8Bit(process.readLine()).trimmed();
}
} // namespace

QString DesktopWorld::StartDisplay()
{
    QString display = options.display;
    if (display.isEmpty()) {
        display = options.wayland ? StartWeston() : (options.twoMonitors ? StartXorg() : StartXvfb());
        if (display.isEmpty()) {
            return server.program() + QStringLiteral(" does not start: ") + server.errorString();
        }
    }
    SetVariable(QStringLiteral("DISPLAY"), display);
    desktop = std::make_unique<XDesktop>(display);
    if (!options.resources.isEmpty()) {
        desktop->SetResources(options.resources);
    }
    if (options.twoMonitors && !AddMonitor()) {
        return QStringLiteral("the second monitor cannot be added");
    }
    return options.display.isEmpty() && !options.wayland ? StartManager() : QString();
}

QString DesktopWorld::StartXvfb()
{
    const QString geometry =
        QStringLiteral("%1x%2x24").arg(options.screen.width()).arg(options.screen.height());
    QStringList arguments{QStringLiteral("-displayfd"),
                          QStringLiteral("1"),
                          QStringLiteral("-screen"),
                          QStringLiteral("0"),
                          geometry,
                          QStringLiteral("-nolisten"),
                          QStringLiteral("tcp"),
                          QStringLiteral("-noreset")};
    if (options.dpi != 0) {
        arguments << QStringLiteral("-dpi") << QString::number(options.dpi);
    }
    server.setProcessEnvironment(environment);
    KeepMessages(server, QProcess::StandardError);
    server.start(QStringLiteral("Xvfb"), arguments);
    const QString number = FirstLine(server);
    return number.isEmpty() ? number : QLatin1Char(':') + number;
}

QString DesktopWorld::StartXorg()
{
    const QString path = scratch.filePath(QStringLiteral("xorg.conf"));
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly)) {
        return QString();
    }
    file.write(TWO_MONITORS);
    file.close();
    server.setProcessEnvironment(environment);
    KeepMessages(server, QProcess::StandardError);
    // Starts Xorg without its wrapper, which rejects users who are not logged in on a console.
    server.start(QStringLiteral("/usr/lib/xorg/Xorg"),
                 {QStringLiteral("-displayfd"), QStringLiteral("1"), QStringLiteral("-config"), path,
                  QStringLiteral("-logfile"), scratch.filePath(QStringLiteral("xorg.log")),
                  QStringLiteral("-nolisten"), QStringLiteral("tcp"), QStringLiteral("-noreset"),
                  QStringLiteral("-novtswitch"), QStringLiteral("-sharevts"), QStringLiteral("-keeptty")});
    const QString number = FirstLine(server);
    return number.isEmpty() ? number : QLatin1Char(':') + number;
}

bool DesktopWorld::AddMonitor() const
{
    const QString monitor = QStringLiteral("DUMMY1");
    const QString mode = QStringLiteral("1280x800");
    const QList<QStringList> steps{
        {QStringLiteral("--addmode"), monitor, mode},
        {QStringLiteral("--output"), monitor, QStringLiteral("--mode"), mode, QStringLiteral("--right-of"),
         QStringLiteral("DUMMY0"), QStringLiteral("--primary")},
        // The driver reports a monitor as connected only if it is queried after its first use.
        {QStringLiteral("--query")}};
    for (const QStringList& step : steps) {
        QProcess xrandr;
        xrandr.setProcessEnvironment(environment);
        xrandr.start(QStringLiteral("xrandr"), step);
        if (!xrandr.waitForFinished() || xrandr.exitCode() != 0) {
            return false;
        }
    }
    return true;
}

QString DesktopWorld::StartWeston()
{
    const QString socket = QStringLiteral("wayland-0");
    // Weston needs the folder of the X servers' sockets, but no X server has created it in the sandbox.
    QDir(QStringLiteral("/tmp")).mkdir(QStringLiteral(".X11-unix"));
    server.setProcessEnvironment(environment);
    server.setProcessChannelMode(QProcess::MergedChannels);
    server.start(QStringLiteral("weston"),
                 {QStringLiteral("--backend=headless-backend.so"), QStringLiteral("--xwayland"),
                  QStringLiteral("--no-config"), QStringLiteral("--socket=") + socket,
                  QStringLiteral("--width=%1").arg(options.screen.width()),
                  QStringLiteral("--height=%1").arg(options.screen.height())});
    SetVariable(QStringLiteral("WAYLAND_DISPLAY"), socket);
    SetVariable(QStringLiteral("XDG_SESSION_TYPE"), QStringLiteral("wayland"));
    const QString mark = QStringLiteral("listening on display ");
    for (QString line = FirstLine(server); !line.isEmpty(); line = FirstLine(server)) {
        if (line.contains(mark)) {
            return line.section(mark, 1);
        }
    }
    return QString();
}

QString DesktopWorld::StartManager()
{
    windowManager.setProcessEnvironment(environment);
    KeepMessages(windowManager, QProcess::StandardOutput);
    const QStringList manager = QProcess::splitCommand(options.windowManager);
    windowManager.start(manager.first(), manager.mid(1));
    if (!WaitFor([this] { return desktop->HasWindowManager() && desktop->ManagesWindows(); })) {
        return options.windowManager + QStringLiteral(" does not start: ") + windowManager.errorString();
    }
    if (options.compositor && !desktop->HasCompositor()) {
        compositor.setProcessEnvironment(environment);
        KeepMessages(compositor, QProcess::StandardOutput);
        compositor.start(QStringLiteral("xcompmgr"), {QStringLiteral("-n")});
        if (!WaitFor([this] { return desktop->HasCompositor(); })) {
            return QStringLiteral("xcompmgr does not start: ") + compositor.errorString();
        }
    }
    return QString();
}

QString DesktopWorld::StartBus(QProcess& bus, const QString& type, const QString& variable)
{
    const QString path = scratch.filePath(type + QStringLiteral(".conf"));
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly)) {
        return file.errorString();
    }
    file.write(
        QString::fromLatin1(BUS_CONFIGURATION).arg(type, scratch.filePath(QStringLiteral("run"))).toUtf8());
    file.close();
    bus.setProcessEnvironment(environment);
    KeepMessages(bus, QProcess::StandardError);
    bus.start(QStringLiteral("dbus-daemon"),
              {QStringLiteral("--config-file=") + path, QStringLiteral("--nofork"),
               QStringLiteral("--nopidfile"), QStringLiteral("--print-address=1")});
    const QString address = FirstLine(bus);
    if (address.isEmpty()) {
        return QStringLiteral("dbus-daemon does not start: ") + bus.errorString();
    }
    SetVariable(variable, address);
    return QString();
}

void DesktopWorld::KeepMessages(QProcess& process, QProcess::ProcessChannel first) const
{
    process.setStandardErrorFile(options.messages, QIODevice::Append);
    if (first == QProcess::StandardOutput) {
        process.setStandardOutputFile(options.messages, QIODevice::Append);
    }
}
