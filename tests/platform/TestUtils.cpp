#include <QFileInfo>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>
#include <cerrno>
#include <csignal>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/Utils.h"
#include "support/CapturedLog.h"
#include "support/Environment.h"

using Brevora::Utils;

namespace {
bool fillingFails = false;

/// Prevents this process from opening files as long as the object exists.
class NoDescriptors
{
public:
    NoDescriptors()
    {
        getrlimit(RLIMIT_NOFILE, &before);
        const rlimit none{0, before.rlim_max};
        setrlimit(RLIMIT_NOFILE, &none);
    }
    ~NoDescriptors() { setrlimit(RLIMIT_NOFILE, &before); }
    NoDescriptors(const NoDescriptors&) = delete;
    NoDescriptors& operator=(const NoDescriptors&) = delete;

private:
    rlimit before{};
};

using Validator = bool (*)(const std::string&);

/// The length of a text at which std::regex overflows the stack, because it recurses for each byte.
constexpr std::size_t LONG = std::size_t{1024} * 1024;

std::string Repeated(const std::string& chunk, std::size_t length)
{
    std::string text;
    while (text.size() < length) {
        text += chunk;
    }
    return text;
}

using RunFunction = std::string (*)(const std::string&);

/// Adds each row for both functions that run a command.
void AddForBoth(const char* name, const QByteArray& command, const QByteArray& output)
{
    QTest::addRow("%s, Utils", name) << &Utils::ExecutePopenAndReturn << command << output;
    QTest::addRow("%s, RunCommand", name) << &Velodesk::RunCommand << command << output;
}
} // namespace
Q_DECLARE_METATYPE(RunFunction)
Q_DECLARE_METATYPE(Validator)
Q_DECLARE_METATYPE(std::string)

int RealMemset(void* dest, std::size_t destMax, int value,
               std::size_t count) __asm__("__real__Z8memset_sPvmim");
int WrappedMemset(void* dest, std::size_t destMax, int value,
                  std::size_t count) __asm__("__wrap__Z8memset_sPvmim");

int WrappedMemset(void* dest, std::size_t destMax, int value, std::size_t count)
{
    return fillingFails ? EINVAL : RealMemset(dest, destMax, value, count);
}

class TestUtils : public QObject
{
    Q_OBJECT

private slots:
    void splitKeepsEmptyPartsExceptTheLast_data();
    void splitKeepsEmptyPartsExceptTheLast();
    void everyOccurrenceIsDeleted_data();
    void everyOccurrenceIsDeleted();
    void deletingAnEmptyTextLoopsForever();
    void bytesBecomeHexadecimalPairs_data();
    void bytesBecomeHexadecimalPairs();
    void everyByteHasItsPair();
    void deviceIdentifierIsValidated_data();
    void deviceIdentifierIsValidated();
    void everyByteIsValidated_data();
    void everyByteIsValidated();
    void macIsValidated_data();
    void macIsValidated();
    void wordIsValidated_data();
    void wordIsValidated();
    void numberIsValidated_data();
    void numberIsValidated();
    void addressIsValidated_data();
    void addressIsValidated();
    void everyNumberOfAnAddressIsValidated();
    void enginePathIsReturned();
    void longTextIsValidatedLikeAShortOne_data();
    void longTextIsValidatedLikeAShortOne();

    void outputIsTrimmed_data();
    void outputIsTrimmed();
    void longOutputIsReturnedCompletely_data();
    void longOutputIsReturnedCompletely();
    void zeroByteHidesTheRestOfAChunk_data();
    void zeroByteHidesTheRestOfAChunk();
    void rejectedCommandIsNotRun_data();
    void rejectedCommandIsNotRun();
    void failedPipeReturnsAnEmptyText();
    void failedBufferClearReturnsAnEmptyText();
    void commandGetsTheEnvironment();
    void nothingIsLogged();
    void identifierComesFromTheKernel();
    void identifierIsEmptyOnFailure();
};

