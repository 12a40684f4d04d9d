#include <QProcess>
#include <QTest>
#include <new>
#include <stdexcept>
#include <thread>
#include <vector>

#include "platform/Singleton.h"

namespace {
int alive = 0;
int created = 0;

class Counted
{
public:
    Counted()
    {
        ++alive;
        ++created;
    }
    ~Counted() { --alive; }
};

bool memoryIsShort = false;

class ThrowsBadAlloc
{
public:
    ThrowsBadAlloc()
    {
        if (memoryIsShort) {
            throw std::bad_alloc();
        }
    }
};

class ThrowsInNew
{
public:
    static void* operator new(std::size_t) { throw std::bad_array_new_length(); }
    static void operator delete(void*) {}
};

class ThrowsRuntimeError
{
public:
    ThrowsRuntimeError() { throw std::runtime_error("other"); }
};

class Shared
{
public:
    Shared() { ++created; }
};
} // namespace

class TestSingleton : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void objectIsCreatedOnceAtTheFirstUse();
    void secondDestroyDoesNothing();
    void newObjectIsCreatedAfterDestroy();
    void failedAllocationReturnsNullAndNextCallTriesAgain();
    void otherExceptionsArePropagated();
    void localObjectIsCreatedOnceByManyThreads();
    void objectsAreDestroyedInReverseOrder();
};

void TestSingleton::init()
{
    Singleton<Counted>::Destroy();
    created = 0;
}

void TestSingleton::objectIsCreatedOnceAtTheFirstUse()
{
    QCOMPARE(alive, 0);
    Counted* const one = Singleton<Counted>::GetInstance();
    QVERIFY(one != nullptr);
    QCOMPARE(Singleton<Counted>::GetInstance(), one);
    QCOMPARE(created, 1);
    QCOMPARE(alive, 1);
}

void TestSingleton::secondDestroyDoesNothing()
{
    Singleton<Counted>::GetInstance();
    Singleton<Counted>::Destroy();
    QCOMPARE(alive, 0);
    Singleton<Counted>::Destroy();
    QCOMPARE(alive, 0);
    QCOMPARE(created, 1);
}

void TestSingleton::newObjectIsCreatedAfterDestroy()
{
    Singleton<Counted>::GetInstance();
    Singleton<Counted>::Destroy();
    QVERIFY(Singleton<Counted>::GetInstance() != nullptr);
    QCOMPARE(created, 2);
    QCOMPARE(alive, 1);
}

void TestSingleton::failedAllocationReturnsNullAndNextCallTriesAgain()
{
    memoryIsShort = true;
    QCOMPARE(Singleton<ThrowsBadAlloc>::GetInstance(), nullptr);
    memoryIsShort = false;
    QVERIFY(Singleton<ThrowsBadAlloc>::GetInstance() != nullptr);
    QCOMPARE(Singleton<ThrowsInNew>::GetInstance(), nullptr);
    Singleton<ThrowsInNew>::Destroy();
}

void TestSingleton::otherExceptionsArePropagated()
{
    QVERIFY_EXCEPTION_THROWN(Singleton<ThrowsRuntimeError>::GetInstance(), std::runtime_error);
    Singleton<ThrowsRuntimeError>::Destroy();
}

void TestSingleton::localObjectIsCreatedOnceByManyThreads()
{
    constexpr std::size_t THREADS = 8;
    std::vector<Shared*> instances(THREADS, nullptr);
    std::vector<std::thread> threads;
    for (Shared*& object : instances) {
        threads.emplace_back([&object] { object = &SingletonNew<Shared>::GetInstance(); });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    QCOMPARE(instances, std::vector<Shared*>(THREADS, &SingletonNew<Shared>::GetInstance()));
    QCOMPARE(created, 1);
}

void TestSingleton::objectsAreDestroyedInReverseOrder()
{
    QProcess probe;
    probe.start(QStringLiteral(SINGLETONPROBE), QStringList());
    QVERIFY(probe.waitForFinished());
    QCOMPARE(probe.exitStatus(), QProcess::NormalExit);
    QCOMPARE(probe.readAllStandardOutput(),
             QByteArray("+1\n+2\n+3\n+4\n+5\n-2 Tandra\n+2\n"
                        "-2 Tandra\n-5 Tandra\n-4 Tandra\n-3 Tandra\n-1 Tandra\n"));
}

QTEST_GUILESS_MAIN(TestSingleton)
#include "TestSingleton.moc"
