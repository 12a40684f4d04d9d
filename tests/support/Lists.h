#pragma once

#include <QStringList>
#include <QTest>

/// Implements COMPARE_LISTS: if the lists differ, fails the test with both lists in the message and returns
/// false.
inline bool CompareLists(const QStringList& actual, const QStringList& expected, const char* text,
                         const char* file, int line)
{
    const QString separator = QStringLiteral("\n    ");
    const QString both = QStringLiteral("\n  actual:") + separator + actual.join(separator) +
                         QStringLiteral("\n  expected:") + separator + expected.join(separator);
    return QTest::qVerify(actual == expected, text, qPrintable(both), file, line);
}

/// Compares lists like QCOMPARE, but prints all entries. QCOMPARE prints only the first pair that differs.
#define COMPARE_LISTS(actual, expected)                                                                      \
    do {                                                                                                     \
        if (!CompareLists(actual, expected, #actual " == " #expected, __FILE__, __LINE__)) {                 \
            return;                                                                                          \
        }                                                                                                    \
    } while (false)
