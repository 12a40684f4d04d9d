#pragma once

#include <QByteArray>
#include <QList>
#include <QRandomGenerator>
#include <QString>
#include <memory>

/// Aborts the run if the condition is false, with the condition, its source line and the seed.
#define REQUIRE(condition)                                                                                   \
    do {                                                                                                     \
        if (!(condition)) {                                                                                  \
            CallSequence::Fail(__FILE__, __LINE__, #condition);                                              \
        }                                                                                                    \
    } while (false)

/// A model-based test of one class: calls its public operations in a random sequence, also from slots that
/// are connected to its signals, and compares the results with a small model of the class.
class CallSequence
{
public:
    explicit CallSequence(quint32 seed) : random(seed) {}
    virtual ~CallSequence() = default;
    CallSequence(const CallSequence&) = delete;
    CallSequence& operator=(const CallSequence&) = delete;

    /// Calls one operation and verifies its result.
    virtual void Step() = 0;
    /// Verifies the final state. It is called once after the last step.
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

    /// Runs the event loop for `ms` milliseconds.
    static void Spin(int ms);
    /// Runs the event loop until `condition` is true. Returns false after ten seconds.
    template <typename Condition>
    static bool SpinUntil(Condition condition)
    {
        constexpr int TRIES = 1000;
        for (int i = 0; i < TRIES && !condition(); ++i) {
            Spin(10);
        }
        return condition();
    }

    /// Slots call this function. It sometimes calls one more operation, nested up to MAX_DEPTH.
    void StepInSlot()
    {
        if (depth < MAX_DEPTH && OneIn(2)) {
            ++depth;
            Step();
            --depth;
        }
    }

    /// Prevents further operations in slots.
    void DisableStepsInSlots() { depth = MAX_DEPTH; }

private:
    static constexpr int MAX_DEPTH = 3;

    QRandomGenerator random;
    int depth = 0;
};

/// Returns the number of open descriptors of this process.
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
