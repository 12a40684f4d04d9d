// The last opened file contains each line that is not too long exactly once and completely, also with several
// threads.

#include <QDir>
#include <QMap>
#include <QTemporaryDir>
#include <atomic>
#include <thread>
#include <vector>

#include "callsequences/CallSequence.h"
#include "platform/Logger.h"
#include "support/Files.h"

namespace {
constexpr int MAX_LENGTH = 4095;

class LoggerCalls : public CallSequence
{
public:
    explicit LoggerCalls(quint32 seed) : CallSequence(seed) {}

    void Step() override;

private:
    void Open();
    void Write();
    void WriteFromThreads();
    void Rotate();
    void Compare();
    bool IsOpen() const { return !path.isEmpty(); }

    QTemporaryDir directory;
    Brevora::Logger logger;
    QString path;
    /// The number of lines of each message.
    QMap<QByteArray, int> expected;
};

void LoggerCalls::Open()
{
    const QString next = directory.filePath(QStringLiteral("log-%1").arg(Pick(3)));
    QFile::remove(next);
    QDir(next).removeRecursively();
    switch (Pick(5)) {
    case 0:
        QDir().mkpath(next + QStringLiteral("/content"));
        break;
    case 1:
        WriteAll(directory.filePath(QStringLiteral("other")), "kept\n");
        QFile::link(directory.filePath(QStringLiteral("other")), next);
        break;
    case 2:
        logger.Init(Local(directory.filePath(QStringLiteral("none/log"))));
        path.clear();
        expected.clear();
        return;
    default:
        break;
    }
    logger.Init(Local(next));
    REQUIRE(ModeOf(next) == 0600U);
    REQUIRE(!QFile::exists(directory.filePath(QStringLiteral("other"))) ||
            ReadAll(directory.filePath(QStringLiteral("other"))) == "kept\n");
    path = next;
    expected.clear();
}

void LoggerCalls::Write()
{
    QByteArray message =
        OneIn(5) ? QByteArray(MAX_LENGTH - 1 + Pick(3), 'x') : QByteArray::number(Pick(100000));
    message = OneIn(6) ? message + "%s%n" : message;
    const int level = Pick(8) - 1;
    logger.WriteLog(level, "File.cpp", Pick(1000), "TAG", "%s", message.constData());
    if (level > 1 && message.size() <= MAX_LENGTH) {
        ++expected[message];
    }
}

void LoggerCalls::WriteFromThreads()
{
    constexpr int LINES = 20;
    const int count = 2 + Pick(3);
    std::vector<std::thread> threads;
    for (int i = 0; i < count; ++i) {
        threads.emplace_back([this, i] {
            for (int line = 0; line < LINES; ++line) {
                logger.WriteLog(2, "Thread.cpp", line, "TAG", "thread %d", i);
            }
        });
        expected["thread " + QByteArray::number(i)] += LINES;
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

void LoggerCalls::Rotate()
{
    const QByteArray before = ReadAll(path);
    logger.SaveAndOpenNewFile();
    REQUIRE(ReadAll(path + QStringLiteral(".old")) == before);
    REQUIRE(logger.GetCurrentSize(Local(path)) == 0);
    expected.clear();
}

void LoggerCalls::Compare()
{
    const QByteArray content = ReadAll(path);
    REQUIRE(logger.GetCurrentSize(Local(path)) == content.size());
    QMap<QByteArray, int> found;
    for (const QByteArray& line : content.split('\n')) {
        const int at = line.indexOf(" TAG: ");
        if (at >= 0) {
            REQUIRE(line.startsWith('['));
            ++found[line.mid(at + 6)];
        }
    }
    REQUIRE(found == expected);
}

void LoggerCalls::Step()
{
    switch (Pick(8)) {
    case 0:
        Open();
        break;
    case 1:
        WriteFromThreads();
        break;
    case 2:
        if (IsOpen()) {
            Rotate();
        }
        break;
    case 3:
        if (IsOpen()) {
            Compare();
        }
        break;
    case 4:
        REQUIRE(!logger.GetTimestamp().empty());
        REQUIRE(!logger.GetLevelString(Pick(10) - 2).empty());
        break;
    default:
        Write();
        break;
    }
}
} // namespace

std::unique_ptr<CallSequence> MakeLoggerCalls(quint32 seed)
{
    return std::make_unique<LoggerCalls>(seed);
}
