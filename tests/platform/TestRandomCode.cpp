#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>
#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdint>
#include <cstring>
#include <deque>
#include <fcntl.h>
#include <functional>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/RandomCode.h"
#include "support/CapturedLog.h"
#include "support/Files.h"
#include "support/UnprivilegedUser.h"

using Brevora::RandomCode;

namespace {
constexpr int POINTER_IS_NULL = 2;
constexpr int GET_RANDOM_SEEDS_FAILED = 19;
constexpr int INVALID_FILE_PATH = 102;
constexpr int WRITE_FILE_FAILED = 105;
constexpr int SEED_SIZE = 64;
constexpr int POOL_SIZE = 256;
constexpr int LIMIT = 1048576;
constexpr char UNTOUCHED = '#';
const char* const LOWER = "abcdefghijklmnopqrstuvwxyz";
const char* const UPPER = "ABCDEFGHIJKLMNOPQRSTUVWXYZ";
const char* const DIGITS = "0123456789";
const char* const OTHERS = "~@#%^*_=+[{}],./?";

/// The result of one read of the device: bytes or an error.
struct Read
{
    QByteArray bytes;
    int error = 0;
};

/// Controls the intercepted calls of the system and of the random number library.
struct Mock
{
    int device = -1;
    int deviceFlags = 0;
    int opens = 0;
    int closes = 0;
    int openError = 0;
    std::deque<Read> reads;
    QList<int> requestedSizes;

    int polls = 0;
    QByteArray seed;
    std::deque<uint32_t> numbers;
    int numbersTaken = 0;
    bool numbersFail = false;
    std::function<void()> beforeNumbers;

    QList<bool> fillingFails;
    bool copyingFails = false;
    std::function<int()> afterChmod;
};
Mock mock;
} // namespace

int RealOpen(const char* path, int flags, ...) __asm__("__real_open");
int WrappedOpen(const char* path, int flags, ...) __asm__("__wrap_open");
ssize_t RealRead(int fd, void* buffer, std::size_t count) __asm__("__real_read");
ssize_t WrappedRead(int fd, void* buffer, std::size_t count) __asm__("__wrap_read");
int RealClose(int fd) __asm__("__real_close");
int WrappedClose(int fd) __asm__("__wrap_close");
int RealChmod(const char* path, mode_t mode) __asm__("__real_chmod");
int WrappedChmod(const char* path, mode_t mode) __asm__("__wrap_chmod");
int RealPoll() __asm__("__real_RAND_poll");
int WrappedPoll() __asm__("__wrap_RAND_poll");
void RealSeed(const void* bytes, int count) __asm__("__real_RAND_seed");
void WrappedSeed(const void* bytes, int count) __asm__("__wrap_RAND_seed");
int RealNumbers(unsigned char* bytes, int count) __asm__("__real_RAND_priv_bytes");
int WrappedNumbers(unsigned char* bytes, int count) __asm__("__wrap_RAND_priv_bytes");
int RealMemset(void* dest, std::size_t destMax, int value,
               std::size_t count) __asm__("__real__Z8memset_sPvmim");
int WrappedMemset(void* dest, std::size_t destMax, int value,
                  std::size_t count) __asm__("__wrap__Z8memset_sPvmim");
int RealMemcpy(void* dest, std::size_t destMax, const void* src,
               std::size_t count) __asm__("__real__Z8memcpy_sPvmPKvm");
int WrappedMemcpy(void* dest, std::size_t destMax, const void* src,
                  std::size_t count) __asm__("__wrap__Z8memcpy_sPvmPKvm");

int WrappedOpen(const char* path, int flags, ...)
{
    va_list args;
    va_start(args, flags);
    const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(args, mode_t) : 0;
    va_end(args);
    if (std::strcmp(path, "/dev/random") != 0) {
        return RealOpen(path, flags, mode);
    }
    ++mock.opens;
    mock.deviceFlags = flags;
    if (mock.openError != 0) {
        errno = mock.openError;
        return -1;
    }
    mock.device = RealOpen(path, flags);
    return mock.device;
}

ssize_t WrappedRead(int fd, void* buffer, std::size_t count)
{
    if (fd != mock.device) {
        return RealRead(fd, buffer, count);
    }
    mock.requestedSizes.append(static_cast<int>(count));
    if (mock.reads.empty()) {
        return RealRead(fd, buffer, count);
    }
    const Read next = mock.reads.front();
    mock.reads.pop_front();
    if (next.error != 0) {
        errno = next.error;
        return -1;
    }
    const std::size_t size = std::min(count, static_cast<std::size_t>(next.bytes.size()));
    std::memcpy(buffer, next.bytes.constData(), size);
    return static_cast<ssize_t>(size);
}

int WrappedClose(int fd)
{
    if (fd == mock.device) {
        ++mock.closes;
        mock.device = -1;
    }
    return RealClose(fd);
}

int WrappedChmod(const char* path, mode_t mode)
{
    const int result = RealChmod(path, mode);
    return mock.afterChmod ? mock.afterChmod() : result;
}

int WrappedPoll()
{
    ++mock.polls;
    return RealPoll();
}

void WrappedSeed(const void* bytes, int count)
{
    mock.seed = QByteArray(static_cast<const char*>(bytes), count);
    RealSeed(bytes, count);
}

int WrappedNumbers(unsigned char* bytes, int count)
{
    if (mock.beforeNumbers) {
        mock.beforeNumbers();
    }
    ++mock.numbersTaken;
    if (mock.numbersFail) {
        return 0;
    }
    if (mock.numbers.empty() || count != 4) {
        return RealNumbers(bytes, count);
    }
    const uint32_t number = mock.numbers.front();
    mock.numbers.pop_front();
    for (int i = 0; i < 4; ++i) {
        bytes[i] = static_cast<unsigned char>(number >> (24 - 8 * i));
    }
    return 1;
}

int WrappedMemset(void* dest, std::size_t destMax, int value, std::size_t count)
{
    if (!mock.fillingFails.isEmpty() && mock.fillingFails.takeFirst()) {
        return EINVAL;
    }
    return RealMemset(dest, destMax, value, count);
}

