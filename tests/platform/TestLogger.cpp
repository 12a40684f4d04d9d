#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>
#include <csignal>
#include <cstdarg>
#include <cstdlib>
#include <ctime>
#include <limits>
#include <memory>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include "platform/BoundedFunctions.h"
#include "platform/Log.h"
#include "support/CapturedLog.h"
#include "support/Environment.h"
#include "support/Files.h"
#include "support/UnprivilegedUser.h"

namespace {
bool printingFails = false;

constexpr qint64 LIMIT = 33554432;
constexpr int INFO = 2;
constexpr int LONGEST_MESSAGE = 4095;
constexpr int SOURCE_LINE = 7;

const char* const STAMP = R"(\[\d\d-\d\d-\d\d \d\d:\d\d:\d\d\.\d{6}\])";

/// Sets the time zone of this process as long as the object exists.
class TimeZone
{
public:
    explicit TimeZone(const char* zone) : variable(std::make_unique<Variable>("TZ", zone)) { tzset(); }
    ~TimeZone()
    {
        variable.reset();
        tzset();
    }
    TimeZone(const TimeZone&) = delete;
    TimeZone& operator=(const TimeZone&) = delete;

private:
    std::unique_ptr<Variable> variable;
};

QStringList LinesOf(const QByteArray& content)
{
    return QString::fromUtf8(content).split(QLatin1Char('\n'), QString::SkipEmptyParts);
}

/// Removes the time stamp, which has 28 characters with its brackets and the space.
QString Bare(const QByteArray& content)
{
    QString text = QString::fromUtf8(content);
    text.remove(QRegularExpression(QStringLiteral("^") + QLatin1String(STAMP) + QStringLiteral(" "),
                                   QRegularExpression::MultilineOption));
    return text;
}

void WriteText(Brevora::Logger& logger, const char* text, int level = INFO)
{
    logger.WriteLog(level, "Place.cpp", SOURCE_LINE, "TAG", "%s", text);
}

QString LineWith(const char* text)
{
    return QStringLiteral("[INFO] [Place.cpp:7] TAG: ") + QLatin1String(text) + QStringLiteral("\n");
}
} // namespace

int WrappedPrint(char* dest, std::size_t destMax, std::size_t count, const char* format,
                 ...) __asm__("__wrap__Z10snprintf_sPcmmPKcz");

int WrappedPrint(char* dest, std::size_t destMax, std::size_t count, const char* format, ...)
{
    if (printingFails) {
        return -1;
    }
    va_list args;
    va_start(args, format);
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
    const int result = vsnprintf_s(dest, destMax, count, format, args);
#pragma GCC diagnostic pop
    va_end(args);
    return result;
}

class TestLogger : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void lineHasAllItsParts();
    void levelIsWrittenAsItsWord_data();
    void levelIsWrittenAsItsWord();
    void lowLevelsAreDroppedWithoutRotation_data();
    void lowLevelsAreDroppedWithoutRotation();
    void levelsHaveTheirWords_data();
    void levelsHaveTheirWords();
    void timeIsLocalAndHasMicroseconds();
    void timeThatCannotBeFormattedIsOmitted();
    void lineIsWrittenImmediately();
    void linesLeaveNoDescriptorOpen();
    void textIsWrittenAsBytes();

    void longMessageIsWrittenCompletelyOrDropped_data();
    void longMessageIsWrittenCompletelyOrDropped();
    void invalidFormatWritesNoLine();

    void rotationHappensAboveTheLimit_data();
    void rotationHappensAboveTheLimit();
    void fileMayExceedTheLimitByOneLine();
    void secondRotationReplacesTheBackup();
    void droppedLineStillRotates();
    void debugLineDoesNotRotate();
    void rotationKeepsTheInodeOfTheLiveFile();
    void rotationKeepsTheModeOfTheLiveFile();
    void oldBackupGetsPrivateMode();
    void contentIsLostIfTheBackupCannotBeMade();
    void sizeIsMinusOneIfTheFileCannotBeOpened();
    void sizeIsTruncatedTo32Bits();

    void everyFileIsPrivate_data();
    void everyFileIsPrivate();
    void newRunAppends();
    void nothingIsWrittenBeforeInit();
    void nothingIsCreatedWithoutInit();
    void logThatCannotBeOpenedIsDisabled();
    void modeOfAFileThatCannotBeOpenedIsKept();
    void secondLogTakesOver();
    void removedLogIsNotCreatedAgain();
    void linkIsReplacedByAFile();
    void danglingLinkIsFollowed();
    void directoryIsReplacedByAFile();
    void linkToADirectoryEmptiesItAndIsKept();
    void oversizeLogIsOpenAfterInit();
    void oversizeTargetOfALinkIsNotTouched_data();
    void oversizeTargetOfALinkIsNotTouched();

    void cFunctionsWriteTheirLevel_data();
    void cFunctionsWriteTheirLevel();
    void emptyMessageIsALine();
    void cFunctionsIgnoreNull_data();
    void cFunctionsIgnoreNull();
    void percentSignsReachTheFileUnchanged();
    void cFunctionsDropTooLongMessages_data();
    void cFunctionsDropTooLongMessages();
    void macroSuppliesTheSourceLocation();

    void backupKeepsTheReadableBlocks_data();
    void backupKeepsTheReadableBlocks();
    void linesAfterAFailedWriteAreComplete();
    void logIsNotInheritedByChildren();
    void linesOfManyThreadsAreCompleteAcrossARotation();

