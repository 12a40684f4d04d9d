#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>
#include <array>
#include <csignal>
#include <initializer_list>
#include <memory>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <vector>

#include "platform/FileOperator.h"
#include "support/CapturedLog.h"
#include "support/Files.h"
#include "support/UnprivilegedUser.h"

using Brevora::FileOperator;

namespace {
constexpr int INVALID_FILE_PATH = 102;
constexpr int WRITE_FILE_FAILED = 105;
constexpr unsigned int NO_SIZE = 0xFFFFFFFFU;
constexpr unsigned int PRIVATE = 384;
constexpr char UNTOUCHED = '#';

/// Prevents files from growing as long as the object exists.
class FullDisk
{
public:
    FullDisk() : handler(std::signal(SIGXFSZ, SIG_IGN))
    {
        getrlimit(RLIMIT_FSIZE, &before);
        const rlimit none{0, before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &none);
    }
    ~FullDisk()
    {
        setrlimit(RLIMIT_FSIZE, &before);
        std::signal(SIGXFSZ, handler);
    }
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;

private:
    void (*handler)(int);
    rlimit before{};
};

void AddNames(std::initializer_list<const char*> names)
{
    QTest::addColumn<QString>("name");
    for (const char* name : names) {
        QTest::newRow(name) << QString::fromLatin1(name);
    }
}

const FileOperator& Files()
{
    return FileOperator::GetInstance();
}
} // namespace

class TestFileOperator : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void instanceIsTheSameEachTime();
    void regularFileExists_data();
    void regularFileExists();
    void linkToAFileIsALink_data();
    void linkToAFileIsALink();
    void longLinkIsALink();

    void modeDecidesTheFilesContent_data();
    void modeDecidesTheFilesContent();
    void unknownModeWritesNothing_data();
    void unknownModeWritesNothing();
    void emptyContentWritesNothing_data();
    void emptyContentWritesNothing();
    void writeToFileForceCreatesTheFile_data();
    void writeToFileForceCreatesTheFile();
    void writeToFileCreatesNoFile_data();
    void writeToFileCreatesNoFile();
    void writeToFileWritesAnExistingFile();
    void writingChangesThePermission();
    void fileThatCannotBeOpenedFails_data();
    void fileThatCannotBeOpenedFails();
    void permissionThatCannotBeSetFails();
    void failedWriteIsNotReported();

    void bytesAreRead_data();
    void bytesAreRead();
    void unknownModeReadsNothing_data();
    void unknownModeReadsNothing();
    void missingBufferIsLogged_data();
    void missingBufferIsLogged();
    void missingFileIsNotRead_data();
    void missingFileIsNotRead();
    void linesAreRead_data();
    void linesAreRead();
    void linesAreAppended();

    void sizeOfAFileIsReturned_data();
    void sizeOfAFileIsReturned();
    void sizeIsTruncatedTo32Bits();
    void sizeIsAllOnesIfTheFileCannotBeOpened_data();
    void sizeIsAllOnesIfTheFileCannotBeOpened();

private:
    QString At(const QString& name) const { return directory->filePath(name); }

    std::unique_ptr<CapturedLog> log;
    std::unique_ptr<QTemporaryDir> directory;
    QString path;
};

void TestFileOperator::init()
{
    directory = std::make_unique<QTemporaryDir>();
    path = At("file");
    WriteAll(path, "0123456789");
    SetMode(path, 0644);
    QVERIFY(QDir().mkdir(At("directory")));
    QVERIFY(QFile::link(path, At("link")));
    QVERIFY(QFile::link(At("link"), At("link to a link")));
    QVERIFY(QFile::link(At("directory"), At("link to a directory")));
    QVERIFY(QFile::link(At("missing"), At("dangling")));
    log = std::make_unique<CapturedLog>();
}

void TestFileOperator::cleanup()
{
    log.reset();
    directory.reset();
}

void TestFileOperator::instanceIsTheSameEachTime()
{
    QCOMPARE(&FileOperator::GetInstance(), &FileOperator::GetInstance());
}

void TestFileOperator::regularFileExists_data()
{
    QTest::addColumn<bool>("exists");
    QTest::newRow("file") << true;
    QTest::newRow("link") << true;
    QTest::newRow("link to a link") << true;
    QTest::newRow("directory") << false;
    QTest::newRow("link to a directory") << false;
    QTest::newRow("dangling") << false;
    QTest::newRow("missing") << false;
    QTest::newRow("file/below") << false;
}