int WrappedMemcpy(void* dest, std::size_t destMax, const void* src, std::size_t count)
{
    return mock.copyingFails ? EINVAL : RealMemcpy(dest, destMax, src, count);
}

class TestRandomCode : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void kernelBytesNeedABuffer();
    void lengthBelowOneReadsNothing_data();
    void lengthBelowOneReadsNothing();
    void deviceThatCannotBeOpenedFails();
    void kernelBytesFillTheBufferExactly();
    void shortReadsAreContinued();
    void interruptedReadsAreRepeatedWithoutEnd_data();
    void interruptedReadsAreRepeatedWithoutEnd();
    void ninthConsecutiveFailedReadFails_data();
    void ninthConsecutiveFailedReadFails();

    void seedComesFromTheKernel();
    void seedWithoutTheKernelFails();
    void numberIsBigEndian();
    void numberWithoutRandomBytesIsZero();

    void alphabetsAreComplete();
    void lengthsAreLimited_data();
    void lengthsAreLimited();
    void generatorsNeedABuffer();
    void generatorsNeedASeed();
    void lastCharacterIsDrawnUntilThereAreTwoClasses_data();
    void lastCharacterIsDrawnUntilThereAreTwoClasses();
    void secondClassInTheLastCharacterIsEnough();
    void passwordsHaveTwoClasses();

    void randomBytesAreDrawn();
    void randomBytesNeedBufferAndLength();
    void randomBytesNeedASeedAndTheLibrary();

    void poolIsZeroUntilItIsFilled();
    void lengthOfThePoolIsLimited_data();
    void lengthOfThePoolIsLimited();
    void poolThatCannotBeFilledIsLogged();
    void clearedMemoryContainsThePool();
    void memoryLargerThanThePoolIsFilledWithOnes();
    void missingMemoryIsNotCleared_data();
    void missingMemoryIsNotCleared();
    void failedPassesOfClearingAreLogged_data();
    void failedPassesOfClearingAreLogged();

    void fileIsOverwrittenThreeTimesAndRemoved_data();
    void fileIsOverwrittenThreeTimesAndRemoved();
    void erasureMakesThreePassesOnly();
    void tooLargeFileIsKept();
    void emptyFileIsKept();
    void missingFileIsNotErased_data();
    void missingFileIsNotErased();
    void unreadableFileCountsAsTooLarge();
    void unwritableFileIsKept();
    void secondPassThatFailsIsLogged();
    void passWithoutPermissionsFails();
    void randomPassWithoutRandomBytesFails();
    void randomPassThatCannotBeWrittenFails();
    void fileThatCannotBeUnlinkedIsOverwritten();
    void targetOfALinkIsOverwritten();

private:
    bool IsError(const QString& message) const
    {
        return log->Contains(QStringLiteral("ERROR"), QStringLiteral("UTILS"), message);
    }
    bool IsWarning(const QString& message) const
    {
        return log->Contains(QStringLiteral("WARNING"), QStringLiteral("UTILS"), message);
    }

    std::unique_ptr<QTemporaryDir> directory;
    std::unique_ptr<CapturedLog> log;
    QString path;
    QByteArray poolAtStart;
};

namespace {
char* Chars(QByteArray& bytes)
{
    return bytes.data();
}

unsigned char* Unsigned(QByteArray& bytes)
{
    return reinterpret_cast<unsigned char*>(bytes.data());
}

QByteArray Pool()
{
    return QByteArray(reinterpret_cast<const char*>(RandomCode::GetRandomPool(POOL_SIZE)), POOL_SIZE);
}

QString OpenErrorLine(int error)
{
    return QStringLiteral("Failed to open /dev/random, error code: %1")
        .arg(QString::fromLocal8Bit(std::strerror(error)));
}

const QString NO_SEED = QStringLiteral("get random seed failed.");

/// Returns the log lines of a seed that fails because the device cannot be opened.
QStringList SeedFailureLines(int error)
{
    return {OpenErrorLine(error), QStringLiteral("Get random number failed."), NO_SEED};
}

QList<Read> Failures(int count, int error)
{
    QList<Read> reads;
    for (int i = 0; i < count; ++i) {
        reads.append({QByteArray(), error});
    }
    return reads;
}
} // namespace

void TestRandomCode::initTestCase()
{
    poolAtStart = Pool();
}

void TestRandomCode::init()
{
    directory = std::make_unique<QTemporaryDir>();
    path = directory->filePath(QStringLiteral("secret"));
    log = std::make_unique<CapturedLog>();
    std::fill_n(RandomCode::GetRandomPool(POOL_SIZE), POOL_SIZE, static_cast<unsigned char>(0));
    mock = Mock();
}

void TestRandomCode::cleanup()
{
    mock = Mock();
    log.reset();
    directory.reset();
}

void TestRandomCode::kernelBytesNeedABuffer()
{
    QCOMPARE(RandomCode::GetDevRandBytes(nullptr, 8), POINTER_IS_NULL);
    COMPARE_LISTS(log->Messages(), QStringList(QStringLiteral("null buf input, error code: Null pointer")));
    QVERIFY(IsError(log->Messages().first()));
    QCOMPARE(mock.opens, 0);
}

void TestRandomCode::lengthBelowOneReadsNothing_data()
{
    QTest::addColumn<int>("length");
    QTest::newRow("0") << 0;
    QTest::newRow("-1") << -1;
}

void TestRandomCode::lengthBelowOneReadsNothing()
{
    QFETCH(int, length);
    QByteArray buffer(4, UNTOUCHED);
    QCOMPARE(RandomCode::GetDevRandBytes(Chars(buffer), length), 0);
    QCOMPARE(mock.opens, 1);
    QCOMPARE(mock.closes, 1);
    QCOMPARE(mock.requestedSizes, QList<int>());
    QCOMPARE(buffer, QByteArray(4, UNTOUCHED));
    mock.openError = EACCES;
    QCOMPARE(RandomCode::GetDevRandBytes(Chars(buffer), length), GET_RANDOM_SEEDS_FAILED);
}