private:
    /// Makes the log a sparse file of that size.
    void Grow(qint64 size) const;
    QString Old() const { return path + QStringLiteral(".old"); }

    std::unique_ptr<QTemporaryDir> directory;
    std::unique_ptr<Brevora::Logger> logger;
    QString path;
};

void TestLogger::init()
{
    directory = std::make_unique<QTemporaryDir>();
    path = directory->filePath(QStringLiteral("velodesk.log"));
    logger = std::make_unique<Brevora::Logger>();
}

void TestLogger::cleanup()
{
    logger.reset();
    Singleton<Brevora::Logger>::Destroy();
    directory.reset();
}

void TestLogger::Grow(qint64 size) const
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QVERIFY(file.resize(size));
}

void TestLogger::lineHasAllItsParts()
{
    logger->Init(Local(path));
    logger->WriteLog(4, "Some File.cpp", 1234, "UTILS", "%s is %d", "the answer", 42);
    logger->WriteLog(2, "", -1, "", "%s", "");
    const QRegularExpression lines(
        QStringLiteral("^") + QLatin1String(STAMP) +
        QStringLiteral(" \\[ERROR\\] \\[Some File\\.cpp:1234\\] UTILS: the answer is 42\n") +
        QLatin1String(STAMP) + QStringLiteral(" \\[INFO\\] \\[:-1\\] : \n\\z"));
    const QByteArray content = ReadAll(path);
    QVERIFY2(lines.match(QString::fromUtf8(content)).hasMatch(), content.constData());
}

void TestLogger::levelIsWrittenAsItsWord_data()
{
    QTest::addColumn<int>("level");
    QTest::addColumn<QString>("word");
    QTest::newRow("2") << 2 << QStringLiteral("INFO");
    QTest::newRow("3") << 3 << QStringLiteral("WARNING");
    QTest::newRow("4") << 4 << QStringLiteral("ERROR");
    QTest::newRow("5") << 5 << QStringLiteral("CRITICAL");
    QTest::newRow("6") << 6 << QStringLiteral(" ");
    QTest::newRow("1000") << 1000 << QStringLiteral(" ");
}

void TestLogger::levelIsWrittenAsItsWord()
{
    QFETCH(int, level);
    QFETCH(QString, word);
    logger->Init(Local(path));
    WriteText(*logger, "text", level);
    QCOMPARE(Bare(ReadAll(path)), QStringLiteral("[%1] [Place.cpp:7] TAG: text\n").arg(word));
}

void TestLogger::lowLevelsAreDroppedWithoutRotation_data()
{
    QTest::addColumn<int>("level");
    QTest::newRow("1") << 1;
    QTest::newRow("0") << 0;
    QTest::newRow("-1") << -1;
    QTest::newRow("lowest") << std::numeric_limits<int>::min();
}

void TestLogger::lowLevelsAreDroppedWithoutRotation()
{
    QFETCH(int, level);
    logger->Init(Local(path));
    WriteText(*logger, "text", level);
    QCOMPARE(ReadAll(path), QByteArray());
    Grow(LIMIT + 1);
    WriteText(*logger, "text", level);
    QCOMPARE(QFileInfo(path).size(), LIMIT + 1);
    QVERIFY(!QFileInfo::exists(Old()));
}