void TestUtils::splitKeepsEmptyPartsExceptTheLast_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("delimiter");
    QTest::addColumn<QStringList>("parts");
    const QString slash = QStringLiteral("/");
    const auto add = [&slash](const char* text, const QStringList& parts) {
        QTest::newRow(*text == '\0' ? "nothing" : text) << QString::fromLatin1(text) << slash << parts;
    };
    add("", {});
    add("/", {""});
    add("//", {"", ""});
    add("a", {"a"});
    add("/a", {"", "a"});
    add("a/", {"a"});
    add("a//", {"a", ""});
    add("a/b", {"a", "b"});
    add("a//b", {"a", "", "b"});
    add("/a/b/", {"", "a", "b"});
    add(" / ", {" ", " "});
    QTest::newRow("no delimiter") << QStringLiteral("a/b") << QString() << QStringList({"a/b"});
    QTest::newRow("neither text nor delimiter") << QString() << QString() << QStringList();
    QTest::newRow("long delimiter") << QStringLiteral("a--b---c--") << QStringLiteral("--")
                                    << QStringList({"a", "b", "-c"});
    QTest::newRow("delimiter alone") << QStringLiteral("--") << QStringLiteral("--") << QStringList({""});
    QTest::newRow("longer than the text")
        << QStringLiteral("-") << QStringLiteral("--") << QStringList({"-"});
}

void TestUtils::splitKeepsEmptyPartsExceptTheLast()
{
    QFETCH(QString, text);
    QFETCH(QString, delimiter);
    QStringList parts;
    for (const std::string& chunk : Utils::Split(text.toStdString(), delimiter.toStdString())) {
        parts.append(QString::fromStdString(chunk));
    }
    QTEST(parts, "parts");
}

void TestUtils::everyOccurrenceIsDeleted_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("chunk");
    QTest::addColumn<QString>("rest");
    const auto add = [](const char* text, const char* chunk, const char* rest) {
        QTest::addRow("'%s' without '%s'", text, chunk)
            << QString::fromLatin1(text) << QString::fromLatin1(chunk) << QString::fromLatin1(rest);
    };
    add("aabb", "ab", "");
    add("", "a", "");
    add("abc", "x", "abc");
    add("abc", "abcd", "abc");
    add("abcabc", "b", "acac");
    add("abab", "ab", "");
    add("aaa", "aa", "a");
    add("xaaabbby", "ab", "xy");
    add("Ab", "ab", "Ab");
}

void TestUtils::everyOccurrenceIsDeleted()
{
    QFETCH(QString, text);
    QFETCH(QString, chunk);
    QTEST(QString::fromStdString(Utils::DeleteSubStr(text.toStdString(), chunk.toStdString())), "rest");
}

void TestUtils::deletingAnEmptyTextLoopsForever()
{
    const pid_t child = fork();
    if (child == 0) {
        const rlimit aSecond{1, 1};
        setrlimit(RLIMIT_CPU, &aSecond);
        Utils::DeleteSubStr("text", "");
        _exit(0);
    }
    int status = 0;
    QCOMPARE(waitpid(child, &status, 0), child);
    // The system kills the child at its processor time limit.
    QVERIFY(WIFSIGNALED(status));
    QCOMPARE(WTERMSIG(status), SIGKILL);
}

void TestUtils::longTextIsValidatedLikeAShortOne_data()
{
    QTest::addColumn<Validator>("isValid");
    QTest::addColumn<std::string>("text");
    QTest::addColumn<bool>("valid");
    const std::string digits(LONG, '7');
    const std::string word = Repeated("aZ0_", LONG);
    QTest::newRow("number") << &Utils::IsNumberOnly << digits << true;
    QTest::newRow("number with a letter at the end") << &Utils::IsNumberOnly << digits + "a" << false;
    QTest::newRow("word") << &Utils::IsStringAndNumberOnly << word << true;
    QTest::newRow("word with a hyphen at the end") << &Utils::IsStringAndNumberOnly << word + "-" << false;
    QTest::newRow("identifier") << &Utils::IsValidUDID << word << false;
    QTest::newRow("MAC") << &Utils::IsMacValid << Repeated("AA:", LONG) << false;
    QTest::newRow("MAC of digits") << &Utils::IsMacValid << digits << false;
    QTest::newRow("address of digits") << &Utils::IsIpValid << digits << false;
    QTest::newRow("address of dots") << &Utils::IsIpValid << std::string(LONG, '.') << false;
    QTest::newRow("address of too many numbers") << &Utils::IsIpValid << Repeated("1.", LONG) << false;
    QTest::newRow("address with a long end") << &Utils::IsIpValid << "1.1.1." + digits << false;
}

