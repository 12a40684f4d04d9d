// Creates the sandbox for the programs of a DesktopWorld. It contains the installed program below a separate
// /opt.

#include <QDir>
#include <QFile>

#include "DesktopWorld.h"

namespace {
QString BuiltProgram(const QString& name)
{
    return QStringLiteral(VELODESK_BINARY_DIR "/") + name;
}

QStringList Words(const char* text)
{
    return QString::fromLatin1(text).split(QLatin1Char(' '));
}
} // namespace

void DesktopWorld::Stage() const
{
    QDir stage(scratch.path());
    stage.mkpath(QStringLiteral("files/bin"));
    stage.mkpath(QStringLiteral("files/tandra/bin"));
    QFile::copy(BuiltProgram(QStringLiteral("Velodesk")), InstalledDir() + QStringLiteral("/bin/Velodesk"));
    QFile::copy(options.engine.isEmpty() ? BuiltProgram(QStringLiteral("standin-engine")) : options.engine,
                InstalledDir() + QStringLiteral("/tandra/bin/Tandra"));
    QFile::copy(BuiltProgram(QStringLiteral("standin-phone")),
                InstalledDir() + QStringLiteral("/tandra/bin/standin-phone"));
    QFile::copy(BuiltProgram(QStringLiteral("standin-daemon")),
                scratch.filePath(QStringLiteral("standin-daemon")));
}

QStringList DesktopWorld::RootArguments() const
{
    const QString programs = QLatin1String(INSTALLED_DIR) + QStringLiteral("/bin");
    const QString engine = QLatin1String(INSTALLED_DIR) + QStringLiteral("/tandra");
    // /opt is empty except for the program, so that the engine can be mounted there. The sockets of display
    // and buses and the scratch folder are in /tmp.
    QStringList arguments{QStringLiteral("--ro-bind"), options.root, QStringLiteral("/")};
    arguments << Words("--dev-bind /dev /dev --dev-bind /proc /proc --dev-bind /tmp /tmp --tmpfs /opt");
    arguments << QStringLiteral("--ro-bind") << options.root + programs << programs;
    arguments << QStringLiteral("--ro-bind") << InstalledDir() + QStringLiteral("/tandra") << engine;
    return arguments << Words("--die-with-parent --cap-drop ALL");
}

QStringList DesktopWorld::SandboxArguments() const
{
    if (!options.root.isEmpty()) {
        return RootArguments();
    }
    // Mounts the empty /opt first, because bwrap would create missing mount points on the machine itself.
    // Drops the capabilities, so that root has only the permissions of other users.
    QStringList arguments = Words("--dev-bind / / --tmpfs /opt --bind");
    arguments << InstalledDir() << QLatin1String(INSTALLED_DIR) << Words("--die-with-parent --cap-drop ALL");
    if (!options.lsbRelease.isNull()) {
        QFile file(scratch.filePath(QStringLiteral("lsb-release")));
        if (file.open(QIODevice::WriteOnly)) {
            file.write(options.lsbRelease.toUtf8());
        }
        // scratch-run has created /etc/lsb-release as a mount point.
        arguments << QStringLiteral("--ro-bind") << file.fileName() << QStringLiteral("/etc/lsb-release");
    }
    return arguments;
}

std::unique_ptr<QProcess> DesktopWorld::LaunchProgram(const QStringList& arguments,
                                                      const QStringList& unset) const
{
    QProcessEnvironment changed = environment;
    for (const QString& name : unset) {
        changed.remove(name);
    }
    auto process = std::make_unique<QProcess>();
    process->setProcessEnvironment(changed);
    KeepMessages(*process, QProcess::StandardOutput);
    QStringList command = SandboxArguments();
    if (unset.contains(QStringLiteral("HOME"))) {
        // Without a home, the program writes to /, so / must be read-only.
        command << QStringLiteral("--remount-ro") << QStringLiteral("/");
    }
    command << QStringLiteral("bash") << QStringLiteral("-c") << QStringLiteral("exec -a \"$0\" \"$@\"")
            << arguments.first() << QLatin1String(INSTALLED_DIR) + QStringLiteral("/bin/Velodesk")
            << arguments.mid(1);
    process->start(QStringLiteral("bwrap"), command);
    return process;
}

int DesktopWorld::RunBeside(const QStringList& command, QString& output) const
{
    QProcess process;
    process.setProcessEnvironment(environment);
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(QStringLiteral("bwrap"), SandboxArguments() + command);
    const bool ended = process.waitForFinished();
    output = QString::fromLocal8Bit(process.readAll());
    return ended && process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
}
