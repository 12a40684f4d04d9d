#include <QTest>
#include <fcntl.h>
#include <memory>
#include <unistd.h>

#include "supervision/PausedNotifiers.h"

class TestPausedNotifiers : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void enabledOnesComeBack();
    void eachComesBackOnce();
    void goneOnesAreLeftOut();
    void descriptorsOfOthersAreLeftAlone();

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

void TestPausedNotifiers::enabledOnesComeBack()
{
    const QList<bool> before = States();
    // The one for writing waits until there is something to write.
    QVERIFY(before.contains(true) && before.contains(false));
    PausedNotifiers paused;
    paused.Pause(*process);
    QVERIFY(!States().contains(true));
    paused.Resume();
    QCOMPARE(States(), before);
}

void TestPausedNotifiers::eachComesBackOnce()
{
    PausedNotifiers paused;
    paused.Pause(*process);
    paused.Resume();
    for (QSocketNotifier* notifier : Notifiers()) {
        notifier->setEnabled(false);
    }
    paused.Resume();
    QVERIFY(!States().contains(true));
}

void TestPausedNotifiers::goneOnesAreLeftOut()
{
    PausedNotifiers paused;
    paused.Pause(*process);
    cleanup();
    init();
    const QList<bool> before = States();
    paused.Pause(*process);
    paused.Resume();
    QCOMPARE(States(), before);
}

void TestPausedNotifiers::descriptorsOfOthersAreLeftAlone()
{
    PausedNotifiers paused;
    const QList<bool> before = States();
    QVERIFY(before.contains(true));
    const QSocketNotifier* output = Notifiers().at(before.indexOf(true));
    paused.Pause(*process);
    // Another pipe gets the number of the process's.
    int other[2] = {-1, -1};
    QCOMPARE(pipe2(other, O_CLOEXEC), 0);
    QCOMPARE(dup2(other[0], static_cast<int>(output->socket())), static_cast<int>(output->socket()));
    paused.Resume();
    QVERIFY(!output->isEnabled());
    close(other[0]);
    close(other[1]);
}

QTEST_GUILESS_MAIN(TestPausedNotifiers)
#include "TestPausedNotifiers.moc"