void TestLogger::levelsHaveTheirWords_data()
{
    QTest::addColumn<int>("level");
    QTest::addColumn<QString>("word");
    QTest::newRow("-1") << -1 << QStringLiteral(" ");
    QTest::newRow("0") << 0 << QStringLiteral(" ");
    QTest::newRow("1") << 1 << QStringLiteral("DEBUG");
    QTest::newRow("2") << 2 << QStringLiteral("INFO");
    QTest::newRow("3") << 3 << QStringLiteral("WARNING");
    QTest::newRow("4") << 4 << QStringLiteral("ERROR");
    QTest::newRow("5") << 5 << QStringLiteral("CRITICAL");
    QTest::newRow("6") << 6 << QStringLiteral(" ");
}

void TestLogger::levelsHaveTheirWords()
{
    QFETCH(int, level);
    QTEST(QString::fromStdString(logger->GetLevelString(level)), "word");
}

void TestLogger::timeIsLocalAndHasMicroseconds()
{
    // The time zone has an offset with half an hour, so UTC and zones with whole hours have another time.
    const TimeZone zone("TST-05:30");
    const QDateTime before = QDateTime::currentDateTimeUtc();
    const QString stamp = QString::fromStdString(logger->GetTimestamp());
    const QDateTime after = QDateTime::currentDateTimeUtc();
    QCOMPARE(stamp.size(), 24);
    QVERIFY2(QRegularExpression(QStringLiteral("^\\d\\d-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d\\.\\d{6}\\z"))
                 .match(stamp)
                 .hasMatch(),
             qPrintable(stamp));
    // QDateTime reads the two-digit year as 19.. and supports only milliseconds.
    QDateTime logged = QDateTime::fromString(stamp.left(21), QStringLiteral("yy-MM-dd hh:mm:ss.zzz"));
    logged.setTimeSpec(Qt::UTC);
    logged = logged.addYears(100).addSecs(-(5 * 60 + 30) * 60);
    QVERIFY2(logged >= before && logged <= after, qPrintable(logged.toString(Qt::ISODateWithMs)));
}

void TestLogger::timeThatCannotBeFormattedIsOmitted()
{
    logger->Init(Local(path));
    printingFails = true;
    const std::string stamp = logger->GetTimestamp();
    WriteText(*logger, "text");
    printingFails = false;
    QCOMPARE(stamp, std::string());
    const QByteArray line = ReadAll(path);
    QVERIFY2(line.startsWith("[] [INFO] ") && line.endsWith(": text\n"), line.constData());
}

void TestLogger::lineIsWrittenImmediately()
{
    logger->Init(Local(path));
    for (int i = 1; i <= 3; ++i) {
        WriteText(*logger, "text");
        QCOMPARE(LinesOf(ReadAll(path)).size(), i);
    }
}

void TestLogger::linesLeaveNoDescriptorOpen()
{
    const auto open = [] {
        return QDir(QStringLiteral("/proc/self/fd")).entryList().size();
    };
    logger->Init(Local(path));
    WriteText(*logger, "text");
    const int before = open();
    WriteText(*logger, "text");
    QCOMPARE(open(), before);
}

void TestLogger::textIsWrittenAsBytes()
{
    logger->Init(Local(path));
    WriteText(*logger, "\xe8\xbf\x9e\xe6\x8e\xa5 \xff]");
    QVERIFY(ReadAll(path).endsWith("TAG: \xe8\xbf\x9e\xe6\x8e\xa5 \xff]\n"));
}

void TestLogger::longMessageIsWrittenCompletelyOrDropped_data()
{
    QTest::addColumn<int>("length");
    QTest::addColumn<bool>("isThere");
    QTest::newRow("longest") << LONGEST_MESSAGE << true;
    QTest::newRow("one more") << LONGEST_MESSAGE + 1 << false;
    QTest::newRow("twice") << 2 * LONGEST_MESSAGE << false;
}

void TestLogger::longMessageIsWrittenCompletelyOrDropped()
{
    QFETCH(int, length);
    QFETCH(bool, isThere);
    logger->Init(Local(path));
    const QByteArray message(length, 'x');
    WriteText(*logger, message.constData());
    QCOMPARE(Bare(ReadAll(path)), isThere ? LineWith(message.constData()) : QString());
    WriteText(*logger, "after");
    QVERIFY(Bare(ReadAll(path)).endsWith(LineWith("after")));
}