void TestUtils::longTextIsValidatedLikeAShortOne()
{
    QFETCH(Validator, isValid);
    QFETCH(std::string, text);
    QFETCH(bool, valid);
    QCOMPARE(isValid(text), valid);
}

void TestUtils::bytesBecomeHexadecimalPairs_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("pairs");
    QTest::newRow("nothing") << QByteArray() << QByteArray();
    QTest::newRow("leading zero, high bit") << QByteArray("\x0A\xFF") << QByteArray("0aff");
    QTest::newRow("zero bytes") << QByteArray("\0\1\0", 3) << QByteArray("000100");
    QTest::newRow("text") << QByteArray("Velo") << QByteArray("56656c6f");
}

void TestUtils::bytesBecomeHexadecimalPairs()
{
    QFETCH(QByteArray, text);
    QTEST(QByteArray::fromStdString(Utils::String2HexString(text.toStdString())), "pairs");
}

void TestUtils::everyByteHasItsPair()
{
    QByteArray bytes;
    for (int byte = 0; byte < 256; ++byte) {
        bytes.append(static_cast<char>(byte));
    }
    QCOMPARE(QByteArray::fromStdString(Utils::String2HexString(bytes.toStdString())), bytes.toHex());
}

void TestUtils::deviceIdentifierIsValidated_data()
{
    QTest::addColumn<QByteArray>("id");
    QTest::addColumn<bool>("valid");
    QTest::newRow("empty") << QByteArray() << true;
    QTest::newRow("all classes") << QByteArray("aZ09-_") << true;
    QTest::newRow("64 bytes") << QByteArray(64, 'a') << true;
    QTest::newRow("65 bytes") << QByteArray(65, 'a') << false;
    QTest::newRow("invalid first byte") << QByteArray(".abc") << false;
    QTest::newRow("invalid last byte") << QByteArray("abc ") << false;
    QTest::newRow("not ASCII") << QByteArray("\xc3\xa4") << false;
    QTest::newRow("zero byte") << QByteArray("a\0b", 3) << false;
}

void TestUtils::deviceIdentifierIsValidated()
{
    QFETCH(QByteArray, id);
    QTEST(Utils::IsValidUDID(id.toStdString()), "valid");
}

void TestUtils::everyByteIsValidated_data()
{
    QTest::addColumn<Validator>("isValid");
    QTest::addColumn<std::string>("before");
    QTest::addColumn<std::string>("good");
    const std::string digits = "0123456789";
    const std::string word = digits + "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ_";
    QTest::newRow("device identifier") << &Utils::IsValidUDID << std::string() << word + "-";
    QTest::newRow("MAC") << &Utils::IsMacValid << std::string("00:00:00:00:00:1") << digits + "abcdefABCDEF";
    QTest::newRow("word") << &Utils::IsStringAndNumberOnly << std::string() << word;
    QTest::newRow("number") << &Utils::IsNumberOnly << std::string() << digits;
    QTest::newRow("address") << &Utils::IsIpValid << std::string("1.1.1.") << digits;
}

void TestUtils::everyByteIsValidated()
{
    QFETCH(Validator, isValid);
    QFETCH(std::string, before);
    QFETCH(std::string, good);
    for (int number = 0; number < 256; ++number) {
        const char byte = static_cast<char>(number);
        QVERIFY2(isValid(before + byte) == (good.find(byte) != std::string::npos),
                 qPrintable(QString::number(number)));
    }
}