void TestRandomCode::deviceThatCannotBeOpenedFails()
{
    QByteArray buffer(4, UNTOUCHED);
    for (const int error : {EMFILE, ENOENT}) {
        log->Clear();
        mock.openError = error;
        QCOMPARE(RandomCode::GetDevRandBytes(Chars(buffer), 4), GET_RANDOM_SEEDS_FAILED);
        COMPARE_LISTS(log->Messages(), QStringList(OpenErrorLine(error)));
        QVERIFY(IsError(OpenErrorLine(error)));
    }
    QCOMPARE(buffer, QByteArray(4, UNTOUCHED));
    QCOMPARE(mock.closes, 0);
}

void TestRandomCode::kernelBytesFillTheBufferExactly()
{
    constexpr int LENGTH = 32;
    QByteArray one(LENGTH + 1, UNTOUCHED);
    QByteArray two(LENGTH + 1, UNTOUCHED);
    QCOMPARE(RandomCode::GetDevRandBytes(Chars(one), LENGTH), 0);
    QCOMPARE(RandomCode::GetDevRandBytes(Chars(two), LENGTH), 0);
    QVERIFY(one != two);
    QVERIFY(one.left(LENGTH) != QByteArray(LENGTH, UNTOUCHED));
    QCOMPARE(one.at(LENGTH), UNTOUCHED);
    QCOMPARE(mock.deviceFlags & O_ACCMODE, O_RDONLY);
    QVERIFY((mock.deviceFlags & O_NONBLOCK) != 0);
    QCOMPARE(mock.opens, 2);
    QCOMPARE(mock.closes, 2);
    COMPARE_LISTS(log->Messages(), QStringList());
}

void TestRandomCode::shortReadsAreContinued()
{
    mock.reads = {{"a"}, {"bcd"}, {"", EAGAIN}, {"ef"}, {"ghij"}};
    QByteArray buffer(11, UNTOUCHED);
    QCOMPARE(RandomCode::GetDevRandBytes(Chars(buffer), 10), 0);
    QCOMPARE(buffer, QByteArray("abcdefghij#"));
    QCOMPARE(mock.requestedSizes, QList<int>({10, 9, 6, 6, 4}));
    QCOMPARE(mock.closes, 1);
}

void TestRandomCode::interruptedReadsAreRepeatedWithoutEnd_data()
{
    QTest::addColumn<int>("error");
    QTest::newRow("interrupted") << EINTR;
    QTest::newRow("no data yet") << EAGAIN;
}

void TestRandomCode::interruptedReadsAreRepeatedWithoutEnd()
{
    constexpr int TIMES = 10000;
    QFETCH(int, error);
    mock.reads.assign(TIMES, {QByteArray(), error});
    mock.reads.push_back({"abcd"});
    QByteArray buffer(4, UNTOUCHED);
    QCOMPARE(RandomCode::GetDevRandBytes(Chars(buffer), 4), 0);
    QCOMPARE(buffer, QByteArray("abcd"));
    QCOMPARE(mock.requestedSizes.size(), TIMES + 1);
    COMPARE_LISTS(log->Messages(), QStringList());
}

Q_DECLARE_METATYPE(QList<Read>)

void TestRandomCode::ninthConsecutiveFailedReadFails_data()
{
    QTest::addColumn<QList<Read>>("reads");
    QTest::addColumn<bool>("succeeds");
    const Read one{"a"};
    const Read all{"abcd"};
    const Read again{QByteArray(), EAGAIN};
    QTest::newRow("eight ends of file") << Failures(8, 0) + QList<Read>{all} << true;
    QTest::newRow("eight errors") << Failures(8, EIO) + QList<Read>{all} << true;
    QTest::newRow("nine ends of file") << Failures(9, 0) << false;
    QTest::newRow("nine errors") << Failures(9, EIO) << false;
    QTest::newRow("four ends of file, five errors") << Failures(4, 0) + Failures(5, EBADF) << false;
    QTest::newRow("repeats do not count") << Failures(8, 0) + QList<Read>{again, again, all} << true;
    QTest::newRow("repeats do not reset the count")
        << Failures(8, 0) + QList<Read>{again} + Failures(1, 0) << false;
    QTest::newRow("bytes reset the count")
        << Failures(8, 0) + QList<Read>{one} + Failures(8, EIO) + QList<Read>{{"bcd"}} << true;
    QTest::newRow("nine errors after bytes") << Failures(8, 0) + QList<Read>{one} + Failures(9, EIO) << false;
}

void TestRandomCode::ninthConsecutiveFailedReadFails()
{
    QFETCH(QList<Read>, reads);
    QFETCH(bool, succeeds);
    mock.reads.assign(reads.begin(), reads.end());
    QByteArray buffer(4, UNTOUCHED);
    QCOMPARE(RandomCode::GetDevRandBytes(Chars(buffer), 4), succeeds ? 0 : GET_RANDOM_SEEDS_FAILED);
    // The function makes exactly these reads.
    QCOMPARE(mock.requestedSizes.size(), reads.size());
    QCOMPARE(mock.closes, 1);
    const QString message = QStringLiteral("get random number failed, out of try times.");
    if (succeeds) {
        QCOMPARE(buffer, QByteArray("abcd"));
        COMPARE_LISTS(log->Messages(), QStringList());
    } else {
        COMPARE_LISTS(log->Messages(), QStringList(message));
        QVERIFY(IsError(message));
    }
}

void TestRandomCode::seedComesFromTheKernel()
{
    QByteArray bytes(SEED_SIZE, '\0');
    for (int i = 0; i < SEED_SIZE; ++i) {
        bytes[i] = static_cast<char>(i);
    }
    mock.reads = {{bytes}};
    QCOMPARE(RandomCode::ProduceRandSeed(), 0);
    QCOMPARE(mock.requestedSizes, QList<int>({SEED_SIZE}));
    QCOMPARE(mock.seed, bytes);
    QCOMPARE(mock.polls, 1);
    COMPARE_LISTS(log->Messages(), QStringList());
}

