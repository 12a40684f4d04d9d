#include <QProcess>

#include "DesktopTest.h"

/// Verifies that the program asks a real KWin whether to show shadows.
class TestKWin : public DesktopTest
{
    Q_OBJECT

private slots:
    void cleanup() { world.reset(); }

    void compositingDecidesTheAppearance_data();
    void compositingDecidesTheAppearance();

private:
    bool CompositorAnswers(const QByteArray& word) const
    {
        QProcess query;
        query.setProcessEnvironment(world->Environment());
        query.start(QStringLiteral("dbus-send"),
                    {QStringLiteral("--session"), QStringLiteral("--dest=org.kde.KWin"),
                     QStringLiteral("--print-reply"), QStringLiteral("/Compositor"),
                     QStringLiteral("org.freedesktop.DBus.Properties.Get"),
                     QStringLiteral("string:org.kde.kwin.Compositing"), QStringLiteral("string:active")});
        query.waitForFinished();
        return query.readAllStandardOutput().contains(word);
    }
    void Suspend() const
    {
        QCOMPARE(QProcess::execute(
                     QStringLiteral("dbus-send"),
                     {QStringLiteral("--bus=") +
                          world->Environment().value(QStringLiteral("DBUS_SESSION_BUS_ADDRESS")),
                      QStringLiteral("--dest=org.kde.KWin"), QStringLiteral("--print-reply"),
                      QStringLiteral("/Compositor"), QStringLiteral("org.kde.kwin.Compositing.suspend")}),
                 0);
    }
};

void TestKWin::compositingDecidesTheAppearance_data()
{
    QTest::addColumn<QString>("compose");
    QTest::addColumn<bool>("suspended");
    QTest::addColumn<bool>("shadow");
    QTest::newRow("composited") << "O2" << false << true;
    QTest::newRow("not composited") << "N" << false << false;
    QTest::newRow("suspended") << "O2" << true << false;
}

void TestKWin::compositingDecidesTheAppearance()
{
    QFETCH(QString, compose);
    QFETCH(bool, suspended);
    QFETCH(bool, shadow);
    DesktopWorld::Options options;
    options.windowManager = QStringLiteral("kwin_x11");
    options.lsbRelease = QStringLiteral("DISTRIB_ID=uos\n");
    options.agreed = false;
    world = std::make_unique<DesktopWorld>(options);
    world->SetVariable(QStringLiteral("KWIN_COMPOSE"), compose);
    const QString missing = world->Start();
    QVERIFY2(missing.isEmpty(), qPrintable(missing));
    QVERIFY(DesktopWorld::WaitFor(
        [&] { return CompositorAnswers(compose == QLatin1String("O2") ? "true" : "false"); }));
    if (suspended) {
        Suspend();
        QVERIFY(DesktopWorld::WaitFor([&] { return CompositorAnswers("false"); }));
    }

    QVERIFY(world->StartAssistant());
    QVERIFY(world->HasLog(shadow ? QStringLiteral("VELODESK: Use Shadow")
                                 : QStringLiteral("VELODESK: Don't Use Shadow")));
    VERIFY_SOON(world->Desktop().PixelAt(world->OnCard(BEGIN_EDGE)) == GREY_BUTTON);
    QCOMPARE(world->BigWindow().rect.size(), shadow ? QSize(936, 544) : QSize(898, 506));
    world->ClickCard(AGREE_TICK);
    VERIFY_SOON(world->Desktop().PixelAt(world->OnCard(BEGIN_EDGE)) == BLUE);
    world->ClickCard(BEGIN_BUTTON);
    VERIFY_SOON(world->HasLog(QStringLiteral("Mainwindow start.")) && world->ShowsIdle());
    world->ClickPage(CAST_BUTTON);
    VERIFY_SOON(world->ShowsCasting());
    // A pixel in the card's corner, which is rounded with shadow and square without.
    const bool square = world->Desktop().PixelAt(world->OnCard(QPoint(895, 503))) == qRgb(0xFF, 0xFF, 0xFF);
    QCOMPARE(square, !shadow);
    QVERIFY(world->ChooseFromMenu(2));
    VERIFY_SOON(world->HasLog(QStringLiteral("Velodesk show about page.")));
    world->ClickCard(CLOSE_BUTTON);
    ConfirmQuit();
    QCOMPARE(world->AssistantStatus(), 0);
    QCOMPARE(world->DaemonStatus(), 0);
}

QTEST_GUILESS_MAIN(TestKWin)
#include "TestKWin.moc"