void TestUtils::macIsValidated_data()
{
    QTest::addColumn<QString>("mac");
    QTest::addColumn<bool>("valid");
    const auto add = [](const char* mac, bool valid) {
        QTest::newRow(*mac == '\0' ? "nothing" : mac) << QString::fromLatin1(mac) << valid;
    };
    add("AA:bb:00:11:22:33", true);
    add("00:00:00:00:00:01", true);
    add("fF:ff:ff:ff:ff:ff", true);
    add("FF:FF:FF:FF:FF:fF", true);
    add("", false);
    add("00:00:00:00:00:00", false);
    add("FF:FF:FF:FF:FF:FF", false);
    add("ff:ff:ff:ff:ff:ff", false);
    add("AA:bb:00:11:22", false);
    add("AA:bb:00:11:22:", false);
    add("AA:bb:00:11:22:3", false);
    add("AA:bb:00:11:22:33:44", false);
    add("AA:bb:00:11:22:333", false);
    add("AA-bb-00-11-22-33", false);
    add("AAbb00112233", false);
    add("GA:bb:00:11:22:33", false);
    add("AA:bb:00:11:22:3g", false);
    add(" AA:bb:00:11:22:33", false);
    add("AA:bb:00:11:22:33 ", false);
    add("AA:bb:00:11:22:33\n", false);
}

void TestUtils::macIsValidated()
{
    QFETCH(QString, mac);
    QTEST(Utils::IsMacValid(mac.toStdString()), "valid");
}

void TestUtils::wordIsValidated_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<bool>("valid");
    QTest::newRow("empty") << QByteArray() << false;
    QTest::newRow("all classes") << QByteArray("aZ09_") << true;
    QTest::newRow("underscore") << QByteArray("_") << true;
    QTest::newRow("hyphen") << QByteArray("a-b") << false;
    QTest::newRow("blank") << QByteArray("a b") << false;
    QTest::newRow("line feed") << QByteArray("ab\n") << false;
    QTest::newRow("not ASCII") << QByteArray("\xc3\xa4") << false;
}

void TestUtils::wordIsValidated()
{
    QFETCH(QByteArray, text);
    QTEST(Utils::IsStringAndNumberOnly(text.toStdString()), "valid");
}

void TestUtils::numberIsValidated_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<bool>("valid");
    QTest::newRow("empty") << QByteArray() << false;
    QTest::newRow("all digits") << QByteArray("0123456789") << true;
    QTest::newRow("more than any integer") << QByteArray(40, '9') << true;
    QTest::newRow("sign") << QByteArray("-1") << false;
    QTest::newRow("point") << QByteArray("1.0") << false;
    QTest::newRow("letter") << QByteArray("1a") << false;
    QTest::newRow("blank") << QByteArray(" 1") << false;
    QTest::newRow("line feed") << QByteArray("1\n") << false;
}

void TestUtils::numberIsValidated()
{
    QFETCH(QByteArray, text);
    QTEST(Utils::IsNumberOnly(text.toStdString()), "valid");
}

void TestUtils::addressIsValidated_data()
{
    QTest::addColumn<QString>("ip");
    QTest::addColumn<bool>("valid");
    const auto add = [](const char* ip, bool valid) {
        QTest::newRow(*ip == '\0' ? "nothing" : ip) << QString::fromLatin1(ip) << valid;
    };
    add("1.0.0.0", true);
    add("192.168.1.1", true);
    add("255.255.255.255", true);
    add("", false);
    add("0.1.1.1", false);
    add("1.1.1.256", false);
    add("01.1.1.1", false);
    add("1.1.1.00", false);
    add("1.1.1", false);
    add("1.1.1.", false);
    add("1.1.1.1.", false);
    add("1.1.1.1.1", false);
    add(".1.1.1", false);
    add("1,1,1,1", false);
    add("1.1.1.-1", false);
    add("1.1.1.a", false);
    add(" 1.1.1.1", false);
    add("1.1.1.1\n", false);
    add("1111", false);
}

void TestUtils::addressIsValidated()
{
    QFETCH(QString, ip);
    QTEST(Utils::IsIpValid(ip.toStdString()), "valid");
}

void TestUtils::everyNumberOfAnAddressIsValidated()
{
    for (int place = 0; place < 4; ++place) {
        for (int number = 0; number < 1000; ++number) {
            QStringList numbers{"7", "7", "7", "7"};
            numbers[place] = QString::number(number);
            const QString ip = numbers.join(QLatin1Char('.'));
            const bool valid = number <= 255 && (place > 0 || number > 0);
            QVERIFY2(Utils::IsIpValid(ip.toStdString()) == valid, qPrintable(ip));
        }
    }
}