void TestRandomCode::seedWithoutTheKernelFails()
{
    mock.openError = EMFILE;
    QCOMPARE(RandomCode::ProduceRandSeed(), GET_RANDOM_SEEDS_FAILED);
    COMPARE_LISTS(log->Messages(), SeedFailureLines(EMFILE).mid(0, 2));
    QVERIFY(IsError(QStringLiteral("Get random number failed.")));
    QCOMPARE(mock.polls, 1);
    QCOMPARE(mock.seed, QByteArray());
}

void TestRandomCode::numberIsBigEndian()
{
    mock.numbers = {0x01020304U, 0xFFFFFFFEU};
    QCOMPARE(RandomCode::GetDevRandNum(), 0x01020304U);
    QCOMPARE(RandomCode::GetDevRandNum(), 0xFFFFFFFEU);
    QVERIFY(RandomCode::GetDevRandNum() != RandomCode::GetDevRandNum() ||
            RandomCode::GetDevRandNum() != RandomCode::GetDevRandNum());
}

void TestRandomCode::numberWithoutRandomBytesIsZero()
{
    mock.numbersFail = true;
    QCOMPARE(RandomCode::GetDevRandNum(), 0U);
    COMPARE_LISTS(log->Messages(), QStringList());
}

void TestRandomCode::alphabetsAreComplete()
{
    // Number i is i * (length + 1). Its remainder after division by the alphabet's length is i.
    const auto count = [](uint32_t length) {
        mock.numbers.clear();
        for (uint32_t i = 0; i < length; ++i) {
            mock.numbers.push_back(i * (length + 1));
        }
    };
    QByteArray password(80, UNTOUCHED);
    count(79);
    RandomCode::GetPasswdRandNum(Unsigned(password), 79);
    QCOMPARE(password, QByteArray(LOWER) + UPPER + DIGITS + OTHERS + UNTOUCHED);
    QByteArray pin(11, UNTOUCHED);
    count(10);
    QCOMPARE(RandomCode::GetPinRandNum(Unsigned(pin), 10), 0);
    QCOMPARE(pin, QByteArray(DIGITS) + UNTOUCHED);
    count(52);
    QCOMPARE(RandomCode::GetSsidRandNum(52), std::string(LOWER) + UPPER);
    QCOMPARE(mock.numbersTaken, 79 + 10 + 52);
    COMPARE_LISTS(log->Messages(), QStringList());
}

void TestRandomCode::lengthsAreLimited_data()
{
    QTest::addColumn<unsigned int>("length");
    QTest::addColumn<bool>("password");
    QTest::addColumn<bool>("number");
    QTest::newRow("0") << 0U << false << false;
    QTest::newRow("5") << 5U << false << false;
    QTest::newRow("6") << 6U << false << true;
    QTest::newRow("7") << 7U << false << true;
    QTest::newRow("8") << 8U << true << true;
    QTest::newRow("256") << 256U << true << true;
    QTest::newRow("257") << 257U << false << false;
    QTest::newRow("highest") << 0xFFFFFFFFU << false << false;
}

void TestRandomCode::lengthsAreLimited()
{
    QFETCH(unsigned int, length);
    QFETCH(bool, password);
    QFETCH(bool, number);
    const QByteArray fresh(300, UNTOUCHED);
    const int filled = static_cast<int>(length);
    QByteArray buffer = fresh;
    RandomCode::GetPasswdRandNum(Unsigned(buffer), length);
    if (password) {
        QVERIFY(buffer.left(filled) != fresh.left(filled));
        QCOMPARE(buffer.mid(filled), fresh.mid(filled));
        COMPARE_LISTS(log->Messages(), QStringList());
    } else {
        QCOMPARE(buffer, fresh);
        COMPARE_LISTS(log->Messages(),
                      QStringList(QStringLiteral("Input passwd length error, len = %1").arg(filled)));
        QVERIFY(IsError(log->Messages().first()));
    }
    log->Clear();
    buffer = fresh;
    QCOMPARE(RandomCode::GetPinRandNum(Unsigned(buffer), length), number ? 0 : -1);
    const std::string ssid = RandomCode::GetSsidRandNum(length);
    QCOMPARE(ssid.size(), number ? length : 0U);
    if (number) {
        QVERIFY(QRegularExpression(QStringLiteral("^\\d{%1}#*\\z").arg(length))
                    .match(QString::fromLatin1(buffer))
                    .hasMatch());
        QVERIFY(QRegularExpression(QStringLiteral("^[A-Za-z]+\\z"))
                    .match(QString::fromStdString(ssid))
                    .hasMatch());
        COMPARE_LISTS(log->Messages(), QStringList());
    } else {
        QCOMPARE(buffer, fresh);
        const QString message = QStringLiteral("Input number[%1] error").arg(filled);
        COMPARE_LISTS(log->Messages(), QStringList({message, message}));
        QVERIFY(IsError(message));
    }
}

void TestRandomCode::generatorsNeedABuffer()
{
    const QString message = QStringLiteral("null buf input, error code: Null pointer");
    // The buffer is checked before the length.
    RandomCode::GetPasswdRandNum(nullptr, 1);
    QCOMPARE(RandomCode::GetPinRandNum(nullptr, 1), -1);
    COMPARE_LISTS(log->Messages(), QStringList({message, message}));
    QVERIFY(IsError(message));
    QCOMPARE(mock.polls, 0);
}

void TestRandomCode::generatorsNeedASeed()
{
    mock.openError = EMFILE;
    const QByteArray fresh(16, UNTOUCHED);
    QByteArray buffer = fresh;
    RandomCode::GetPasswdRandNum(Unsigned(buffer), 8);
    COMPARE_LISTS(log->Messages(), SeedFailureLines(EMFILE));
    QVERIFY(IsError(NO_SEED));
    log->Clear();
    QCOMPARE(RandomCode::GetPinRandNum(Unsigned(buffer), 8), -1);
    COMPARE_LISTS(log->Messages(), SeedFailureLines(EMFILE));
    log->Clear();
    QCOMPARE(RandomCode::GetSsidRandNum(8), std::string());
    COMPARE_LISTS(log->Messages(), SeedFailureLines(EMFILE));
    QCOMPARE(buffer, fresh);
    QCOMPARE(mock.numbersTaken, 0);
}

