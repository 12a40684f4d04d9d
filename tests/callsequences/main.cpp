// Calls the public operations of a class in random sequences and compares its state with a model.
//
//   call-sequences CLASS SECONDS [SEED]
//
// Prints the number of operations. A failed check aborts the run and prints the seed, which repeats the run
// except for the timing of child processes and threads.

#include <QDir>
#include <QElapsedTimer>
#include <QTimer>
#include <cstdio>
#include <cstdlib>
#include <iterator>

#include "callsequences/CallSequence.h"
#include "entry/SingleApplication.h"
#include "platform/Logger.h"
#include "support/Sandbox.h"

namespace {
constexpr qint64 MS_PER_SECOND = 1000;

struct Target
{
    const char* name;
    std::unique_ptr<CallSequence> (*make)(quint32);
};

constexpr Target TARGETS[] = {
    {"AppManager", &MakeAppManagerCalls},   {"BaseApp", &MakeBaseAppCalls},
    {"ConnServer", &MakeConnServerCalls},   {"ConnClient", &MakeConnClientCalls},
    {"IniParser", &MakeIniParserCalls},     {"Configure", &MakeConfigureCalls},
    {"Logger", &MakeLoggerCalls},           {"SingleApplication", &MakeSingleApplicationCalls},
    {"MultiScreen", &MakeMultiScreenCalls},
};

quint32 usedSeed = 0;
long steps = 0;

int Run(const Target& target, int seconds)
{
    // The log is written as in the program. /dev/null is not possible, because the logger would change the
    // permissions of the device.
    Singleton<Brevora::Logger>::GetInstance()->Init(
        (QDir::tempPath() + "/call-sequences.log").toLocal8Bit().toStdString());
    const std::unique_ptr<CallSequence> sequence = target.make(usedSeed);
    QElapsedTimer timer;
    timer.start();
    while (timer.elapsed() < seconds * MS_PER_SECOND) {
        sequence->Step();
        ++steps;
    }
    sequence->End();
    std::printf("%s: %ld operations in %d s, seed %u\n", target.name, steps, seconds, usedSeed);
    return 0;
}
} // namespace

void CallSequence::Fail(const char* file, int line, const char* condition)
{
    std::fprintf(stderr, "%s:%d: failed: %s (operation %ld, seed %u)\n", file, line, condition, steps,
                 usedSeed);
    std::abort();
}

QByteArray CallSequence::AnyBytes(int longest)
{
    QByteArray bytes(Pick(longest + 1), '\0');
    for (char& byte : bytes) {
        byte = static_cast<char>(Pick(256));
    }
    return bytes;
}

void CallSequence::Spin(int ms)
{
    QEventLoop loop;
    QTimer::singleShot(ms, &loop, &QEventLoop::quit);
    loop.exec();
}

int OpenDescriptors()
{
    return QDir(QStringLiteral("/proc/self/fd"))
        .entryList(QDir::NoDotAndDotDot | QDir::AllEntries | QDir::System)
        .size();
}

int main(int argc, char** argv)
{
    EnterSandbox(argc, argv);
    SingleApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    const int seconds = arguments.value(2).toInt();
    usedSeed = arguments.value(3, QStringLiteral("1")).toUInt();
    for (const Target& target : TARGETS) {
        if (arguments.value(1) == QLatin1String(target.name) && seconds > 0) {
            return Run(target, seconds);
        }
    }
    std::fprintf(stderr, "usage: call-sequences CLASS SECONDS [SEED]\n");
    return 2;
}
