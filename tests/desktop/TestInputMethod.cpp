#include <QProcess>

#include "DesktopTest.h"

/// Types Chinese text with key presses through an input method.
class TestInputMethod : public DesktopTest
{
    Q_OBJECT

private slots:
    void cleanup();

    void pinyinIsStoredAsTheName();
    void nameIsCutAtFiveCharacters();

private:
    void BeginWithPinyin();
    QByteArray RunIbus(const QStringList& words) const;
    void OpenEmptyName() const;
    void TypeHello() const
    {
        world->Desktop().Type(QStringLiteral("nihao"));
        world->Desktop().Key(QStringLiteral("space"));
    }

    QProcess inputMethod;
};

void TestInputMethod::cleanup()
{
    if (inputMethod.state() != QProcess::NotRunning) {
        inputMethod.terminate();
        inputMethod.waitForFinished();
    }
    world.reset();
}

QByteArray TestInputMethod::RunIbus(const QStringList& words) const
{
    QProcess command;
    command.setProcessEnvironment(world->Environment());
    command.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    command.start(QStringLiteral("ibus"), words);
    command.waitForFinished();
    return command.readAllStandardOutput().trimmed();
}

void TestInputMethod::BeginWithPinyin()
{
    Begin({}, false);
    world->SetVariable(QStringLiteral("QT_IM_MODULE"), QStringLiteral("ibus"));
    world->SetVariable(QStringLiteral("GSETTINGS_BACKEND"), QStringLiteral("memory"));
    for (const char* folder : {"CONFIG", "CACHE", "DATA"}) {
        world->SetVariable(QStringLiteral("XDG_%1_HOME").arg(QLatin1String(folder)),
                           world->Home() + QStringLiteral("/.") + QLatin1String(folder));
    }
    inputMethod.setProcessEnvironment(world->Environment());
    inputMethod.setProcessChannelMode(QProcess::ForwardedChannels);
    // The engine needs a settings service, so the daemon starts one that stores settings in memory.
    inputMethod.start(QStringLiteral("ibus-daemon"),
                      {QStringLiteral("--panel"), QStringLiteral("disable"), QStringLiteral("--config"),
                       QStringLiteral("/usr/libexec/ibus-memconf")});
    QVERIFY(inputMethod.waitForStarted());
    // Queries the engine, because the exit code also depends on the keyboard layout, which cannot be set
    // here.
    QVERIFY(DesktopWorld::WaitFor([this] {
        RunIbus({QStringLiteral("engine"), QStringLiteral("libpinyin")});
        return RunIbus({QStringLiteral("engine")}) == "libpinyin";
    }));
    QVERIFY2(world->StartAssistant(), qPrintable(world->Describe()));
}

void TestInputMethod::OpenEmptyName() const
{
    QVERIFY(world->BeginRename());
    for (int i = 0; i < 15; ++i) {
        world->Desktop().Key(QStringLiteral("BackSpace"));
    }
}

void TestInputMethod::pinyinIsStoredAsTheName()
{
    BeginWithPinyin();
    OpenEmptyName();
    TypeHello();
    world->Desktop().Key(QStringLiteral("Return"));
    VERIFY_SOON(world->SettingsText().contains(QStringLiteral("devicename=你好\n")));
}

void TestInputMethod::nameIsCutAtFiveCharacters()
{
    BeginWithPinyin();
    OpenEmptyName();
    // Each character has three bytes, so the sixth character exceeds the limit of 15 bytes.
    for (int i = 0; i < 3; ++i) {
        TypeHello();
    }
    world->Desktop().Key(QStringLiteral("Return"));
    VERIFY_SOON(world->SettingsText().contains(QStringLiteral("devicename=你好你好你\n")));
}

QTEST_GUILESS_MAIN(TestInputMethod)
#include "TestInputMethod.moc"