void TestUtils::enginePathIsReturned()
{
    QCOMPARE(Utils::mVelodeskFilePath, std::string("/opt/apps/com.zelmora.velodesk/files/tandra/"));
}

void TestUtils::outputIsTrimmed_data()
{
    QTest::addColumn<RunFunction>("run");
    QTest::addColumn<QByteArray>("command");
    QTest::addColumn<QByteArray>("output");
    const auto prints = [](const QByteArray& text, const QByteArray& output) {
        AddForBoth(("printf '" + text + "'").constData(), "printf '" + text + "'", output);
    };
    prints("a", "a");
    prints("a\\n", "a");
    prints("  a\\n", "a");
    prints("  a  \\n", "a");
    prints("a  \\n  ", "a");
    prints("a\\nb", "ab");
    prints("a\\nb\\n", "a\nb");
    prints("a\\n\\n", "a\n");
    prints("\\n", "");
    prints("\\n\\na", "\na");
    prints(" \\n \\n", "\n");
    prints("     ", "");
    prints("   \\n", "");
    prints("\\ta\\t\\n", "\ta\t");
    prints("\\ra\\r\\n", "\ra\r");
    prints("a  b", "a  b");
    prints("", "");
    AddForBoth("nothing to run", "", "");
    AddForBoth("no output", "true", "");
    AddForBoth("error output alone", "echo wrong >&2 2>/dev/null | cat", "");
    AddForBoth("a shell's own words", "for i in 1 2 3; do echo $i; done | tail -n 1", "3");
    AddForBoth("exit code after output", "echo text; exit 1", "");
    AddForBoth("highest exit code", "echo text; exit 255", "");
    AddForBoth("exit code 0", "echo text; exit 0", "text");
    AddForBoth("no such program", "no-such-program 2>/dev/null", "");
    // If a signal ends the command, the exit code is 0.
    AddForBoth("killed after output", "echo text; kill -9 $$", "text");
}

void TestUtils::outputIsTrimmed()
{
    QFETCH(RunFunction, run);
    QFETCH(QByteArray, command);
    QTEST(QByteArray::fromStdString(run(command.toStdString())), "output");
}

void TestUtils::longOutputIsReturnedCompletely_data()
{
    QTest::addColumn<RunFunction>("run");
    QTest::addColumn<QByteArray>("command");
    QTest::addColumn<QByteArray>("output");
    for (const int length : {1022, 1023, 1024, 1025, 1026, 1027, 2046, 2050, 2051, 100000}) {
        const QByteArray number = QByteArray::number(length);
        const QByteArray line = "head -c " + number + " /dev/zero | tr '\\0' x";
        const QByteArray text(length, 'x');
        AddForBoth((number + " bytes").constData(), line, text);
        AddForBoth((number + " bytes and a line feed").constData(), line + "; echo", text);
        AddForBoth((number + " bytes, twice").constData(), line + "; echo; " + line + "; echo",
                   text + "\n" + text);
    }
}

void TestUtils::longOutputIsReturnedCompletely()
{
    QFETCH(RunFunction, run);
    QFETCH(QByteArray, command);
    QFETCH(QByteArray, output);
    const QByteArray actual = QByteArray::fromStdString(run(command.toStdString()));
    QCOMPARE(actual.size(), output.size());
    QVERIFY(actual == output);
}

void TestUtils::zeroByteHidesTheRestOfAChunk_data()
{
    QTest::addColumn<RunFunction>("run");
    QTest::addColumn<int>("chunk");
    QTest::newRow("Utils") << &Utils::ExecutePopenAndReturn << 1025;
    QTest::newRow("RunCommand") << &Velodesk::RunCommand << 1023;
}

void TestUtils::zeroByteHidesTheRestOfAChunk()
{
    QFETCH(RunFunction, run);
    QFETCH(int, chunk);
    const auto actual = [run](int length) {
        const std::string line =
            "head -c " + std::to_string(length) + " /dev/zero | tr '\\0' x; printf '\\000yz'";
        return QByteArray::fromStdString(run(line));
    };
    // The zero byte is the last of a chunk, so the next chunk begins after it.
    QVERIFY(actual(chunk - 1) == QByteArray(chunk - 1, 'x') + "yz");
    // The zero byte is the second last of a chunk.
    QVERIFY(actual(chunk - 2) == QByteArray(chunk - 2, 'x') + "z");
}