void TestRandomCode::lastCharacterIsDrawnUntilThereAreTwoClasses_data()
{
    QTest::addColumn<QByteArray>("drawn");
    QTest::addColumn<QByteArray>("redrawn");
    QTest::newRow("lower case") << QByteArray("abcdefgz") << QByteArray("xyzaA");
    QTest::newRow("upper case") << QByteArray("ABCDEFGZ") << QByteArray("XZA0");
    QTest::newRow("digits") << QByteArray("01234569") << QByteArray("90?");
    QTest::newRow("others") << QByteArray("~@#%^*_=") << QByteArray(".,/a");
}

void TestRandomCode::lastCharacterIsDrawnUntilThereAreTwoClasses()
{
    QFETCH(QByteArray, drawn);
    QFETCH(QByteArray, redrawn);
    const QByteArray alphabet = QByteArray(LOWER) + UPPER + DIGITS + OTHERS;
    for (const char character : drawn + redrawn) {
        mock.numbers.push_back(static_cast<uint32_t>(alphabet.indexOf(character)));
    }
    QByteArray password(drawn.size(), UNTOUCHED);
    RandomCode::GetPasswdRandNum(Unsigned(password), static_cast<unsigned int>(password.size()));
    QCOMPARE(password, drawn.left(drawn.size() - 1) + redrawn.right(1));
    QCOMPARE(mock.numbersTaken, drawn.size() + redrawn.size());
}

void TestRandomCode::secondClassInTheLastCharacterIsEnough()
{
    const QList<QByteArray> classes{LOWER, UPPER, DIGITS, OTHERS};
    const QByteArray alphabet = classes.join();
    for (const QByteArray& first : classes) {
        for (const QByteArray& second : classes) {
            if (first == second) {
                continue;
            }
            const QByteArray drawn = first.left(7) + second.right(1);
            mock.numbers.clear();
            for (const char character : drawn) {
                mock.numbers.push_back(static_cast<uint32_t>(alphabet.indexOf(character)));
            }
            mock.numbersTaken = 0;
            QByteArray password(8, UNTOUCHED);
            RandomCode::GetPasswdRandNum(Unsigned(password), 8);
            QCOMPARE(password, drawn);
            QCOMPARE(mock.numbersTaken, 8);
        }
    }
}

void TestRandomCode::passwordsHaveTwoClasses()
{
    constexpr int PASSWORDS = 500;
    for (int i = 0; i < PASSWORDS; ++i) {
        QByteArray password(8, UNTOUCHED);
        RandomCode::GetPasswdRandNum(Unsigned(password), 8);
        int classes = 0;
        for (const char* characters : {LOWER, UPPER, DIGITS, OTHERS}) {
            const QByteArray members(characters);
            classes += std::any_of(password.begin(), password.end(),
                                   [&members](char character) { return members.contains(character); })
                           ? 1
                           : 0;
        }
        QVERIFY2(classes >= 2, password.constData());
    }
}

void TestRandomCode::randomBytesAreDrawn()
{
    QByteArray one(65, UNTOUCHED);
    QByteArray two(65, UNTOUCHED);
    QCOMPARE(RandomCode::GetRandNumBytes(Unsigned(one), 64), 0);
    QCOMPARE(RandomCode::GetRandNumBytes(Unsigned(two), 64), 0);
    QVERIFY(one != two);
    QCOMPARE(one.at(64), UNTOUCHED);
    QCOMPARE(mock.polls, 2);
    QCOMPARE(mock.numbersTaken, 2);
    QCOMPARE(RandomCode::GetRandNumBytes(Unsigned(one), 1), 0);
    COMPARE_LISTS(log->Messages(), QStringList());
}

void TestRandomCode::randomBytesNeedBufferAndLength()
{
    QByteArray buffer(8, UNTOUCHED);
    QCOMPARE(RandomCode::GetRandNumBytes(nullptr, 0), -1);
    QCOMPARE(RandomCode::GetRandNumBytes(Unsigned(buffer), 0), -1);
    QCOMPARE(RandomCode::GetRandNumBytes(Unsigned(buffer), -3), -1);
    COMPARE_LISTS(log->Messages(), QStringList({QStringLiteral("null data input, error code: Null pointer"),
                                                QStringLiteral("Input number[0] error"),
                                                QStringLiteral("Input number[-3] error")}));
    for (const QString& message : log->Messages()) {
        QVERIFY(IsError(message));
    }
    QCOMPARE(buffer, QByteArray(8, UNTOUCHED));
    QCOMPARE(mock.polls, 0);
}

void TestRandomCode::randomBytesNeedASeedAndTheLibrary()
{
    QByteArray buffer(8, UNTOUCHED);
    mock.openError = EMFILE;
    QCOMPARE(RandomCode::GetRandNumBytes(Unsigned(buffer), 8), -1);
    COMPARE_LISTS(log->Messages(), SeedFailureLines(EMFILE));
    log->Clear();
    mock.openError = 0;
    mock.numbersFail = true;
    QCOMPARE(RandomCode::GetRandNumBytes(Unsigned(buffer), 8), -1);
    const QString message = QStringLiteral("GetRandNumBytes RAND_bytes failed");
    COMPARE_LISTS(log->Messages(), QStringList(message));
    QVERIFY(IsError(message));
}

void TestRandomCode::poolIsZeroUntilItIsFilled()
{
    QCOMPARE(poolAtStart, QByteArray(POOL_SIZE, '\0'));
    RandomCode::CreateRandomPool();
    const QByteArray first = Pool();
    QVERIFY(first != poolAtStart);
    QVERIFY(first.right(32) != QByteArray(32, '\0'));
    RandomCode::CreateRandomPool();
    QVERIFY(Pool() != first);
    COMPARE_LISTS(log->Messages(), QStringList());
}

