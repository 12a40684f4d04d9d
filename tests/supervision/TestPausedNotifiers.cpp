#include <QTest>
#include <exception>
#include <memory>

#include "supervision/PausedNotifiers.h"

class TestPausedNotifiers : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void enabledNotifiersAreEnabledAgain();
    void notifiersAreEnabledAgainAfterAnException();
    void destroyedNotifiersAreSkipped();

private:
    QList<QSocketNotifier*> Notifiers() const { return process->findChildren<QSocketNotifier*>(); }
    QList<bool> States() const;

    std::unique_ptr<QProcess> process;
};

void TestPausedNotifiers::init()
{
    process = std::make_unique<QProcess>();
    process->start(QStringLiteral("cat"), QStringList());
    QVERIFY(process->waitForStarted());
}

void TestPausedNotifiers::cleanup()
{
    process->kill();
    process->waitForFinished();
    process.reset();
}

QList<bool> TestPausedNotifiers::States() const
{
    QList<bool> states;
    for (const QSocketNotifier* notifier : Notifiers()) {
        states.append(notifier->isEnabled());
    }
    return states;
}

void TestPausedNotifiers::enabledNotifiersAreEnabledAgain()
{
    const QList<bool> before = States();
    // The notifier for writing is enabled only while data is pending.
    QVERIFY(before.contains(true) && before.contains(false));
    {
        PausedNotifiers paused;
        paused.Pause(*process);
        QVERIFY(!States().contains(true));
    }
    QCOMPARE(States(), before);
}

void TestPausedNotifiers::notifiersAreEnabledAgainAfterAnException()
{
    const QList<bool> before = States();
    try {
        PausedNotifiers paused;
        paused.Pause(*process);
        throw std::exception();
    } catch (const std::exception&) {
    }
    QCOMPARE(States(), before);
}

void TestPausedNotifiers::destroyedNotifiersAreSkipped()
{
    QList<bool> before;
    {
        PausedNotifiers paused;
        paused.Pause(*process);
        cleanup();
        init();
        before = States();
    }
    QCOMPARE(States(), before);
}

QTEST_GUILESS_MAIN(TestPausedNotifiers)
#include "TestPausedNotifiers.moc"
