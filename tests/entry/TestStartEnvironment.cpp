#include <QApplication>
#include <QTest>

#include "entry/StartEnvironment.h"
#include "support/Environment.h"

class TestStartEnvironment : public QObject
{
    Q_OBJECT

private slots:
    void platformIsXcbIfDisplayIsSet_data();
    void platformIsXcbIfDisplayIsSet();
    void dotsPerInchFollowTheScreenFactors_data();
    void dotsPerInchFollowTheScreenFactors();
    void environmentIsRestored();
    void openGlChoiceOfTheUserIsKept();
    void desktopSettingsHaveNoEffect();
    void destructorRestoresTheEnvironment();
};

void TestStartEnvironment::platformIsXcbIfDisplayIsSet_data()
{
    QTest::addColumn<QByteArray>("display");
    QTest::addColumn<QByteArray>("platform");
    QTest::addColumn<QByteArray>("expected");
    QTest::newRow("display") << QByteArray(":1") << QByteArray() << QByteArray("xcb");
    QTest::newRow("empty choice") << QByteArray(":1") << QByteArray("") << QByteArray("xcb");
    QTest::newRow("user's choice") << QByteArray(":1") << QByteArray("wayland;xcb")
                                   << QByteArray("wayland;xcb");
    QTest::newRow("no display") << QByteArray() << QByteArray() << QByteArray();
    QTest::newRow("empty display") << QByteArray("") << QByteArray() << QByteArray();
}

void TestStartEnvironment::platformIsXcbIfDisplayIsSet()
{
    QFETCH(QByteArray, display);
    QFETCH(QByteArray, platform);
    QFETCH(QByteArray, expected);
    const Variable displayVariable("DISPLAY", display);
    const Variable platformVariable("QT_QPA_PLATFORM", platform);
    const StartEnvironment environment;
    QCOMPARE(qgetenv("QT_QPA_PLATFORM"), expected);
}

void TestStartEnvironment::dotsPerInchFollowTheScreenFactors_data()
{
    QTest::addColumn<QByteArray>("factors");
    QTest::addColumn<QByteArray>("dpi");
    QTest::newRow("none") << QByteArray() << QByteArray("96");
    QTest::newRow("empty") << QByteArray("") << QByteArray("96");
    QTest::newRow("one") << QByteArray("2") << QByteArray("192");
    QTest::newRow("less than one") << QByteArray("0.75") << QByteArray("72");
    QTest::newRow("two") << QByteArray("1.25;1.25") << QByteArray("120");
    QTest::newRow("by name") << QByteArray("eDP-1=1.5;HDMI-1=1.5;") << QByteArray("144");
    QTest::newRow("invalid") << QByteArray("eDP-1=large") << QByteArray("96");
    QTest::newRow("zero") << QByteArray("0") << QByteArray("96");
    QTest::newRow("negative") << QByteArray("-2") << QByteArray("96");
    QTest::newRow("infinite") << QByteArray("inf") << QByteArray("96");
    QTest::newRow("not a number") << QByteArray("nan") << QByteArray("96");
}

void TestStartEnvironment::dotsPerInchFollowTheScreenFactors()
{
    QFETCH(QByteArray, factors);
    QFETCH(QByteArray, dpi);
    const Variable factorsVariable("QT_SCREEN_SCALE_FACTORS", factors);
    const StartEnvironment environment;
    QCOMPARE(qgetenv("QT_FONT_DPI"), dpi);
}

void TestStartEnvironment::environmentIsRestored()
{
    const Variable display("DISPLAY", ":1");
    const Variable platform("QT_QPA_PLATFORM", "");
    const Variable dpi("QT_FONT_DPI", "120");
    const Variable style("QT_STYLE_OVERRIDE", QByteArray());
    const Variable openGl("QT_XCB_GL_INTEGRATION", QByteArray());
    StartEnvironment environment;
    QCOMPARE(qgetenv("QT_STYLE_OVERRIDE"), QByteArray("fusion"));
    QCOMPARE(qgetenv("QT_XCB_GL_INTEGRATION"), QByteArray("none"));
    environment.Restore();
    QVERIFY(qEnvironmentVariableIsSet("QT_QPA_PLATFORM"));
    QCOMPARE(qgetenv("QT_QPA_PLATFORM"), QByteArray(""));
    QCOMPARE(qgetenv("QT_FONT_DPI"), QByteArray("120"));
    QVERIFY(!qEnvironmentVariableIsSet("QT_STYLE_OVERRIDE"));
    QVERIFY(!qEnvironmentVariableIsSet("QT_XCB_GL_INTEGRATION"));
    // Only the first call restores the values. A second call keeps later values.
    qputenv("QT_FONT_DPI", "100");
    environment.Restore();
    QCOMPARE(qgetenv("QT_FONT_DPI"), QByteArray("100"));
}

void TestStartEnvironment::openGlChoiceOfTheUserIsKept()
{
    const Variable openGl("QT_XCB_GL_INTEGRATION", "xcb_egl");
    const StartEnvironment environment;
    QCOMPARE(qgetenv("QT_XCB_GL_INTEGRATION"), QByteArray("xcb_egl"));
}

void TestStartEnvironment::desktopSettingsHaveNoEffect()
{
    QCoreApplication::setAttribute(Qt::AA_Use96Dpi, false);
    QApplication::setDesktopSettingsAware(true);
    const StartEnvironment environment;
    QVERIFY(QCoreApplication::testAttribute(Qt::AA_Use96Dpi));
    QVERIFY(!QApplication::desktopSettingsAware());
}

void TestStartEnvironment::destructorRestoresTheEnvironment()
{
    const Variable dpi("QT_FONT_DPI", QByteArray());
    {
        const StartEnvironment environment;
        QCOMPARE(qgetenv("QT_FONT_DPI"), QByteArray("96"));
    }
    QVERIFY(!qEnvironmentVariableIsSet("QT_FONT_DPI"));
}

QTEST_APPLESS_MAIN(TestStartEnvironment)
#include "TestStartEnvironment.moc"