void TestLogger::invalidFormatWritesNoLine()
{
    logger->Init(Local(path));
    // A wide character that no encoding can represent.
    const std::wstring unwritable(1, static_cast<wchar_t>(0x80000000));
    logger->WriteLog(INFO, "Place.cpp", SOURCE_LINE, "TAG", "%ls", unwritable.c_str());
    QCOMPARE(ReadAll(path), QByteArray());
}

void TestLogger::rotationHappensAboveTheLimit_data()
{
    QTest::addColumn<qint64>("size");
    QTest::addColumn<bool>("rotates");
    QTest::newRow("at the limit") << LIMIT << false;
    QTest::newRow("one byte above") << LIMIT + 1 << true;
}

void TestLogger::rotationHappensAboveTheLimit()
{
    QFETCH(qint64, size);
    QFETCH(bool, rotates);
    Grow(size);
    logger->Init(Local(path));
    WriteText(*logger, "text");
    QCOMPARE(QFileInfo::exists(Old()), rotates);
    if (!rotates) {
        QVERIFY(QFileInfo(path).size() > size);
        return;
    }
    QCOMPARE(Bare(ReadAll(path)), LineWith("text"));
    QCOMPARE(ReadAll(Old()), QByteArray(static_cast<int>(size), '\0'));
    QCOMPARE(ModeOf(path), mode_t(0600));
    QCOMPARE(ModeOf(Old()), mode_t(0600));
}

void TestLogger::fileMayExceedTheLimitByOneLine()
{
    Grow(LIMIT);
    logger->Init(Local(path));
    WriteText(*logger, "one");
    WriteText(*logger, "two");
    QCOMPARE(Bare(ReadAll(path)), LineWith("two"));
    const QByteArray backup = ReadAll(Old());
    QVERIFY(backup.size() > LIMIT);
    QCOMPARE(Bare(backup.mid(LIMIT)), LineWith("one"));
}

void TestLogger::secondRotationReplacesTheBackup()
{
    Grow(LIMIT + 2);
    logger->Init(Local(path));
    WriteText(*logger, "first");
    QCOMPARE(QFileInfo(Old()).size(), LIMIT + 2);
    QVERIFY(QFile::resize(path, LIMIT + 1));
    WriteText(*logger, "second");
    QCOMPARE(QFileInfo(Old()).size(), LIMIT + 1);
    QVERIFY(ReadAll(Old()).left(200).contains("TAG: first\n"));
    QCOMPARE(Bare(ReadAll(path)), LineWith("second"));
    QCOMPARE(QDir(directory->path()).entryList(QDir::Files).size(), 2);
}

void TestLogger::droppedLineStillRotates()
{
    Grow(LIMIT + 1);
    logger->Init(Local(path));
    WriteText(*logger, QByteArray(LONGEST_MESSAGE + 1, 'x').constData());
    QCOMPARE(ReadAll(path), QByteArray());
    QCOMPARE(QFileInfo(Old()).size(), LIMIT + 1);
}

void TestLogger::debugLineDoesNotRotate()
{
    Grow(LIMIT + 1);
    logger->Init(Local(path));
    WriteText(*logger, "text", 1);
    QVERIFY(!QFileInfo::exists(Old()));
    WriteText(*logger, "text");
    QVERIFY(QFileInfo::exists(Old()));
}

void TestLogger::rotationKeepsTheInodeOfTheLiveFile()
{
    Grow(LIMIT + 1);
    logger->Init(Local(path));
    struct stat before
    {
    }, after{}, backup{};
    QCOMPARE(stat(Local(path).c_str(), &before), 0);
    WriteText(*logger, "text");
    QCOMPARE(stat(Local(path).c_str(), &after), 0);
    QCOMPARE(stat(Local(Old()).c_str(), &backup), 0);
    QCOMPARE(after.st_ino, before.st_ino);
    QVERIFY(backup.st_ino != before.st_ino);
}

void TestLogger::rotationKeepsTheModeOfTheLiveFile()
{
    Grow(LIMIT + 1);
    logger->Init(Local(path));
    SetMode(path, 0640);
    WriteText(*logger, "text");
    QCOMPARE(ModeOf(path), mode_t(0640));
    QCOMPARE(ModeOf(Old()), mode_t(0600));
}

void TestLogger::oldBackupGetsPrivateMode()
{
    Grow(LIMIT + 1);
    WriteAll(Old(), "before");
    SetMode(Old(), 0666);
    logger->Init(Local(path));
    WriteText(*logger, "text");
    QCOMPARE(ModeOf(Old()), mode_t(0600));
    QCOMPARE(QFileInfo(Old()).size(), LIMIT + 1);
}