void TestFileOperator::regularFileExists()
{
    QTEST(Files().IsFileExist(Local(At(QTest::currentDataTag()))), "exists");
    QVERIFY(!Files().IsFileExist(""));
    QVERIFY(!Files().IsFileExist("/dev/null"));
    COMPARE_LISTS(log->Messages(), QStringList());
}

void TestFileOperator::linkToAFileIsALink_data()
{
    QTest::addColumn<bool>("isLink");
    QTest::addColumn<QString>("message");
    const QString missing = QStringLiteral("filename:%1 not exist!");
    const QString noLink = QStringLiteral("readlink filename:%1 not exist!");
    const QString link = QStringLiteral("readlink filename:%1 exist!");
    QTest::newRow("file") << false << noLink;
    QTest::newRow("link") << true << link;
    QTest::newRow("link to a link") << true << link;
    QTest::newRow("directory") << false << missing;
    QTest::newRow("link to a directory") << false << missing;
    QTest::newRow("dangling") << false << missing;
    QTest::newRow("missing") << false << missing;
}

void TestFileOperator::linkToAFileIsALink()
{
    QFETCH(QString, message);
    const QString file = At(QTest::currentDataTag());
    QTEST(Files().IsLinkExist(Local(file)), "isLink");
    COMPARE_LISTS(log->Messages(), QStringList(message.arg(file)));
    QVERIFY(log->Contains(QStringLiteral("WARNING"), QStringLiteral("UTILS"), message.arg(file)));
}

void TestFileOperator::longLinkIsALink()
{
    const QString target = directory->path() + QStringLiteral("/") + QStringLiteral("./").repeated(1024) +
                           QStringLiteral("file");
    QVERIFY(QFile::link(target, At("long")));
    QVERIFY(Files().IsLinkExist(Local(At("long"))));
}

void TestFileOperator::modeDecidesTheFilesContent_data()
{
    QTest::addColumn<QByteArray>("mode");
    QTest::addColumn<int>("offset");
    QTest::addColumn<QByteArray>("expected");
    for (const char* mode : {"out", "ate", "binary"}) {
        QTest::addRow("%s, at the start", mode) << QByteArray(mode) << 0 << QByteArray("ab");
        QTest::addRow("%s, further on", mode) << QByteArray(mode) << 3 << QByteArray("\0\0\0ab", 5);
        QTest::addRow("%s, beyond the end", mode)
            << QByteArray(mode) << 12 << QByteArray(12, '\0') + QByteArray("ab");
    }
    QTest::addRow("app, at the start") << QByteArray("app") << 0 << QByteArray("0123456789ab");
    QTest::addRow("app, further on") << QByteArray("app") << 3 << QByteArray("0123456789ab");
    QTest::addRow("app, beyond the end") << QByteArray("app") << 12 << QByteArray("0123456789ab");
}

void TestFileOperator::modeDecidesTheFilesContent()
{
    QFETCH(QByteArray, mode);
    QFETCH(int, offset);
    QFETCH(QByteArray, expected);
    QCOMPARE(Files().WriteToFileForce(Local(path), "ab", static_cast<unsigned int>(offset),
                                      mode.toStdString(), PRIVATE),
             0);
    QCOMPARE(ReadAll(path), expected);
    QCOMPARE(ModeOf(path), mode_t(0600));
}

void TestFileOperator::unknownModeWritesNothing_data()
{
    QTest::addColumn<QByteArray>("mode");
    for (const char* mode : {"write", "", "in", "OUT", "out ", "outapp", "trunc"}) {
        QTest::addRow("'%s'", mode) << QByteArray(mode);
    }
}

void TestFileOperator::unknownModeWritesNothing()
{
    QFETCH(QByteArray, mode);
    QCOMPARE(Files().WriteToFileForce(Local(path), "ab", 0, mode.toStdString(), PRIVATE), WRITE_FILE_FAILED);
    QCOMPARE(Files().WriteToFile(Local(path), "ab", 0, mode.toStdString(), PRIVATE), WRITE_FILE_FAILED);
    QCOMPARE(ReadAll(path), QByteArray("0123456789"));
    QCOMPARE(ModeOf(path), mode_t(0644));
    QCOMPARE(Files().WriteToFileForce(Local(At("new")), "ab", 0, mode.toStdString(), PRIVATE),
             WRITE_FILE_FAILED);
    QVERIFY(!QFileInfo::exists(At("new")));
}