void TestRandomCode::lengthOfThePoolIsLimited_data()
{
    QTest::addColumn<unsigned int>("length");
    QTest::addColumn<bool>("valid");
    QTest::newRow("0") << 0U << false;
    QTest::newRow("1") << 1U << true;
    QTest::newRow("256") << 256U << true;
    QTest::newRow("257") << 257U << false;
    QTest::newRow("highest") << 0xFFFFFFFFU << false;
}

void TestRandomCode::lengthOfThePoolIsLimited()
{
    QFETCH(unsigned int, length);
    QFETCH(bool, valid);
    const unsigned char* pool = RandomCode::GetRandomPool(length);
    QCOMPARE(pool, valid ? RandomCode::GetRandomPool(POOL_SIZE) : nullptr);
    // Both spaces are no-break spaces.
    const QString message = QStringLiteral("Input\u00A0number[%1]\u00A0error").arg(static_cast<int>(length));
    COMPARE_LISTS(log->Messages(), valid ? QStringList() : QStringList(message));
    QCOMPARE(IsError(message), !valid);
}

void TestRandomCode::poolThatCannotBeFilledIsLogged()
{
    mock.openError = EMFILE;
    RandomCode::CreateRandomPool();
    // The last space is a no-break space.
    const QString message = QStringLiteral("create random pool\u00A0error");
    COMPARE_LISTS(log->Messages(), SeedFailureLines(EMFILE) + QStringList(message));
    QVERIFY(IsError(message));
    QVERIFY(ReadAll(log->Path())
                .contains("create random pool\xC2\xA0"
                          "error"));
    QCOMPARE(Pool(), QByteArray(POOL_SIZE, '\0'));
}

void TestRandomCode::clearedMemoryContainsThePool()
{
    for (const int length : {1, 100, POOL_SIZE}) {
        QByteArray buffer(POOL_SIZE + 1, UNTOUCHED);
        RandomCode::ClearSenData(Unsigned(buffer), length);
        QCOMPARE(buffer, QByteArray(length, '\0') + QByteArray(POOL_SIZE + 1 - length, UNTOUCHED));
    }
    RandomCode::CreateRandomPool();
    QByteArray buffer(POOL_SIZE, UNTOUCHED);
    RandomCode::ClearSenData(Unsigned(buffer), POOL_SIZE);
    QCOMPARE(buffer, Pool());
    COMPARE_LISTS(log->Messages(), QStringList());
}

void TestRandomCode::memoryLargerThanThePoolIsFilledWithOnes()
{
    for (const int length : {POOL_SIZE + 1, 300}) {
        log->Clear();
        QByteArray buffer(301, UNTOUCHED);
        RandomCode::ClearSenData(Unsigned(buffer), length);
        QCOMPARE(buffer, QByteArray(length, '\1') + QByteArray(301 - length, UNTOUCHED));
        COMPARE_LISTS(log->Messages(),
                      QStringList(QStringLiteral("Input\u00A0number[%1]\u00A0error").arg(length)));
    }
}

void TestRandomCode::missingMemoryIsNotCleared_data()
{
    QTest::addColumn<bool>("hasMemory");
    QTest::addColumn<int>("length");
    QTest::newRow("no memory") << false << 8;
    QTest::newRow("no length") << true << 0;
    QTest::newRow("negative length") << true << -1;
}

void TestRandomCode::missingMemoryIsNotCleared()
{
    QFETCH(bool, hasMemory);
    QFETCH(int, length);
    QByteArray buffer(8, UNTOUCHED);
    RandomCode::ClearSenData(hasMemory ? Unsigned(buffer) : nullptr, length);
    QCOMPARE(buffer, QByteArray(8, UNTOUCHED));
    COMPARE_LISTS(log->Messages(), QStringList());
}

void TestRandomCode::failedPassesOfClearingAreLogged_data()
{
    QTest::addColumn<QList<bool>>("fillingFails");
    QTest::addColumn<bool>("copyingFails");
    QTest::addColumn<QStringList>("messages");
    QTest::addColumn<QByteArray>("content");
    const QString zeros = QStringLiteral("clear sensitive date error, using 0, len = 4");
    const QString ones = QStringLiteral("clear sensitive date error, using 1, len = 4");
    const QString copy = QStringLiteral("clear sensitive date error, using random number, len = 4");
    const QByteArray pool(4, '\0');
    QTest::newRow("zeros") << QList<bool>{true} << false << QStringList{zeros} << pool;
    QTest::newRow("ones") << QList<bool>{false, true} << false << QStringList{ones} << pool;
    QTest::newRow("copy") << QList<bool>() << true << QStringList{copy} << QByteArray(4, '\1');
    QTest::newRow("ones and copy") << QList<bool>{false, true} << true << QStringList{ones, copy} << pool;
    QTest::newRow("all") << QList<bool>{true, true} << true << QStringList{zeros, ones, copy}
                         << QByteArray(4, UNTOUCHED);
}

void TestRandomCode::failedPassesOfClearingAreLogged()
{
    QFETCH(QList<bool>, fillingFails);
    QFETCH(bool, copyingFails);
    QFETCH(QStringList, messages);
    mock.fillingFails = fillingFails;
    mock.copyingFails = copyingFails;
    QByteArray buffer(4, UNTOUCHED);
    RandomCode::ClearSenData(Unsigned(buffer), 4);
    COMPARE_LISTS(log->Messages(), messages);
    for (const QString& message : messages) {
        QVERIFY(IsError(message));
    }
    QTEST(buffer, "content");
}

void TestRandomCode::fileIsOverwrittenThreeTimesAndRemoved_data()
{
    QTest::addColumn<int>("size");
    QTest::newRow("one byte") << 1;
    QTest::newRow("some bytes") << 5000;
    QTest::newRow("largest") << LIMIT;
}