void TestLogger::contentIsLostIfTheBackupCannotBeMade()
{
    Grow(LIMIT + 1);
    QVERIFY(QDir().mkdir(Old()));
    SetMode(Old(), 0755);
    logger->Init(Local(path));
    WriteText(*logger, "text");
    QCOMPARE(Bare(ReadAll(path)), LineWith("text"));
    QVERIFY(QFileInfo(Old()).isDir());
    QCOMPARE(ModeOf(Old()), mode_t(0755));
}

void TestLogger::sizeIsMinusOneIfTheFileCannotBeOpened()
{
    QCOMPARE(logger->GetCurrentSize(Local(path)), -1);
    WriteAll(path, "12345");
    QCOMPARE(logger->GetCurrentSize(Local(path)), 5);
    SetMode(path, 0200);
    const UnprivilegedUser user;
    QCOMPARE(logger->GetCurrentSize(Local(path)), -1);
}

void TestLogger::sizeIsTruncatedTo32Bits()
{
    constexpr qint64 FOUR_GIB = Q_INT64_C(0x100000000);
    constexpr qint64 TWO_GIB = Q_INT64_C(0x80000000);
    Grow(FOUR_GIB + 5);
    QCOMPARE(logger->GetCurrentSize(Local(path)), 5);
    Grow(TWO_GIB);
    QVERIFY(logger->GetCurrentSize(Local(path)) < 0);
    logger->Init(Local(path));
    WriteText(*logger, "text");
    QVERIFY(!QFileInfo::exists(Old()));
}

void TestLogger::everyFileIsPrivate_data()
{
    QTest::addColumn<int>("mask");
    QTest::addColumn<int>("before");
    QTest::newRow("wide mask") << 0 << 0;
    QTest::newRow("common mask") << 022 << 0;
    QTest::newRow("wide file") << 022 << 0666;
}

void TestLogger::everyFileIsPrivate()
{
    QFETCH(int, mask);
    QFETCH(int, before);
    const Umask umaskOfThisTest(static_cast<mode_t>(mask));
    if (before != 0) {
        WriteAll(path, "before\n");
        SetMode(path, static_cast<mode_t>(before));
    }
    logger->Init(Local(path));
    QCOMPARE(ModeOf(path), mode_t(0600));
    Grow(LIMIT + 1);
    WriteText(*logger, "text");
    QCOMPARE(ModeOf(path), mode_t(0600));
    QCOMPARE(ModeOf(Old()), mode_t(0600));
}

void TestLogger::newRunAppends()
{
    logger->Init(Local(path));
    WriteText(*logger, "first run");
    logger = std::make_unique<Brevora::Logger>();
    QCOMPARE(Bare(ReadAll(path)), LineWith("first run"));
    logger->Init(Local(path));
    WriteText(*logger, "second run");
    QCOMPARE(Bare(ReadAll(path)), LineWith("first run") + LineWith("second run"));
}

void TestLogger::nothingIsWrittenBeforeInit()
{
    WriteText(*logger, "too early");
    logger->Init(Local(path));
    WriteText(*logger, "in time");
    QCOMPARE(Bare(ReadAll(path)), LineWith("in time"));
}

void TestLogger::nothingIsCreatedWithoutInit()
{
    const QString before = QDir::currentPath();
    QVERIFY(QDir::setCurrent(directory->path()));
    for (const int level : {1, 2, 3, 4, 5, 6}) {
        WriteText(*logger, "nowhere", level);
    }
    CLogDebug("TAG", "Place.cpp", "%s", "nowhere");
    CLogInfo("TAG", "Place.cpp", "%s", "nowhere");
    CLogWarn("TAG", "Place.cpp", "%s", "nowhere");
    CLogError("TAG", "Place.cpp", "%s", "nowhere");
    logger.reset();
    const QStringList made =
        QDir().entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    QVERIFY(QDir::setCurrent(before));
    QCOMPARE(made, QStringList());
}

void TestLogger::logThatCannotBeOpenedIsDisabled()
{
    SetMode(directory->path(), 0500);
    {
        const UnprivilegedUser user;
        logger->Init(Local(path));
        WriteText(*logger, "text");
    }
    SetMode(directory->path(), 0700);
    // A later line does not open the log either.
    WriteText(*logger, "text");
    QVERIFY(!QFileInfo::exists(path));
}