void TestFileOperator::emptyContentWritesNothing_data()
{
    QTest::addColumn<QByteArray>("mode");
    for (const char* mode : {"out", "app", "ate", "binary"}) {
        QTest::newRow(mode) << QByteArray(mode);
    }
}

void TestFileOperator::emptyContentWritesNothing()
{
    QFETCH(QByteArray, mode);
    QCOMPARE(Files().WriteToFile(Local(path), "", 0, mode.toStdString(), PRIVATE), WRITE_FILE_FAILED);
    QCOMPARE(Files().WriteToFileForce(Local(path), "", 0, mode.toStdString(), PRIVATE), WRITE_FILE_FAILED);
    QCOMPARE(ReadAll(path), QByteArray("0123456789"));
    QCOMPARE(ModeOf(path), mode_t(0644));
    QCOMPARE(Files().WriteToFileForce(Local(At("new")), "", 0, mode.toStdString(), PRIVATE),
             WRITE_FILE_FAILED);
    QVERIFY(!QFileInfo::exists(At("new")));
}

void TestFileOperator::writeToFileForceCreatesTheFile_data()
{
    QTest::addColumn<QByteArray>("mode");
    QTest::addColumn<int>("permission");
    for (const char* mode : {"out", "app", "ate", "binary"}) {
        QTest::addRow("%s, private", mode) << QByteArray(mode) << 0600;
        QTest::addRow("%s, wide", mode) << QByteArray(mode) << 0666;
    }
}

void TestFileOperator::writeToFileForceCreatesTheFile()
{
    QFETCH(QByteArray, mode);
    QFETCH(int, permission);
    const Umask mask(022);
    const std::string content("a\0b", 3);
    QCOMPARE(Files().WriteToFileForce(Local(At("new")), content, 0, mode.toStdString(),
                                      static_cast<unsigned int>(permission)),
             0);
    QCOMPARE(ReadAll(At("new")), QByteArray::fromStdString(content));
    QCOMPARE(ModeOf(At("new")), static_cast<mode_t>(permission));
}

void TestFileOperator::writeToFileCreatesNoFile_data()
{
    AddNames({"missing", "dangling", "directory", "link to a directory"});
}

void TestFileOperator::writeToFileCreatesNoFile()
{
    QFETCH(QString, name);
    const QString file = At(name);
    QCOMPARE(Files().WriteToFile(Local(file), "ab", 0, "out", PRIVATE), INVALID_FILE_PATH);
    // The missing file is checked before the content and the mode.
    QCOMPARE(Files().WriteToFile(Local(file), "", 0, "write", PRIVATE), INVALID_FILE_PATH);
    QVERIFY(!QFileInfo::exists(At("missing")));
}

void TestFileOperator::writeToFileWritesAnExistingFile()
{
    QCOMPARE(Files().WriteToFile(Local(At("link")), "ab", 2, "out", PRIVATE), 0);
    QCOMPARE(ReadAll(path), QByteArray("\0\0ab", 4));
    QCOMPARE(ModeOf(path), mode_t(0600));
    QCOMPARE(Files().WriteToFile(Local(path), "cd", 0, "app", 0640), 0);
    QCOMPARE(ReadAll(path), QByteArray("\0\0abcd", 6));
    QCOMPARE(ModeOf(path), mode_t(0640));
}

void TestFileOperator::writingChangesThePermission()
{
    for (const mode_t mode : {0600U, 0644U, 0700U}) {
        QCOMPARE(Files().WriteToFile(Local(path), "ab", 0, "out", mode), 0);
        QCOMPARE(ModeOf(path), mode);
    }
}

void TestFileOperator::fileThatCannotBeOpenedFails_data()
{
    AddNames({"file", "directory", "no such directory/file"});
}

void TestFileOperator::fileThatCannotBeOpenedFails()
{
    QFETCH(QString, name);
    SetMode(path, 0400);
    const UnprivilegedUser user;
    QCOMPARE(Files().WriteToFileForce(Local(At(name)), "ab", 0, "out", PRIVATE), WRITE_FILE_FAILED);
    QCOMPARE(ReadAll(path), QByteArray("0123456789"));
    QCOMPARE(ModeOf(path), mode_t(0400));
}

void TestFileOperator::permissionThatCannotBeSetFails()
{
    // The file with a thread's name is writable, but its permissions cannot be changed.
    std::array<char, 16> name{};
    prctl(PR_GET_NAME, name.data());
    const int result = Files().WriteToFileForce("/proc/thread-self/comm", "ab", 0, "out", PRIVATE);
    std::array<char, 16> written{};
    prctl(PR_GET_NAME, written.data());
    prctl(PR_SET_NAME, name.data());
    QCOMPARE(result, WRITE_FILE_FAILED);
    QCOMPARE(QByteArray(written.data()), QByteArray("ab"));
}

