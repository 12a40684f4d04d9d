#include <QTest>
#include <array>
#include <cerrno>
#include <string>

#include "platform/BoundedFunctions.h"

namespace {
constexpr char UNTOUCHED = '#';
using Buffer = std::array<char, 8>;

Buffer Fresh()
{
    Buffer buffer{};
    buffer.fill(UNTOUCHED);
    return buffer;
}

QByteArray Bytes(const Buffer& buffer)
{
    return QByteArray(buffer.data(), static_cast<int>(buffer.size()));
}

__attribute__((format(printf, 4, 5))) int ByList(char* dest, std::size_t destMax, std::size_t count,
                                                 const char* format, ...)
{
    va_list args;
    va_start(args, format);
    const int result = vsnprintf_s(dest, destMax, count, format, args);
    va_end(args);
    return result;
}
} // namespace

class TestBoundedFunctions : public QObject
{
    Q_OBJECT

private slots:
    void fillingStaysInBounds_data();
    void fillingStaysInBounds();
    void fillingNullFails();
    void copyingStaysInBounds_data();
    void copyingStaysInBounds();
    void copyingFromOrToNullFails();
    void textThatDoesNotFitFails_data();
    void textThatDoesNotFitFails();
    void formattingToNullFails();
    void invalidFormatFails();
    void argumentsAreFormatted();
};

void TestBoundedFunctions::fillingStaysInBounds_data()
{
    QTest::addColumn<int>("limit");
    QTest::addColumn<int>("count");
    QTest::addColumn<bool>("works");
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("all") << 8 << 8 << true << QByteArray("xxxxxxxx");
    QTest::newRow("some") << 8 << 3 << true << QByteArray("xxx#####");
    QTest::newRow("none") << 8 << 0 << true << QByteArray("########");
    QTest::newRow("up to the limit") << 4 << 4 << true << QByteArray("xxxx####");
    QTest::newRow("beyond the limit") << 4 << 5 << false << QByteArray("########");
    QTest::newRow("no room") << 0 << 1 << false << QByteArray("########");
}

void TestBoundedFunctions::fillingStaysInBounds()
{
    QFETCH(int, limit);
    QFETCH(int, count);
    QFETCH(bool, works);
    Buffer buffer = Fresh();
    const int result =
        memset_s(buffer.data(), static_cast<std::size_t>(limit), 'x', static_cast<std::size_t>(count));
    QCOMPARE(result == 0, works);
    QTEST(Bytes(buffer), "content");
}

void TestBoundedFunctions::fillingNullFails()
{
    QVERIFY(memset_s(nullptr, 8, 0, 8) != 0);
}

void TestBoundedFunctions::copyingStaysInBounds_data()
{
    QTest::addColumn<int>("limit");
    QTest::addColumn<int>("count");
    QTest::addColumn<bool>("works");
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("all") << 8 << 8 << true << QByteArray("abcdefgh");
    QTest::newRow("some") << 8 << 3 << true << QByteArray("abc#####");
    QTest::newRow("none") << 8 << 0 << true << QByteArray("########");
    QTest::newRow("up to the limit") << 4 << 4 << true << QByteArray("abcd####");
    QTest::newRow("beyond the limit") << 4 << 5 << false << QByteArray("########");
    QTest::newRow("no room") << 0 << 1 << false << QByteArray("########");
}

void TestBoundedFunctions::copyingStaysInBounds()
{
    QFETCH(int, limit);
    QFETCH(int, count);
    QFETCH(bool, works);
    Buffer buffer = Fresh();
    const int result =
        memcpy_s(buffer.data(), static_cast<std::size_t>(limit), "abcdefgh", static_cast<std::size_t>(count));
    QCOMPARE(result == 0, works);
    QTEST(Bytes(buffer), "content");
}

void TestBoundedFunctions::copyingFromOrToNullFails()
{
    Buffer buffer = Fresh();
    QVERIFY(memcpy_s(nullptr, buffer.size(), "abcdefgh", 1) != 0);
    QVERIFY(memcpy_s(buffer.data(), buffer.size(), nullptr, 1) != 0);
    QCOMPARE(Bytes(buffer), Bytes(Fresh()));
}

void TestBoundedFunctions::textThatDoesNotFitFails_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<int>("limit");
    QTest::addColumn<int>("count");
    QTest::addColumn<bool>("works");
    QTest::newRow("empty") << QByteArray() << 8 << 7 << true;
    QTest::newRow("shorter") << QByteArray("abc") << 8 << 7 << true;
    QTest::newRow("as long as the buffer allows") << QByteArray("abcdefg") << 8 << 7 << true;
    QTest::newRow("one byte more than the buffer allows") << QByteArray("abcdefgh") << 8 << 7 << false;
    QTest::newRow("as long as the count") << QByteArray("abc") << 8 << 3 << true;
    QTest::newRow("one byte more than the count") << QByteArray("abcd") << 8 << 3 << false;
    QTest::newRow("count larger than the buffer, text shorter") << QByteArray("abc") << 4 << 100 << true;
    QTest::newRow("count and text larger than the buffer") << QByteArray("abcd") << 4 << 100 << false;
    QTest::newRow("buffer for the terminator only") << QByteArray() << 1 << 0 << true;
    QTest::newRow("text in a buffer for the terminator only") << QByteArray("a") << 1 << 0 << false;
}

void TestBoundedFunctions::textThatDoesNotFitFails()
{
    QFETCH(QByteArray, text);
    QFETCH(int, limit);
    QFETCH(int, count);
    QFETCH(bool, works);
    for (const auto format : {&snprintf_s, &ByList}) {
        Buffer buffer = Fresh();
        const int result = format(buffer.data(), static_cast<std::size_t>(limit),
                                  static_cast<std::size_t>(count), "%s", text.constData());
        if (works) {
            QCOMPARE(result, text.size());
            QCOMPARE(QByteArray(buffer.data()), text);
        } else {
            QCOMPARE(result, -1);
            QCOMPARE(QByteArray(buffer.data()), QByteArray());
        }
        QCOMPARE(Bytes(buffer).mid(limit), Bytes(Fresh()).mid(limit));
    }
}

void TestBoundedFunctions::formattingToNullFails()
{
    Buffer buffer = Fresh();
    const char* const noFormat = nullptr;
    const char* const text = "a";
    for (const auto format : {&snprintf_s, &ByList}) {
        QCOMPARE(format(nullptr, 8, 7, "%s", text), -1);
        QCOMPARE(format(buffer.data(), 0, 0, "%s", text), -1);
        QCOMPARE(format(buffer.data(), 8, 7, noFormat, text), -1);
    }
    QCOMPARE(Bytes(buffer), Bytes(Fresh()));
}

void TestBoundedFunctions::invalidFormatFails()
{
    Buffer buffer = Fresh();
    // A wide character that no encoding can represent.
    const std::wstring unwritable(1, static_cast<wchar_t>(0x80000000));
    QCOMPARE(snprintf_s(buffer.data(), buffer.size(), buffer.size() - 1, "%ls", unwritable.c_str()), -1);
}

void TestBoundedFunctions::argumentsAreFormatted()
{
    std::array<char, 64> buffer{};
    QCOMPARE(snprintf_s(buffer.data(), buffer.size(), buffer.size() - 1, "%s/%d%%%06ld", "a", -5, 42L), 11);
    QCOMPARE(QByteArray(buffer.data()), QByteArray("a/-5%000042"));
}

QTEST_GUILESS_MAIN(TestBoundedFunctions)
#include "TestBoundedFunctions.moc"
