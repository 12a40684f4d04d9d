#include <QProcess>
#include <QTest>
#include <new>
#include <stdexcept>
#include <thread>
#include <vector>

#include "platform/Singleton.h"

namespace {
int alive = 0;
int made = 0;

class Counted
{
public:
    Counted()
    {
        ++alive;
        ++made;
    }
    ~Counted() { --alive; }
};

bool memoryIsShort = false;

class Hungry
{
public:
    Hungry()
    {
        if (memoryIsShort) {
            throw std::bad_alloc();
        }
    }
};

class Unallocatable
{
public:
    static void* operator new(std::size_t) { throw std::bad_array_new_length(); }
    static void operator delete(void*) {}
};

class Thrower
{
public:
    Thrower() { throw std::runtime_error("other"); }
};

class Shared
{
public:
    Shared() { ++made; }
};
} // namespace

class TestSingleton : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void objectIsCreatedOnceAtTheFirstUse();
    void destroyingTwiceIsHarmless();
    void newObjectIsCreatedAfterDestroy();
    void failedAllocationReturnsNullAndIsTriedAgain();
    void otherExceptionsArePropagated();
    void localObjectIsCreatedOnceByManyThreads();
    void objectsAreDestroyedInReverseOrder();
};

void TestSingleton::init()
{
    Singleton<Counted>::Destroy();
    made = 0;
}

void TestSingleton::objectIsCreatedOnceAtTheFirstUse()
{
    QCOMPARE(alive, 0);
    Counted* const one = Singleton<Counted>::GetInstance();
    QVERIFY(one != nullptr);
    QCOMPARE(Singleton<Counted>::GetInstance(), one);
    QCOMPARE(made, 1);
    QCOMPARE(alive, 1);
}

void TestSingleton::destroyingTwiceIsHarmless()
{
    Singleton<Counted>::GetInstance();
    Singleton<Counted>::Destroy();
    QCOMPARE(alive, 0);
    Singleton<Counted>::Destroy();
    QCOMPARE(alive, 0);
    QCOMPARE(made, 1);
}

void TestSingleton::newObjectIsCreatedAfterDestroy()
{
    Singleton<Counted>::GetInstance();
    Singleton<Counted>::Destroy();
    QVERIFY(Singleton<Counted>::GetInstance() != nullptr);
    QCOMPARE(made, 2);
    QCOMPARE(alive, 1);
}

void TestSingleton::failedAllocationReturnsNullAndIsTriedAgain()
{
    memoryIsShort = true;
    QCOMPARE(Singleton<Hungry>::GetInstance(), nullptr);
    memoryIsShort = false;
    QVERIFY(Singleton<Hungry>::GetInstance() != nullptr);
    QCOMPARE(Singleton<Unallocatable>::GetInstance(), nullptr);
    Singleton<Unallocatable>::Destroy();
}

void TestSingleton::otherExceptionsArePropagated()
{
    QVERIFY_EXCEPTION_THROWN(Singleton<Thrower>::GetInstance(), std::runtime_error);
    Singleton<Thrower>::Destroy();
}

void TestSingleton::localObjectIsCreatedOnceByManyThreads()
{
    constexpr std::size_t THREADS = 8;
    std::vector<Shared*> seen(THREADS, nullptr);
    std::vector<std::thread> threads;
    for (Shared*& object : seen) {
        threads.emplace_back([&object] { object = &SingletonNew<Shared>::GetInstance(); });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    QCOMPARE(seen, std::vector<Shared*>(THREADS, &SingletonNew<Shared>::GetInstance()));
    QCOMPARE(made, 1);
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