void TestRandomCode::fileIsOverwrittenThreeTimesAndRemoved()
{
    QFETCH(int, size);
    WriteAll(path, QByteArray(size, UNTOUCHED));
    SetMode(path, 0644);
    QList<QByteArray> passes;
    QList<mode_t> modes;
    mock.afterChmod = [this, &passes, &modes] {
        passes.append(ReadAll(path));
        modes.append(ModeOf(path));
        return 0;
    };
    QCOMPARE(RandomCode::SafeCoverRemove(Local(path)), 0);
    QVERIFY(!QFileInfo::exists(path));
    QCOMPARE(passes.size(), 3);
    QCOMPARE(passes.at(0), QByteArray(size, '\0'));
    QCOMPARE(passes.at(1), QByteArray(size, '\1'));
    QCOMPARE(passes.at(2).size(), size);
    if (size > 1) {
        QVERIFY(passes.at(2) != passes.at(1) && passes.at(2) != passes.at(0));
        QVERIFY(!passes.at(2).contains(QByteArray(100, UNTOUCHED)));
    }
    QCOMPARE(modes, QList<mode_t>({0600, 0600, 0600}));
    COMPARE_LISTS(log->Messages(), QStringList());
}

namespace {
/// Returns the bytes of a text that strace -xx has printed.
QByteArray Unescaped(const QString& shown)
{
    QString digits = shown;
    return QByteArray::fromHex(digits.remove(QStringLiteral("\\x")).toLatin1());
}

/// Returns the system calls on the file, except reads, each as a name with an argument.
QList<QByteArray> CallsOn(const QByteArray& file, const QByteArray& trace)
{
    const QRegularExpression openFile(
        QStringLiteral("^open(?:at)?\\([^\"]*\"([^\"]*)\", ([A-Z_|]+).*= (\\d+)"));
    const QRegularExpression useFile(QStringLiteral("^(\\w+)\\((\\d+)(?:, \"([^\"]*)\")?"));
    const QRegularExpression usePath(QStringLiteral("^(\\w+)\\((?:AT_FDCWD, )?\"([^\"]*)\"(?:, (\\w+))?"));
    const QRegularExpression sync(QStringLiteral("^(\\w*sync\\w*)\\("));
    QList<QByteArray> calls;
    QString descriptor;
    const QStringList lines = QString::fromLatin1(trace).split(QLatin1Char('\n'));
    for (const QString& line : lines) {
        const QRegularExpressionMatch opened = openFile.match(line);
        const QRegularExpressionMatch used = useFile.match(line);
        const QRegularExpressionMatch named = usePath.match(line);
        if (opened.hasMatch()) {
            if (Unescaped(opened.captured(1)) == file && !opened.captured(2).contains("O_RDONLY")) {
                descriptor = opened.captured(3);
                calls.append(opened.captured(2).contains("O_TRUNC") ? "open and truncate" : "open");
            }
        } else if (sync.match(line).hasMatch()) {
            calls.append("sync");
        } else if (used.hasMatch() && used.captured(2) == descriptor) {
            if (used.captured(1) == QLatin1String("close")) {
                descriptor.clear();
            }
            calls.append(used.captured(1).toLatin1() + ' ' + Unescaped(used.captured(3)));
        } else if (named.hasMatch() && Unescaped(named.captured(2)) == file) {
            const QString call = named.captured(1);
            calls.append(call.contains(QLatin1String("chmod"))    ? "chmod " + named.captured(3).toLatin1()
                         : call.contains(QLatin1String("unlink")) ? QByteArray("unlink")
                                                                  : call.toLatin1());
        }
    }
    return calls;
}
} // namespace

void TestRandomCode::erasureMakesThreePassesOnly()
{
    constexpr int SIZE = 300;
    WriteAll(path, QByteArray(SIZE, UNTOUCHED));
    const QString trace = directory->filePath(QStringLiteral("trace"));
    QProcess strace;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    // The leak sanitizer does not work under strace.
    environment.insert(QStringLiteral("ASAN_OPTIONS"), QStringLiteral("detect_leaks=0"));
    strace.setProcessEnvironment(environment);
    strace.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    strace.start(QStringLiteral("strace"),
                 {QStringLiteral("-o"), trace, QStringLiteral("-xx"), QStringLiteral("-s"),
                  QString::number(SIZE + 1), QStringLiteral("-e"),
                  QStringLiteral("trace=?open,?openat,?creat,?close,?write,?writev,?pwrite64,?ftruncate,"
                                 "?truncate,?chmod,?fchmod,?fchmodat,?unlink,?unlinkat,?rename,?renameat,"
                                 "?renameat2,?fsync,?fdatasync,?sync,?syncfs,?sync_file_range"),
                  QStringLiteral(COVERREMOVE), path});
    QVERIFY(strace.waitForFinished());
    QCOMPARE(strace.exitCode(), 0);
    QVERIFY(!QFileInfo::exists(path));
    const QList<QByteArray> calls = CallsOn(path.toLocal8Bit(), ReadAll(trace));
    QByteArray random;
    if (calls.size() == 13) {
        random = calls.at(9).mid(6);
    }
    QCOMPARE(random.size(), SIZE);
    QVERIFY(random != QByteArray(SIZE, random.at(0)));
    QList<QByteArray> expected;
    for (const QByteArray& content : {QByteArray(SIZE, '\0'), QByteArray(SIZE, '\1'), random}) {
        expected << "open and truncate"
                 << "write " + content << "close "
                 << "chmod 0600";
    }
    expected << "unlink";
    QCOMPARE(calls, expected);
}

void TestRandomCode::tooLargeFileIsKept()
{
    WriteAll(path, QByteArray(LIMIT + 1, UNTOUCHED));
    SetMode(path, 0644);
    QCOMPARE(RandomCode::SafeCoverRemove(Local(path)), -1);
    QVERIFY(ReadAll(path) == QByteArray(LIMIT + 1, UNTOUCHED));
    QCOMPARE(ModeOf(path), mode_t(0644));
    COMPARE_LISTS(log->Messages(), QStringList(QStringLiteral("FileSize fileLen:1048577")));
    QVERIFY(IsWarning(log->Messages().first()));
}

void TestRandomCode::emptyFileIsKept()
{
    WriteAll(path, QByteArray());
    QCOMPARE(RandomCode::SafeCoverRemove(Local(path)), WRITE_FILE_FAILED);
    QVERIFY(QFileInfo::exists(path));
    COMPARE_LISTS(log->Messages(), QStringList(QStringLiteral("SafeCoverData WriteToFile failed ret:105")));
    QVERIFY(IsError(log->Messages().first()));
}

