#include <QLabel>
#include <QListWidget>
#include <QTest>
#include <memory>
#include <new>

#include "shell/Shadow.h"
#include "shell/VeloWin.h"
#include "support/CapturedLog.h"
#include "support/Widgets.h"

namespace {
constexpr int NEVER = -1;
/// The number of allocations that succeed before one fails.
int remainingSuccesses = NEVER;
} // namespace

void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept
{
    if (remainingSuccesses != NEVER && remainingSuccesses-- == 0) {
        remainingSuccesses = NEVER;
        return nullptr;
    }
    try {
        return ::operator new(size);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

/// A failed allocation is logged, and only its object is missing.
class TestScarceMemory : public QObject
{
    Q_OBJECT

private slots:
    void init() { log = std::make_unique<CapturedLog>(); }
    void cleanup();

    void windowLacksOnlyTheObjectWhoseAllocationFails_data();
    void windowLacksOnlyTheObjectWhoseAllocationFails();
    void addEffectReturnsErrorWhenAllocationFails();
    void closeCommandClosesWindowWhenExitWinCannotBeAllocated();

private:
    std::unique_ptr<CapturedLog> log;
};

void TestScarceMemory::cleanup()
{
    remainingSuccesses = NEVER;
    log.reset();
}

void TestScarceMemory::windowLacksOnlyTheObjectWhoseAllocationFails_data()
{
    QTest::addColumn<int>("before");
    QTest::addColumn<QString>("message");
    QTest::addColumn<int>("missing");
    QTest::newRow("validator") << 0 << "Validator is nullptr." << 0;
    QTest::newRow("container") << 1 << "Item container is nullptr." << 1;
    QTest::newRow("icon") << 2 << "Item label is nullptr." << 1;
    QTest::newRow("text") << 3 << "Item text is nullptr." << 1;
    QTest::newRow("layout") << 4 << "Item layout is nullptr." << 1;
    QTest::newRow("item") << 5 << "Item is nullptr." << 1;
}

void TestScarceMemory::windowLacksOnlyTheObjectWhoseAllocationFails()
{
    QFETCH(int, before);
    QFETCH(QString, message);
    QFETCH(int, missing);
    const int rows = Find<QListWidget>(VeloWin(nullptr), "appList")->count() - missing;
    remainingSuccesses = before;
    VeloWin window(nullptr);
    QCOMPARE(remainingSuccesses, NEVER);
    QVERIFY(log->Contains(QStringLiteral("ERROR"), QStringLiteral("VELODESK"), message));
    QCOMPARE(Find<QListWidget>(window, "appList")->count(), rows);
    QCOMPARE(Find<QListWidget>(window, "appList")->findChildren<QLabel*>().size(), 2 * rows);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
}

void TestScarceMemory::addEffectReturnsErrorWhenAllocationFails()
{
    QWidget window;
    QWidget card(&window);
    remainingSuccesses = 0;
    QCOMPARE(Shadow::AddShadowEffect(&window, &card), 2);
    QVERIFY(card.graphicsEffect() == nullptr);
    QCOMPARE(Shadow::AddShadowEffect(&window, &card), 0);
}

void TestScarceMemory::closeCommandClosesWindowWhenExitWinCannotBeAllocated()
{
    VeloWin window(nullptr);
    window.show();
    remainingSuccesses = 0;
    QTest::mouseClick(Find(window, "exitBtn"), Qt::LeftButton);
    QVERIFY(log->Contains(QStringLiteral("ERROR"), QStringLiteral("VELODESK"),
                          QStringLiteral("ExitWin is nullptr.")));
    QCOMPARE(log->Count(QStringLiteral("ExitWin is nullptr.")), 1);
    QCOMPARE(log->Count(QStringLiteral("Velodesk show exit window.")), 0);
    remainingSuccesses = 0;
    QVERIFY(window.close());
    QVERIFY(!window.isVisible());
    QCOMPARE(log->Count(QStringLiteral("ExitWin is nullptr.")), 2);
    QCOMPARE(log->Count(QStringLiteral("Velodesk closeEvent show exit window.")), 0);
}

QTEST_MAIN(TestScarceMemory)
#include "TestScarceMemory.moc"
