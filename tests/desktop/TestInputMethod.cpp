#include <QProcess>

#include "DesktopTest.h"

/// Types Chinese text with key presses through an input method.
class TestInputMethod : public DesktopTest
{
    Q_OBJECT

private slots:
    void cleanup();

    void pinyinBecomesTheNameOfThePc();
    void nameIsCutAtFiveCharacters();

private:
    void BeginWithPinyin();
    QByteArray AskInputMethod(const QStringList& words) const;
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

QByteArray TestInputMethod::AskInputMethod(const QStringList& words) const
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
    // Keep its settings in memory: the engine does not start without a settings service.
    inputMethod.start(QStringLiteral("ibus-daemon"),
                      {QStringLiteral("--panel"), QStringLiteral("disable"), QStringLiteral("--config"),
                       QStringLiteral("/usr/libexec/ibus-memconf")});
    QVERIFY(inputMethod.waitForStarted());
    // The exit code also reports the keyboard layout, which cannot be set here; so query the engine.
    QVERIFY(DesktopWorld::WaitFor([this] {
        AskInputMethod({QStringLiteral("engine"), QStringLiteral("libpinyin")});
        return AskInputMethod({QStringLiteral("engine")}) == "libpinyin";
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

void TestInputMethod::pinyinBecomesTheNameOfThePc()
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
    // Each character has three bytes: the sixth one exceeds the limit of 15.
    for (int i = 0; i < 3; ++i) {
        TypeHello();
    }
    world->Desktop().Key(QStringLiteral("Return"));
    VERIFY_SOON(world->SettingsText().contains(QStringLiteral("devicename=你好你好你\n")));
}

QTEST_GUILESS_MAIN(TestInputMethod)
#include "TestInputMethod.moc"