void TestRandomCode::missingFileIsNotErased_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("missing") << QStringLiteral("missing");
    QTest::newRow("directory") << QStringLiteral("directory");
    QTest::newRow("dangling link") << QStringLiteral("dangling");
}

void TestRandomCode::missingFileIsNotErased()
{
    QFETCH(QString, name);
    QVERIFY(QDir().mkdir(directory->filePath(QStringLiteral("directory"))));
    QVERIFY(QFile::link(path, directory->filePath(QStringLiteral("dangling"))));
    const QString file = directory->filePath(name);
    QCOMPARE(RandomCode::SafeCoverRemove(Local(file)), -1);
    COMPARE_LISTS(log->Messages(), QStringList(QStringLiteral("filename:%1 not exist!").arg(file)));
    QVERIFY(IsWarning(log->Messages().first()));
    QVERIFY(QFileInfo(directory->filePath(QStringLiteral("directory"))).isDir());
    QVERIFY(QFileInfo(directory->filePath(QStringLiteral("dangling"))).isSymLink());
}

void TestRandomCode::unreadableFileCountsAsTooLarge()
{
    WriteAll(path, "text");
    SetMode(path, 0200);
    {
        const UnprivilegedUser user;
        QCOMPARE(RandomCode::SafeCoverRemove(Local(path)), -1);
    }
    SetMode(path, 0600);
    QCOMPARE(ReadAll(path), QByteArray("text"));
    COMPARE_LISTS(log->Messages(), QStringList({QStringLiteral("ifstream open failed!"),
                                                QStringLiteral("FileSize fileLen:-1")}));
    QVERIFY(IsWarning(log->Messages().last()));
}

void TestRandomCode::unwritableFileIsKept()
{
    WriteAll(path, "text");
    SetMode(path, 0400);
    const UnprivilegedUser user;
    QCOMPARE(RandomCode::SafeCoverRemove(Local(path)), WRITE_FILE_FAILED);
    QCOMPARE(ReadAll(path), QByteArray("text"));
    QCOMPARE(ModeOf(path), mode_t(0400));
    COMPARE_LISTS(log->Messages(), QStringList(QStringLiteral("SafeCoverData WriteToFile failed ret:105")));
}

void TestRandomCode::secondPassThatFailsIsLogged()
{
    WriteAll(path, "text");
    mock.afterChmod = [this] {
        return QFile::remove(path) ? 0 : -1;
    };
    QCOMPARE(RandomCode::SafeCoverRemove(Local(path)), INVALID_FILE_PATH);
    COMPARE_LISTS(log->Messages(), QStringList(QStringLiteral("SafeCoverData WriteToFile failed ret:102")));
    QVERIFY(IsError(log->Messages().first()));
}

void TestRandomCode::passWithoutPermissionsFails()
{
    WriteAll(path, "text");
    int calls = 0;
    mock.afterChmod = [&calls] {
        return ++calls == 2 ? -1 : 0;
    };
    QCOMPARE(RandomCode::SafeCoverRemove(Local(path)), WRITE_FILE_FAILED);
    // The file keeps the bytes of the second pass.
    QCOMPARE(ReadAll(path), QByteArray(4, '\1'));
    QCOMPARE(calls, 2);
    COMPARE_LISTS(log->Messages(), QStringList(QStringLiteral("SafeCoverData WriteToFile failed ret:105")));
}

void TestRandomCode::randomPassWithoutRandomBytesFails()
{
    WriteAll(path, "text");
    mock.openError = EMFILE;
    QCOMPARE(RandomCode::SafeCoverRemove(Local(path)), -1);
    QCOMPARE(ReadAll(path), QByteArray(4, '\1'));
    const QString message = QStringLiteral("SafeCoverDataRandom GetAuthentRandomNum failed ret:-1");
    COMPARE_LISTS(log->Messages(), SeedFailureLines(EMFILE) + QStringList(message));
    QVERIFY(IsError(message));
}

void TestRandomCode::randomPassThatCannotBeWrittenFails()
{
    WriteAll(path, "text");
    mock.beforeNumbers = [this] {
        QFile::remove(path);
    };
    QCOMPARE(RandomCode::SafeCoverRemove(Local(path)), INVALID_FILE_PATH);
    COMPARE_LISTS(log->Messages(),
                  QStringList(QStringLiteral("SafeCoverDataRandom WriteToFile failed ret:102")));
    QVERIFY(IsError(log->Messages().first()));
}

void TestRandomCode::fileThatCannotBeUnlinkedIsOverwritten()
{
    constexpr int SIZE = 100;
    WriteAll(path, QByteArray(SIZE, UNTOUCHED));
    SetMode(directory->path(), 0500);
    int result = 0;
    {
        const UnprivilegedUser user;
        result = RandomCode::SafeCoverRemove(Local(path));
    }
    SetMode(directory->path(), 0700);
    QCOMPARE(result, -1);
    COMPARE_LISTS(log->Messages(), QStringList(QStringLiteral("unlink filename:%1 failed").arg(path)));
    QVERIFY(IsWarning(log->Messages().first()));
    const QByteArray remaining = ReadAll(path);
    QCOMPARE(remaining.size(), SIZE);
    QVERIFY(remaining != QByteArray(SIZE, remaining.at(0)));
}

void TestRandomCode::targetOfALinkIsOverwritten()
{
    constexpr int SIZE = 100;
    const QString link = directory->filePath(QStringLiteral("link"));
    WriteAll(path, QByteArray(SIZE, UNTOUCHED));
    QVERIFY(QFile::link(path, link));
    QCOMPARE(RandomCode::SafeCoverRemove(Local(link)), 0);
    QVERIFY(!QFileInfo(link).isSymLink());
    QCOMPARE(ReadAll(path).size(), SIZE);
    QVERIFY(!ReadAll(path).contains(QByteArray(SIZE / 2, UNTOUCHED)));
}

QTEST_GUILESS_MAIN(TestRandomCode)
#include "TestRandomCode.moc"