void TestLogger::modeOfAFileThatCannotBeOpenedIsKept()
{
    SetMode(directory->path(), 0777);
    const UnprivilegedUser user;
    WriteAll(path, "text");
    SetMode(path, 0400);
    logger->Init(Local(path));
    WriteText(*logger, "more");
    QCOMPARE(ModeOf(path), mode_t(0400));
    QCOMPARE(ReadAll(path), QByteArray("text"));
}

void TestLogger::secondLogTakesOver()
{
    const QString second = directory->filePath(QStringLiteral("second"));
    logger->Init(Local(path));
    WriteText(*logger, "to the first");
    logger->Init(Local(second));
    WriteText(*logger, "to the second");
    QCOMPARE(Bare(ReadAll(path)), LineWith("to the first"));
    QCOMPARE(Bare(ReadAll(second)), LineWith("to the second"));
}

void TestLogger::removedLogIsNotCreatedAgain()
{
    Grow(LIMIT + 1);
    logger->Init(Local(path));
    QVERIFY(QFile::remove(path));
    WriteText(*logger, "text");
    QVERIFY(!QFileInfo::exists(path));
    QVERIFY(!QFileInfo::exists(Old()));
}

void TestLogger::linkIsReplacedByAFile()
{
    const QString target = directory->filePath(QStringLiteral("target"));
    WriteAll(target, "precious\n");
    SetMode(target, 0644);
    QVERIFY(QFile::link(target, path));
    logger->Init(Local(path));
    WriteText(*logger, "text");
    QVERIFY(!QFileInfo(path).isSymLink());
    QCOMPARE(Bare(ReadAll(path)), LineWith("text"));
    QCOMPARE(ModeOf(path), mode_t(0600));
    QCOMPARE(ReadAll(target), QByteArray("precious\n"));
    QCOMPARE(ModeOf(target), mode_t(0644));
}

void TestLogger::danglingLinkIsFollowed()
{
    const QString target = directory->filePath(QStringLiteral("target"));
    QVERIFY(QFile::link(target, path));
    logger->Init(Local(path));
    WriteText(*logger, "text");
    QVERIFY(QFileInfo(path).isSymLink());
    QCOMPARE(Bare(ReadAll(target)), LineWith("text"));
}

void TestLogger::directoryIsReplacedByAFile()
{
    QVERIFY(QDir().mkpath(path + QStringLiteral("/inner")));
    WriteAll(path + QStringLiteral("/inner/file"), "text");
    logger->Init(Local(path));
    WriteText(*logger, "text");
    QVERIFY(QFileInfo(path).isFile());
    QCOMPARE(Bare(ReadAll(path)), LineWith("text"));
    QCOMPARE(ModeOf(path), mode_t(0600));
}

void TestLogger::linkToADirectoryEmptiesItAndIsKept()
{
    // The check follows the link to the directory, but the link itself cannot be removed as a directory.
    const QString target = directory->filePath(QStringLiteral("target"));
    QVERIFY(QDir().mkdir(target));
    WriteAll(target + QStringLiteral("/file"), "text");
    QVERIFY(QFile::link(target, path));
    logger->Init(Local(path));
    WriteText(*logger, "text");
    QVERIFY(QFileInfo(path).isSymLink());
    QVERIFY(QFileInfo(target).isDir());
    QVERIFY(QDir(target).isEmpty());
}

void TestLogger::oversizeLogIsOpenAfterInit()
{
    Grow(LIMIT + 1);
    Brevora::Logger& shared = *Singleton<Brevora::Logger>::GetInstance();
    // The check before opening logs a line to this log.
    shared.Init(Local(path));
    WriteText(shared, "text");
    WriteText(shared, "more");
    QVERIFY2(Bare(ReadAll(path)).endsWith(LineWith("text") + LineWith("more")), ReadAll(path).constData());
    QCOMPARE(QFileInfo(Old()).size(), LIMIT + 1);
    QCOMPARE(ModeOf(path), mode_t(0600));
}

void TestLogger::oversizeTargetOfALinkIsNotTouched_data()
{
    QTest::addColumn<bool>("wasLog");
    QTest::newRow("at the start") << false;
    QTest::newRow("after the log was opened") << true;
}