void TestFileOperator::failedWriteIsNotReported()
{
    int result = -1;
    {
        const FullDisk full;
        result = Files().WriteToFile(Local(path), "ab", 0, "out", PRIVATE);
    }
    QCOMPARE(result, 0);
    QCOMPARE(ReadAll(path), QByteArray());
    QCOMPARE(ModeOf(path), mode_t(0600));
}

void TestFileOperator::bytesAreRead_data()
{
    QTest::addColumn<int>("length");
    QTest::addColumn<int>("offset");
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("all") << 10 << 0 << QByteArray("0123456789");
    QTest::newRow("some") << 3 << 0 << QByteArray("012");
    QTest::newRow("with an offset") << 3 << 4 << QByteArray("456");
    QTest::newRow("more than remains") << 12 << 7 << QByteArray("789");
    QTest::newRow("at the end") << 3 << 10 << QByteArray();
    QTest::newRow("beyond the end") << 3 << 100 << QByteArray();
    QTest::newRow("none") << 0 << 0 << QByteArray();
}

void TestFileOperator::bytesAreRead()
{
    QFETCH(int, length);
    QFETCH(int, offset);
    QFETCH(QByteArray, bytes);
    for (const char* mode : {"in", "binary"}) {
        QByteArray buffer(16, UNTOUCHED);
        QCOMPARE(Files().ReadFile(Local(path), buffer.data(), static_cast<unsigned int>(length),
                                  static_cast<unsigned int>(offset), mode),
                 bytes.size());
        QCOMPARE(buffer, bytes + QByteArray(16 - bytes.size(), UNTOUCHED));
    }
    COMPARE_LISTS(log->Messages(), QStringList());
}

void TestFileOperator::unknownModeReadsNothing_data()
{
    QTest::addColumn<QByteArray>("mode");
    for (const char* mode : {"out", "app", "ate", "", "IN", "in "}) {
        QTest::addRow("'%s'", mode) << QByteArray(mode);
    }
}

void TestFileOperator::unknownModeReadsNothing()
{
    QFETCH(QByteArray, mode);
    QByteArray buffer(16, UNTOUCHED);
    std::vector<std::string> lines;
    QCOMPARE(Files().ReadFile(Local(path), buffer.data(), 3, 0, mode.toStdString()), -1);
    QCOMPARE(FileOperator::GetInstance().ReadFile(Local(path), 3, 0, lines, mode.toStdString()), -1);
    // The buffer is not checked either.
    QCOMPARE(Files().ReadFile(Local(path), nullptr, 3, 0, mode.toStdString()), -1);
    QCOMPARE(buffer, QByteArray(16, UNTOUCHED));
    QVERIFY(lines.empty());
    COMPARE_LISTS(log->Messages(), QStringList());
    QCOMPARE(ReadAll(path), QByteArray("0123456789"));
}

void TestFileOperator::missingBufferIsLogged_data()
{
    AddNames({"file", "missing"});
}

void TestFileOperator::missingBufferIsLogged()
{
    QFETCH(QString, name);
    const std::string file = Local(At(name));
    QCOMPARE(Files().ReadFile(file, nullptr, 3, 0, "in"), -1);
    QCOMPARE(Files().ReadFile(file, nullptr, 3, 0, "binary"), -1);
    const QString message = QStringLiteral("buffer is nullptr, read failed.");
    COMPARE_LISTS(log->Messages(), QStringList({message, message}));
    QVERIFY(log->Contains(QStringLiteral("ERROR"), QStringLiteral("UTILS"), message));
}

void TestFileOperator::missingFileIsNotRead_data()
{
    AddNames({"missing", "dangling", "file"});
}

void TestFileOperator::missingFileIsNotRead()
{
    QFETCH(QString, name);
    SetMode(path, 0200);
    const UnprivilegedUser user;
    const std::string file = Local(At(name));
    QByteArray buffer(16, UNTOUCHED);
    std::vector<std::string> lines;
    for (const char* mode : {"in", "binary"}) {
        QCOMPARE(Files().ReadFile(file, buffer.data(), 3, 0, mode), -1);
        QCOMPARE(FileOperator::GetInstance().ReadFile(file, 3, 0, lines, mode), -1);
    }
    QCOMPARE(buffer, QByteArray(16, UNTOUCHED));
    QVERIFY(lines.empty());
    COMPARE_LISTS(log->Messages(), QStringList());
}

