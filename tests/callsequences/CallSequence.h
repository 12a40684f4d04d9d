#pragma once

#include <QByteArray>
#include <QList>
#include <QRandomGenerator>
#include <QString>
#include <memory>

/// Ends the run with what did not hold; main() adds which run it was.
#define REQUIRE(condition)                                                                                   \
    do {                                                                                                     \
        if (!(condition)) {                                                                                  \
            CallSequence::Fail(__FILE__, __LINE__, #condition);                                              \
        }                                                                                                    \
    } while (false)

/// The public operations of one class, called in a random order, from outside and from within its own
/// signals, and held against a small model of what they promise.
class CallSequence
{
public:
    explicit CallSequence(quint32 seed) : random(seed) {}
    virtual ~CallSequence() = default;
    CallSequence(const CallSequence&) = delete;
    CallSequence& operator=(const CallSequence&) = delete;

    /// One operation, with what must hold after it.
    virtual void Step() = 0;
    /// What must hold once nothing more is called.
    virtual void End() {}

    [[noreturn]] static void Fail(const char* file, int line, const char* condition);

protected:
    int Pick(int below) { return static_cast<int>(random.bounded(static_cast<quint32>(below))); }
    bool OneIn(int times) { return Pick(times) == 0; }
    template <typename T>
    const T& Any(const QList<T>& values)
    {
        return values.at(Pick(values.size()));
    }
    QByteArray AnyBytes(int longest);

    /// Lets the event loop run for a while.
    static void Spin(int ms);
    /// Lets it run until `condition` holds; false after ten seconds.
    template <typename Condition>
    static bool SpinUntil(Condition condition)
    {
        constexpr int TRIES = 1000;
        for (int i = 0; i < TRIES && !condition(); ++i) {
            Spin(10);
        }
        return condition();
    }

    /// One more operation from within a signal now and then, but not without end.
    void StepInside()
    {
        if (depth < DEEPEST && OneIn(2)) {
            ++depth;
            Step();
            --depth;
        }
    }

    /// No more operations from within signals.
    void StayOutside() { depth = DEEPEST; }

private:
    static constexpr int DEEPEST = 3;

    QRandomGenerator random;
    int depth = 0;
};

/// Open descriptors of this process.
int OpenDescriptors();

std::unique_ptr<CallSequence> MakeAppManagerCalls(quint32 seed);
std::unique_ptr<CallSequence> MakeBaseAppCalls(quint32 seed);
std::unique_ptr<CallSequence> MakeConnServerCalls(quint32 seed);
std::unique_ptr<CallSequence> MakeConnClientCalls(quint32 seed);
std::unique_ptr<CallSequence> MakeIniParserCalls(quint32 seed);
std::unique_ptr<CallSequence> MakeConfigureCalls(quint32 seed);
std::unique_ptr<CallSequence> MakeLoggerCalls(quint32 seed);
std::unique_ptr<CallSequence> MakeSingleApplicationCalls(quint32 seed);
std::unique_ptr<CallSequence> MakeMultiScreenCalls(quint32 seed);