void TestUtils::rejectedCommandIsNotRun_data()
{
    QTest::addColumn<RunFunction>("run");
    QTest::addColumn<QByteArray>("command");
    QTest::addColumn<QByteArray>("output");
    for (const char* command :
         {"ls ./", "ls ../", "./program", "../program", "ls /a./b", "ls a../b", "ls /tmp/../tmp"}) {
        AddForBoth(command, QByteArray("echo seen; echo mark > %1; ") + command, QByteArray());
    }
    AddForBoth("dot and slash separated", "echo seen; echo mark > %1; echo . / ..", "seen\n. / ..");
    AddForBoth("slash and dot", "echo seen; echo mark > %1; echo /.", "seen\n/.");
}

void TestUtils::rejectedCommandIsNotRun()
{
    QFETCH(RunFunction, run);
    QFETCH(QByteArray, command);
    QFETCH(QByteArray, output);
    const QTemporaryDir directory;
    const QString mark = directory.filePath(QStringLiteral("mark"));
    command.replace("%1", mark.toLocal8Bit());
    QCOMPARE(QByteArray::fromStdString(run(command.toStdString())), output);
    QCOMPARE(QFileInfo::exists(mark), !output.isEmpty());
}

void TestUtils::failedPipeReturnsAnEmptyText()
{
    std::string byUtils = "text";
    std::string byCommand = "text";
    {
        const NoDescriptors none;
        byUtils = Utils::ExecutePopenAndReturn("echo text");
        byCommand = Velodesk::RunCommand("echo text");
    }
    QCOMPARE(byUtils, std::string());
    QCOMPARE(byCommand, std::string());
}

void TestUtils::failedBufferClearReturnsAnEmptyText()
{
    fillingFails = true;
    const std::string byUtils = Utils::ExecutePopenAndReturn("echo text");
    const std::string silent = Utils::ExecutePopenAndReturn("true");
    const std::string byCommand = Velodesk::RunCommand("echo text");
    fillingFails = false;
    QCOMPARE(byUtils, std::string());
    QCOMPARE(silent, std::string());
    // RunCommand() clears its buffer without memset_s().
    QCOMPARE(byCommand, std::string("text"));
    // No child process remains.
    QCOMPARE(waitpid(-1, nullptr, WNOHANG), -1);
}

void TestUtils::commandGetsTheEnvironment()
{
    const Variable variable("OF_THIS_TEST", "value");
    QCOMPARE(Utils::ExecutePopenAndReturn("echo $OF_THIS_TEST"), std::string("value"));
    QCOMPARE(Velodesk::RunCommand("echo $OF_THIS_TEST"), std::string("value"));
}

void TestUtils::nothingIsLogged()
{
    const CapturedLog log;
    for (const char* command : {"", "./", "exit 1", "echo text"}) {
        Utils::ExecutePopenAndReturn(command);
        Velodesk::RunCommand(command);
    }
    COMPARE_LISTS(log.Messages(), QStringList());
}

void TestUtils::identifierComesFromTheKernel()
{
    const QRegularExpression pattern(
        QStringLiteral("^[0-9a-f]{8}-[0-9a-f]{4}-4[0-9a-f]{3}-[89ab][0-9a-f]{3}-[0-9a-f]{12}\\z"));
    const QString one = QString::fromStdString(Utils::GenerateUUID());
    const QString two = QString::fromStdString(Utils::GenerateUUID());
    QVERIFY2(pattern.match(one).hasMatch(), qPrintable(one));
    QVERIFY2(pattern.match(two).hasMatch(), qPrintable(two));
    QVERIFY(one != two);
}

void TestUtils::identifierIsEmptyOnFailure()
{
    const Variable path("PATH", "/nowhere");
    QCOMPARE(Utils::GenerateUUID(), std::string());
}

QTEST_GUILESS_MAIN(TestUtils)
#include "TestUtils.moc"