void TestLogger::oversizeTargetOfALinkIsNotTouched()
{
    QFETCH(bool, wasLog);
    Brevora::Logger& shared = *Singleton<Brevora::Logger>::GetInstance();
    if (wasLog) {
        shared.Init(Local(path));
    }
    Grow(LIMIT + 1);
    const QString target = directory->filePath(QStringLiteral("target"));
    QVERIFY(QFile::rename(path, target));
    QVERIFY(QFile::link(target, path));
    shared.Init(Local(path));
    WriteText(shared, "text");
    QCOMPARE(QFileInfo(target).size(), LIMIT + 1);
    QVERIFY(!QFileInfo(path).isSymLink());
    QVERIFY(Bare(ReadAll(path)).endsWith(LineWith("text")));
}

namespace {
/// Wraps a function pointer, because Qt's test columns cannot contain one.
struct CFunction
{
    void (*write)(const char*, const char*, const char*, ...);
};

void AddPlainFunctions()
{
    QTest::addColumn<CFunction>("function");
    QTest::addColumn<QString>("word");
    QTest::newRow("debug") << CFunction{&CLogDebug} << QString();
    QTest::newRow("info") << CFunction{&CLogInfo} << QStringLiteral("INFO");
    QTest::newRow("warning") << CFunction{&CLogWarn} << QStringLiteral("WARNING");
    QTest::newRow("error") << CFunction{&CLogError} << QStringLiteral("ERROR");
}
} // namespace
Q_DECLARE_METATYPE(CFunction)

void TestLogger::cFunctionsWriteTheirLevel_data()
{
    AddPlainFunctions();
}

void TestLogger::cFunctionsWriteTheirLevel()
{
    QFETCH(CFunction, function);
    QFETCH(QString, word);
    const CapturedLog log;
    function.write("TAG", "other.c", "%d of %s", 3, "four");
    const QString expected =
        word.isEmpty() ? QString() : QStringLiteral("[%1] [other.c:0] TAG: 3 of four\n").arg(word);
    QCOMPARE(Bare(ReadAll(log.Path())), expected);
}

void TestLogger::emptyMessageIsALine()
{
    const CapturedLog log;
    CLogInfo("TAG", "other.c", "%s", "");
    QCOMPARE(Bare(ReadAll(log.Path())), QStringLiteral("[INFO] [other.c:0] TAG: \n"));
    Singleton<Brevora::Logger>::GetInstance()->WriteLog(3, "File.cpp", 7, "TAG", "%s", "");
    QCOMPARE(Bare(ReadAll(log.Path())).split(QLatin1Char('\n')).size(), 3);
}

void TestLogger::cFunctionsIgnoreNull_data()
{
    AddPlainFunctions();
}

void TestLogger::cFunctionsIgnoreNull()
{
    QFETCH(CFunction, function);
    const CapturedLog log;
    function.write(nullptr, "other.c", "text");
    function.write("TAG", nullptr, "text");
    function.write("TAG", "other.c", nullptr);
    QCOMPARE(ReadAll(log.Path()), QByteArray());
}

void TestLogger::percentSignsReachTheFileUnchanged()
{
    const CapturedLog log;
    CLogInfo("TAG", "other.c", "%s", "100% %s %n %%d");
    QCOMPARE(Bare(ReadAll(log.Path())), QStringLiteral("[INFO] [other.c:0] TAG: 100% %s %n %%d\n"));
}

void TestLogger::cFunctionsDropTooLongMessages_data()
{
    longMessageIsWrittenCompletelyOrDropped_data();
}

void TestLogger::cFunctionsDropTooLongMessages()
{
    QFETCH(int, length);
    QFETCH(bool, isThere);
    const CapturedLog log;
    const QByteArray message(length, 'x');
    CLogError("TAG", "other.c", "%s", message.constData());
    COMPARE_LISTS(log.Messages(), isThere ? QStringList(QString::fromLatin1(message)) : QStringList());
}

void TestLogger::macroSuppliesTheSourceLocation()
{
    static constexpr char MODULE_TAG[] = "HERE";
    const CapturedLog log;
    LOG_DEBUG("debug %d", 1);
    const int line = __LINE__ + 1;
    LOG_INFO("info %d", 2);
    LOG_WARNING("warning %d", 3);
    LOG_ERROR("error %d", 4);
    const QList<CapturedLog::Line> lines = log.Lines();
    const QStringList words{QStringLiteral("INFO"), QStringLiteral("WARNING"), QStringLiteral("ERROR")};
    QCOMPARE(lines.size(), words.size());
    for (int i = 0; i < lines.size(); ++i) {
        QCOMPARE(lines.at(i).level, words.at(i));
        QCOMPARE(lines.at(i).file, QStringLiteral("TestLogger.cpp"));
        QCOMPARE(lines.at(i).number, line + i);
        QCOMPARE(lines.at(i).module, QStringLiteral("HERE"));
        QVERIFY(lines.at(i).message.endsWith(QString::number(i + 2)));
    }
}