void TestFileOperator::linesAreRead_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<int>("count");
    QTest::addColumn<int>("offset");
    QTest::addColumn<QStringList>("lines");
    QTest::addColumn<int>("taken");
    const QByteArray three("a\n\nb");
    QTest::newRow("none") << three << 0 << 0 << QStringList() << 0;
    QTest::newRow("one") << three << 1 << 0 << QStringList({"a"}) << 2;
    QTest::newRow("an empty line counts") << three << 2 << 0 << QStringList({"a"}) << 1;
    QTest::newRow("an empty line is not appended") << three << 3 << 0 << QStringList({"a", "b"}) << 1;
    QTest::newRow("beyond the end") << three << 5 << 0 << QStringList({"a", "b"}) << 0;
    QTest::newRow("with an offset") << three << 2 << 1 << QStringList() << 1;
    QTest::newRow("from beyond the end") << three << 2 << 100 << QStringList() << 0;
    QTest::newRow("line feed at the end") << QByteArray("abc\n") << 1 << 0 << QStringList({"abc"}) << 4;
    QTest::newRow("no line feed at the end") << QByteArray("abc") << 1 << 0 << QStringList({"abc"}) << 3;
    QTest::newRow("carriage return") << QByteArray("a\r\n\r\n") << 2 << 0 << QStringList({"a\r", "\r"}) << 2;
    QTest::newRow("empty file") << QByteArray() << 2 << 0 << QStringList() << 0;
}

void TestFileOperator::linesAreRead()
{
    QFETCH(QByteArray, content);
    QFETCH(int, count);
    QFETCH(int, offset);
    QFETCH(QStringList, lines);
    QFETCH(int, taken);
    WriteAll(path, content);
    for (const char* mode : {"in", "binary"}) {
        std::vector<std::string> read;
        QCOMPARE(FileOperator::GetInstance().ReadFile(Local(path), static_cast<unsigned int>(count),
                                                      static_cast<unsigned int>(offset), read, mode),
                 taken);
        QStringList texts;
        for (const std::string& line : read) {
            texts.append(QString::fromStdString(line));
        }
        QCOMPARE(texts, lines);
    }
}

void TestFileOperator::linesAreAppended()
{
    std::vector<std::string> lines{"before"};
    QCOMPARE(FileOperator::GetInstance().ReadFile(Local(path), 1, 5, lines, "in"), 5);
    QCOMPARE(lines, std::vector<std::string>({"before", "56789"}));
}

void TestFileOperator::sizeOfAFileIsReturned_data()
{
    QTest::addColumn<int>("size");
    QTest::newRow("empty") << 0;
    QTest::newRow("one byte") << 1;
    QTest::newRow("a MiB and a byte") << 1048577;
}

void TestFileOperator::sizeOfAFileIsReturned()
{
    QFETCH(int, size);
    WriteAll(path, QByteArray(size, '\n'));
    QCOMPARE(Files().FileSize(Local(path)), static_cast<unsigned int>(size));
    QCOMPARE(Files().FileSize(Local(At("link"))), static_cast<unsigned int>(size));
    COMPARE_LISTS(log->Messages(), QStringList());
}

void TestFileOperator::sizeIsTruncatedTo32Bits()
{
    QVERIFY(QFile::resize(path, Q_INT64_C(0x100000005)));
    QCOMPARE(Files().FileSize(Local(path)), 5U);
    QVERIFY(QFile::resize(path, Q_INT64_C(0x80000000)));
    QCOMPARE(Files().FileSize(Local(path)), 0x80000000U);
}

void TestFileOperator::sizeIsAllOnesIfTheFileCannotBeOpened_data()
{
    AddNames({"missing", "dangling", "file"});
}

void TestFileOperator::sizeIsAllOnesIfTheFileCannotBeOpened()
{
    QFETCH(QString, name);
    SetMode(path, 0200);
    const UnprivilegedUser user;
    QCOMPARE(Files().FileSize(Local(At(name))), NO_SIZE);
    const QString message = QStringLiteral("ifstream open failed!");
    COMPARE_LISTS(log->Messages(), QStringList(message));
    QVERIFY(log->Contains(QStringLiteral("ERROR"), QStringLiteral("UTILS"), message));
}

QTEST_GUILESS_MAIN(TestFileOperator)
#include "TestFileOperator.moc"
