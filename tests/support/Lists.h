#pragma once

#include <QStringList>
#include <QTest>

/// What COMPARE_LISTS does: false, and the test has failed with both lists, if they differ.
inline bool CompareLists(const QStringList& actual, const QStringList& expected, const char* text,
                         const char* file, int line)
{
    const QString between = QStringLiteral("\n    ");
    const QString both = QStringLiteral("\n  actual:") + between + actual.join(between) +
                         QStringLiteral("\n  expected:") + between + expected.join(between);
    return QTest::qVerify(actual == expected, text, qPrintable(both), file, line);
}

/// As QCOMPARE, which prints no more than one pair of entries.
#define COMPARE_LISTS(actual, expected)                                                                      \
    do {                                                                                                     \
        if (!CompareLists(actual, expected, #actual " == " #expected, __FILE__, __LINE__)) {                 \
            return;                                                                                          \
        }                                                                                                    \
    } while (false)