void TestLogger::backupKeepsTheReadableBlocks_data()
{
    QTest::addColumn<QString>("source");
    QTest::newRow("directory") << QStringLiteral("/");
    QTest::newRow("read error") << QStringLiteral("/proc/self/mem");
    QTest::newRow("missing") << QStringLiteral("/nowhere/log");
}

void TestLogger::backupKeepsTheReadableBlocks()
{
    QFETCH(QString, source);
    logger->CopyLog2Log(Local(source), Local(Old()));
    QCOMPARE(ReadAll(Old()), QByteArray());
    QCOMPARE(ModeOf(Old()), mode_t(0600));
}

void TestLogger::linesAfterAFailedWriteAreComplete()
{
    logger->Init(Local(path));
    logger->WriteLog(2, "A.cpp", 1, "TAG", "first");
    const qint64 size = QFileInfo(path).size();
    // A file size limit simulates a full disk. Only some bytes of the line fit.
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit before{};
    getrlimit(RLIMIT_FSIZE, &before);
    rlimit full = before;
    full.rlim_cur = static_cast<rlim_t>(size + 20);
    setrlimit(RLIMIT_FSIZE, &full);
    logger->WriteLog(2, "A.cpp", 1, "TAG", "lost");
    logger->WriteLog(2, "A.cpp", 1, "TAG", "lost too");
    setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, SIG_DFL);
    logger->WriteLog(2, "A.cpp", 1, "TAG", "second");
    logger->WriteLog(2, "A.cpp", 1, "TAG", "third");
    const QList<QByteArray> lines = ReadAll(path).split('\n');
    QCOMPARE(lines.size(), 5);
    QVERIFY(lines.at(0).endsWith("TAG: first"));
    QCOMPARE(lines.at(1).size(), 20);
    QVERIFY(lines.at(2).startsWith('[') && lines.at(2).endsWith("TAG: second"));
    QVERIFY(lines.at(3).startsWith('[') && lines.at(3).endsWith("TAG: third"));
    QCOMPARE(lines.at(4), QByteArray());
}

void TestLogger::logIsNotInheritedByChildren()
{
    logger->Init(Local(path));
    QCOMPARE(WEXITSTATUS(std::system(("ls -l /proc/self/fd | grep -q " + Local(path)).c_str())), 1);
}

void TestLogger::linesOfManyThreadsAreCompleteAcrossARotation()
{
    constexpr int THREADS = 8;
    constexpr int LINES = 500;
    // The size of about a quarter of the lines, so that the rotation happens between them.
    constexpr qint64 REMAINING_SIZE = 200000;
    Grow(LIMIT - REMAINING_SIZE);
    logger->Init(Local(path));
    const QByteArray filling(150, 'x');
    std::vector<std::thread> threads;
    for (int thread = 0; thread < THREADS; ++thread) {
        threads.emplace_back([this, thread, &filling] {
            for (int i = 0; i < LINES; ++i) {
                logger->WriteLog(INFO, "Place.cpp", i, "TAG", "%d %s", thread, filling.constData());
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    const QByteArray backup = ReadAll(Old()).mid(LIMIT - REMAINING_SIZE);
    const QByteArray live = ReadAll(path);
    QVERIFY(!live.isEmpty());
    QVERIFY(backup.size() > REMAINING_SIZE);
    QVERIFY(backup.size() < REMAINING_SIZE + LONGEST_MESSAGE);
    const QRegularExpression whole(
        QStringLiteral("^") + QLatin1String(STAMP) +
        QStringLiteral(" \\[INFO\\] \\[Place\\.cpp:(\\d+)\\] TAG: (\\d) x{150}\\z"));
    std::vector<int> next(THREADS, 0);
    const QStringList lines = LinesOf(backup) + LinesOf(live);
    for (const QString& line : lines) {
        const QRegularExpressionMatch match = whole.match(line);
        QVERIFY2(match.hasMatch(), qPrintable(line));
        // The lines of each thread are in order.
        QCOMPARE(match.captured(1).toInt(), next[match.captured(2).toUInt()]++);
    }
    QCOMPARE(lines.size(), THREADS * LINES);
}

QTEST_GUILESS_MAIN(TestLogger)
#include "TestLogger.moc"
