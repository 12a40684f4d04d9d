#include <QTest>

#include "statuschannel/AppMessage.h"

class TestAppMessage : public QObject
{
    Q_OBJECT

private slots:
    void encodesEachStatus_data();
    void encodesEachStatus();
};

void TestAppMessage::encodesEachStatus_data()
{
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("message");
    QTest::newRow("init") << 0 << QByteArray(R"({"status":"init"})");
    QTest::newRow("run") << 1 << QByteArray(R"({"status":"run"})");
    QTest::newRow("stop") << 2 << QByteArray(R"({"status":"stop"})");
    QTest::newRow("no status") << 3 << QByteArray("{}");
    QTest::newRow("negative") << -1 << QByteArray("{}");
}

void TestAppMessage::encodesEachStatus()
{
    QFETCH(int, status);
    QFETCH(QByteArray, message);
    QCOMPARE(AppMessage(static_cast<AppStatus>(status)).GetAppMsg(), message);
}

QTEST_GUILESS_MAIN(TestAppMessage)
#include "TestAppMessage.moc"
