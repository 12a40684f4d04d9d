#include <QLocalSocket>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include "statuschannel/LocalServer.h"
#include "support/CapturedLog.h"
#include "support/FewDescriptors.h"
#include "support/Files.h"

class TestLocalServer : public QObject
{
    Q_OBJECT

private slots:
    void listensAgainWhenDescriptorsAreFree();
};

void TestLocalServer::listensAgainWhenDescriptorsAreFree()
{
    const CapturedLog log;
    const QTemporaryDir directory;
    const QString path = directory.filePath(QStringLiteral("socket"));
    const FewDescriptors clients[2];
    LocalServer server;
    QCOMPARE(server.Start(path), 0);
    for (const FewDescriptors& client : clients) {
        client.Begin();
        QVERIFY(client.Connect(Local(path)));
        // Qt has closed the socket, and there is no descriptor for a new one.
        QTRY_VERIFY(!QFile::exists(path));
        client.End();
        QTRY_VERIFY(QFile::exists(path));
    }
    QSignalSpy connected(&server, &QLocalServer::newConnection);
    QLocalSocket peer;
    peer.connectToServer(path);
    QVERIFY(connected.wait());
    QCOMPARE(log.Count(QStringLiteral("Local server closed, listen again.")), 2);
    QVERIFY(log.Contains(QStringLiteral("WARNING"), QStringLiteral("UTILS"),
                         QStringLiteral("Local server closed, listen again.")));
}

QTEST_GUILESS_MAIN(TestLocalServer)
#include "TestLocalServer.moc"
