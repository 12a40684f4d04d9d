#include <QJsonArray>
#include <QTest>

#include "Compare.h"

class TestCompare : public QObject
{
    Q_OBJECT

private slots:
    void sameRunDoesNotDiffer();
    void slowerRunDiffers();
    void fasterMachineDoesNotDiffer();
    void scatterHidesASmallStep();
    void highValuesCountWhereTheyAreAskedFor();
    void differenceIsTakenWhereItIsAskedFor();
    void rowsWithoutPartnerAreLeftOut();
};

namespace {
/// A hundred values around `middle`, the farthest `scatter` away.
QJsonArray Values(double middle, double scatter)
{
    QJsonArray values;
    for (int i = 0; i < 100; ++i) {
        values.append(middle + scatter * ((i * 37 % 100) - 49.5) / 49.5);
    }
    return values;
}

QJsonObject Run(const QJsonArray& ours, const QJsonArray& baseline, const char* kind = "ratio",
                const char* name = "start")
{
    const QJsonObject row{{QStringLiteral("name"), QString::fromLatin1(name)},
                          {QStringLiteral("baseline"), QStringLiteral("bare")},
                          {QStringLiteral("kind"), QString::fromLatin1(kind)},
                          {QStringLiteral("ours"), ours},
                          {QStringLiteral("baseline_samples"), baseline}};
    return {{QStringLiteral("rows"), QJsonArray{row}}};
}

Change Only(const QJsonObject& before, const QJsonObject& after)
{
    return Compare(before, after).value(0);
}
} // namespace

void TestCompare::sameRunDoesNotDiffer()
{
    const QJsonObject run = Run(Values(60, 5), Values(50, 5));
    const Change change = Only(run, run);
    QCOMPARE(change.before, change.after);
    QVERIFY(change.noise > 0);
    QVERIFY(!change.IsBeyondNoise());
}

void TestCompare::slowerRunDiffers()
{
    const Change change = Only(Run(Values(60, 5), Values(50, 5)), Run(Values(66, 5), Values(50, 5)));
    QVERIFY(qAbs(change.before - 1.2) < 0.01);
    QVERIFY(qAbs(change.after - 1.32) < 0.01);
    QVERIFY(change.IsBeyondNoise());
}

void TestCompare::fasterMachineDoesNotDiffer()
{
    QVERIFY(!Only(Run(Values(60, 5), Values(50, 5)), Run(Values(30, 2.5), Values(25, 2.5))).IsBeyondNoise());
}

void TestCompare::scatterHidesASmallStep()
{
    QVERIFY(!Only(Run(Values(60, 40), Values(50, 30)), Run(Values(63, 40), Values(50, 30))).IsBeyondNoise());
}

void TestCompare::highValuesCountWhereTheyAreAskedFor()
{
    QJsonArray withPeaks = Values(2, 0.1);
    for (int i = 0; i < 5; ++i) {
        withPeaks[i * 7] = 20;
    }
    const Change peaks =
        Only(Run(Values(2, 0.1), Values(1, 0.1), "p99"), Run(withPeaks, Values(1, 0.1), "p99"));
    QVERIFY(peaks.before < 2.2);
    QVERIFY(peaks.after > 19);
    QVERIFY(peaks.IsBeyondNoise());
    QVERIFY(!Only(Run(Values(2, 0.1), Values(1, 0.1)), Run(withPeaks, Values(1, 0.1))).IsBeyondNoise());
}

void TestCompare::differenceIsTakenWhereItIsAskedFor()
{
    const Change change = Only(Run(Values(13, 1), Values(1, 0.1), "difference"),
                               Run(Values(26, 1), Values(2, 0.1), "difference"));
    QVERIFY(qAbs(change.before - 12) < 0.1);
    QVERIFY(qAbs(change.after - 24) < 0.1);
    QVERIFY(change.IsBeyondNoise());
}

void TestCompare::rowsWithoutPartnerAreLeftOut()
{
    QVERIFY(Compare(Run(Values(60, 5), Values(50, 5)), Run(Values(60, 5), Values(50, 5), "ratio", "quit"))
                .isEmpty());
    QVERIFY(Compare(QJsonObject(), Run(Values(60, 5), Values(50, 5))).isEmpty());
}

QTEST_APPLESS_MAIN(TestCompare)
#include "TestCompare.moc"
