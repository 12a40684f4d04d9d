#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QProcess>
#include <QProcessEnvironment>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <memory>

#include "statuschannel/ConnServer.h"
#include "support/CapturedLog.h"
#include "support/Files.h"

namespace {
/// The example engine with a separate home and working folder.
class Engine
{
public:
    Engine()
    {
        home.mkpath(QStringLiteral("home/Velodesk"));
        home.mkpath(QStringLiteral("work"));
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("HOME"), home.filePath(QStringLiteral("home")));
        process.setProcessEnvironment(environment);
        process.setWorkingDirectory(home.filePath(QStringLiteral("work")));
        process.setProcessChannelMode(QProcess::MergedChannels);
    }

    QString Socket() const { return home.filePath(QStringLiteral("home/Velodesk/TandraIpc")); }
    QString Log() const { return home.filePath(QStringLiteral("engine.log")); }

    void EnableLog()
    {
        QProcessEnvironment environment = process.processEnvironment();
        environment.insert(QStringLiteral("ENGINE_LOG"), Log());
        process.setProcessEnvironment(environment);
    }

    void Start() { process.start(QString::fromUtf8(EXAMPLE_ENGINE), {QStringLiteral("1")}); }

    /// Returns the names of all files, including sockets.
    QStringList Files() const
    {
        QStringList names;
        QDirIterator files(scratch.path(), QDir::Files | QDir::System | QDir::Hidden,
                           QDirIterator::Subdirectories);
        while (files.hasNext()) {
            names += home.relativeFilePath(files.next());
        }
        return names;
    }

    QProcess process;

private:
    QTemporaryDir scratch;
    QDir home{scratch.path()};
};
} // namespace

class TestExampleEngine : public QObject
{
    Q_OBJECT

private slots:
    void init() { log = std::make_unique<CapturedLog>(); }
    void cleanup() { log.reset(); }

    void reportsAndEndsOnRequest_data();
    void reportsAndEndsOnRequest();
    void endsWithoutAnAssistant();
    void endsWithTheAssistant();
    void documentContainsTheExample();

private:
    std::unique_ptr<CapturedLog> log;
};

void TestExampleEngine::reportsAndEndsOnRequest_data()
{
    QTest::addColumn<bool>("logs");
    QTest::newRow("silent") << false;
    QTest::newRow("with a log") << true;
}

void TestExampleEngine::reportsAndEndsOnRequest()
{
    QFETCH(bool, logs);
    Engine engine;
    if (logs) {
        engine.EnableLog();
    }
    ConnServer server(engine.Socket().toStdString(), nullptr);
    QSignalSpy inited(&server, &ConnServer::AppInited);
    QSignalSpy running(&server, &ConnServer::AppRunning);
    QSignalSpy stopped(&server, &ConnServer::AppStoped);
    QCOMPARE(server.ServerStart(), 0);
    engine.Start();
    QTRY_COMPARE(inited.count(), 1);
    QCOMPARE(running.count(), 0);
    QTRY_COMPARE(running.count(), 1);
    QCOMPARE(engine.process.state(), QProcess::Running);

    engine.process.terminate();
    QTRY_COMPARE(engine.process.state(), QProcess::NotRunning);
    QCOMPARE(engine.process.exitStatus(), QProcess::NormalExit);
    QCOMPARE(engine.process.exitCode(), 0);
    QTRY_COMPARE(stopped.count(), 1);
    QCOMPARE(inited.count(), 1);
    QCOMPARE(QString::fromLocal8Bit(engine.process.readAll()), QString());
    QStringList expected{QStringLiteral("home/Velodesk/TandraIpc")};
    if (logs) {
        expected.prepend(QStringLiteral("engine.log"));
        const QByteArray text = ReadAll(engine.Log());
        QVERIFY2(text.contains("UTILS: App status init.\n") && text.contains("UTILS: App status stop.\n"),
                 text.constData());
    }
    QStringList files = engine.Files();
    files.sort();
    QCOMPARE(files, expected);
}

void TestExampleEngine::endsWithoutAnAssistant()
{
    Engine engine;
    engine.Start();
    QVERIFY(engine.process.waitForFinished());
    QCOMPARE(engine.process.exitCode(), 1);
    QCOMPARE(QString::fromLocal8Bit(engine.process.readAll()), QString());
    QCOMPARE(engine.Files(), QStringList());
}

void TestExampleEngine::endsWithTheAssistant()
{
    Engine engine;
    ConnServer server(engine.Socket().toStdString(), nullptr);
    QSignalSpy running(&server, &ConnServer::AppRunning);
    QCOMPARE(server.ServerStart(), 0);
    engine.Start();
    QTRY_COMPARE(running.count(), 1);
    QCOMPARE(engine.process.state(), QProcess::Running);
    // If the assistant ends, the engine's standard input is closed in the same way.
    engine.process.closeWriteChannel();
    QTRY_COMPARE(engine.process.state(), QProcess::NotRunning);
    QCOMPARE(engine.process.exitStatus(), QProcess::NormalExit);
    QCOMPARE(engine.process.exitCode(), 0);
}

void TestExampleEngine::documentContainsTheExample()
{
    const QByteArray document = ReadAll(QStringLiteral(VELODESK_SOURCE_DIR "/docs/interfaces.md"));
    const QByteArray source = ReadAll(QStringLiteral(VELODESK_SOURCE_DIR "/packaging/example/engine.cpp"));
    const QByteArray cmakeLists =
        ReadAll(QStringLiteral(VELODESK_SOURCE_DIR "/packaging/example/CMakeLists.txt"));
    QVERIFY(!source.isEmpty() && !cmakeLists.isEmpty());
    QVERIFY2(document.contains("```cpp\n" + source + "```\n"), "docs/interfaces.md shows another engine.cpp");
    QVERIFY2(document.contains("```cmake\n" + cmakeLists + "```\n"),
             "docs/interfaces.md shows another CMakeLists.txt");
}

QTEST_GUILESS_MAIN(TestExampleEngine)
#include "TestExampleEngine.moc"
