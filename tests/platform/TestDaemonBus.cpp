#include <QDir>
#include <QElapsedTimer>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <functional>
#include <memory>
#include <poll.h>
#include <set>
#include <sys/eventfd.h>
#include <systemd/sd-bus.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include "platform/Utils.h"
#include "support/CapturedLog.h"
#include "support/Environment.h"
#include "support/EveryLine.h"
#include "support/Files.h"

using Brevora::g_velodeskdPid;
using Brevora::Utils;

namespace {
const QString ERROR = QStringLiteral("ERROR");
const QString WARNING = QStringLiteral("WARNING");
const QString UTILS = QStringLiteral("UTILS");
const char* const TIMED_OUT = "Connection timed out";
const char* const TIMED_OUT_IN_CHINESE = "连接超时";
constexpr int BUS_STARTED_MS = 10000;
constexpr qint64 TIMEOUT_MS = 5000;
constexpr uint64_t TIMEOUT_US = 5000000;

constexpr char CONFIGURATION[] = "<busconfig><type>system</type><listen>unix:tmpdir=%1</listen>"
                                 "<auth>EXTERNAL</auth><policy context=\"default\">"
                                 "<allow user=\"*\"/><allow own=\"*\"/>"
                                 "<allow send_destination=\"*\"/><allow receive_sender=\"*\"/>"
                                 "</policy></busconfig>";

/// Controls the intercepted calls of the bus library.
struct Between
{
    std::function<void()> beforeTheSenderIsAsked;
    int newCallResult = 0;
    int appendResult = 0;
    int pidResult = 0;
    bool replyIsLost = false;
    bool textIsLost = false;
    // The library only documents that success is not negative.
    bool successIsNought = false;
    int callResult = 0;
    uint64_t timeout = 0;
    uint64_t asked = 0;
    /// The objects that the library has returned and that are not released yet.
    std::set<const void*> held;

    int Success(int result) const { return successIsNought ? qMin(result, 0) : result; }
};
/// One per calling thread.
thread_local Between between;

/// A system bus that only this process uses; it exists as long as the object.
class PrivateBus
{
public:
    PrivateBus()
    {
        const QString file = directory.filePath(QStringLiteral("bus.conf"));
        WriteAll(file, QString::fromLatin1(CONFIGURATION).arg(directory.path()).toUtf8());
        daemon.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        daemon.start(QStringLiteral("dbus-daemon"),
                     {QStringLiteral("--config-file=") + file, QStringLiteral("--nofork"),
                      QStringLiteral("--nopidfile"), QStringLiteral("--print-address=1")});
        while (!daemon.canReadLine()) {
            if (!daemon.waitForReadyRead(BUS_STARTED_MS)) {
                qFatal("the bus does not start");
            }
        }
        qputenv("DBUS_SYSTEM_BUS_ADDRESS", daemon.readLine().trimmed());
    }
    ~PrivateBus()
    {
        qunsetenv("DBUS_SYSTEM_BUS_ADDRESS");
        daemon.terminate();
        daemon.waitForFinished();
    }

    /// Pauses the bus until Resume(): it accepts connections and messages without answering.
    void Pause() const { kill(static_cast<pid_t>(daemon.processId()), SIGSTOP); }
    void Resume() const { kill(static_cast<pid_t>(daemon.processId()), SIGCONT); }

private:
    QTemporaryDir directory;
    QProcess daemon;
};

using Answer = std::function<int(sd_bus_message*)>;

/// Acts as the daemon on a thread of this process.
class Server
{
public:
    explicit Server(Answer wanted) : answer(std::move(wanted)), wake(eventfd(0, EFD_CLOEXEC))
    {
        if (sd_bus_open_system(&bus) < 0 ||
            sd_bus_add_object(bus, nullptr, "/com/zelmora/velodesk", &Server::Called, this) < 0 ||
            sd_bus_request_name(bus, "com.zelmora.velodesk", 0) < 0) {
            qFatal("the server does not get on the bus");
        }
        thread = std::thread([this] { Serve(); });
    }
    ~Server()
    {
        Leave();
        close(wake);
    }
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    /// Disconnects from the bus; on return the bus knows it.
    void Leave()
    {
        if (!thread.joinable()) {
            return;
        }
        eventfd_write(wake, 1);
        thread.join();
        const char* name = nullptr;
        sd_bus_get_unique_name(bus, &name);
        const std::string left = name;
        sd_bus_flush_close_unref(bus);
        while (IsOnTheBus(left)) {
            std::this_thread::yield();
        }
    }

    /// The calls as "destination path interface member signature argument"; complete after Leave().
    QStringList calls;

private:
    static bool IsOnTheBus(const std::string& name)
    {
        sd_bus* asker = nullptr;
        sd_bus_message* reply = nullptr;
        int isThere = 0;
        if (sd_bus_open_system(&asker) < 0 ||
            sd_bus_call_method(asker, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
                               "NameHasOwner", nullptr, &reply, "s", name.c_str()) < 0 ||
            sd_bus_message_read(reply, "b", &isThere) < 0) {
            qFatal("the bus does not answer");
        }
        sd_bus_message_unref(reply);
        sd_bus_flush_close_unref(asker);
        return isThere != 0;
    }

    static int Called(sd_bus_message* message, void* server, sd_bus_error*)
    {
        auto& self = *static_cast<Server*>(server);
        const char* argument = nullptr;
        sd_bus_message_read(message, "s", &argument);
        self.calls.append(QStringLiteral("%1 %2 %3 %4 %5 %6")
                              .arg(QString::fromUtf8(sd_bus_message_get_destination(message)),
                                   QString::fromUtf8(sd_bus_message_get_path(message)),
                                   QString::fromUtf8(sd_bus_message_get_interface(message)),
                                   QString::fromUtf8(sd_bus_message_get_member(message)),
                                   QString::fromUtf8(sd_bus_message_get_signature(message, 1)),
                                   QString::fromUtf8(argument)));
        const int result = self.answer(message);
        return result < 0 ? result : 1;
    }

    void Serve()
    {
        for (;;) {
            while (sd_bus_process(bus, nullptr) > 0) {
            }
            sd_bus_flush(bus);
            pollfd descriptors[] = {{sd_bus_get_fd(bus), POLLIN, 0}, {wake, POLLIN, 0}};
            poll(descriptors, 2, -1);
            if (descriptors[1].revents != 0) {
                return;
            }
        }
    }

    Answer answer;
    int wake;
    sd_bus* bus = nullptr;
    std::thread thread;
};

Answer Text(const std::string& text)
{
    return [text](sd_bus_message* call) {
        return sd_bus_reply_method_return(call, "s", text.c_str());
    };
}

Answer Failure(const std::string& message)
{
    return [message](sd_bus_message* call) {
        return sd_bus_reply_method_errorf(call, SD_BUS_ERROR_TIMEOUT, "%s", message.c_str());
    };
}

const Answer NONE = [](sd_bus_message*) {
    return 0;
};

/// The result of a call. Both texts are filled beforehand to show what the call changes.
struct Outcome
{
    int code = 0;
    std::string result = "left over";
    std::string error = "left over";
};

using Way = int (*)(const std::string&, std::string&, std::string&);

Outcome Call(const std::string& command = "velodeskd --exit", Way way = &Utils::ExecutePopenAndReturnByDbus)
{
    Outcome outcome;
    outcome.code = way(command, outcome.result, outcome.error);
    return outcome;
}

int OpenFiles()
{
    return static_cast<int>(QDir(QStringLiteral("/proc/self/fd")).entryList(QDir::AllEntries).size());
}

QString Refusal(int sender, int wanted)
{
    return QStringLiteral("Failed to msg reply id: %1 != velodeskd pid %2").arg(sender).arg(wanted);
}
} // namespace
Q_DECLARE_METATYPE(Way)

int RealCall(sd_bus* bus, sd_bus_message* message, uint64_t usec, sd_bus_error* error,
             sd_bus_message** reply) __asm__("__real_sd_bus_call");
int WrappedCall(sd_bus* bus, sd_bus_message* message, uint64_t usec, sd_bus_error* error,
                sd_bus_message** reply) __asm__("__wrap_sd_bus_call");
int RealNewCall(sd_bus* bus, sd_bus_message** message, const char* destination, const char* path,
                const char* interface, const char* member) __asm__("__real_sd_bus_message_new_method_call");
int WrappedNewCall(sd_bus* bus, sd_bus_message** message, const char* destination, const char* path,
                   const char* interface,
                   const char* member) __asm__("__wrap_sd_bus_message_new_method_call");
int RealQuery(sd_bus_message* message, uint64_t mask,
              sd_bus_creds** creds) __asm__("__real_sd_bus_query_sender_creds");
int WrappedQuery(sd_bus_message* message, uint64_t mask,
                 sd_bus_creds** creds) __asm__("__wrap_sd_bus_query_sender_creds");
int RealPid(sd_bus_creds* creds, pid_t* pid) __asm__("__real_sd_bus_creds_get_pid");
int WrappedPid(sd_bus_creds* creds, pid_t* pid) __asm__("__wrap_sd_bus_creds_get_pid");
int WrappedRead(sd_bus_message* message, const char* types, ...) __asm__("__wrap_sd_bus_message_read");
int WrappedAppend(sd_bus_message* message, const char* types, ...) __asm__("__wrap_sd_bus_message_append");
sd_bus_message* RealUnref(sd_bus_message* message) __asm__("__real_sd_bus_message_unref");
sd_bus_message* WrappedUnref(sd_bus_message* message) __asm__("__wrap_sd_bus_message_unref");
sd_bus_creds* RealForget(sd_bus_creds* creds) __asm__("__real_sd_bus_creds_unref");
sd_bus_creds* WrappedForget(sd_bus_creds* creds) __asm__("__wrap_sd_bus_creds_unref");
void RealFree(sd_bus_error* error) __asm__("__real_sd_bus_error_free");
void WrappedFree(sd_bus_error* error) __asm__("__wrap_sd_bus_error_free");

int WrappedCall(sd_bus* bus, sd_bus_message* message, uint64_t usec, sd_bus_error* error,
                sd_bus_message** reply)
{
    between.timeout = usec;
    if (between.callResult < 0) {
        // Without a reason.
        return between.callResult;
    }
    const int result = RealCall(bus, message, usec, error, reply);
    if (between.replyIsLost) {
        *reply = sd_bus_message_unref(*reply);
    }
    if (*reply != nullptr) {
        between.held.insert(*reply);
    }
    if (error->message != nullptr) {
        between.held.insert(error);
    }
    return between.Success(result);
}

int WrappedNewCall(sd_bus* bus, sd_bus_message** message, const char* destination, const char* path,
                   const char* interface, const char* member)
{
    if (between.newCallResult < 0) {
        return between.newCallResult;
    }
    const int result = RealNewCall(bus, message, destination, path, interface, member);
    between.held.insert(*message);
    return between.Success(result);
}

int WrappedQuery(sd_bus_message* message, uint64_t mask, sd_bus_creds** creds)
{
    between.asked = mask;
    if (between.beforeTheSenderIsAsked) {
        between.beforeTheSenderIsAsked();
    }
    const int result = RealQuery(message, mask, creds);
    if (result >= 0) {
        between.held.insert(*creds);
    }
    return between.Success(result);
}

int WrappedPid(sd_bus_creds* creds, pid_t* pid)
{
    return between.pidResult < 0 ? between.pidResult : between.Success(RealPid(creds, pid));
}

int WrappedAppend(sd_bus_message* message, const char* types, ...)
{
    if (between.appendResult < 0) {
        return between.appendResult;
    }
    va_list args;
    va_start(args, types);
    const int result = sd_bus_message_appendv(message, types, args);
    va_end(args);
    return between.Success(result);
}

int WrappedRead(sd_bus_message* message, const char* types, ...)
{
    if (between.textIsLost) {
        return 1;
    }
    va_list args;
    va_start(args, types);
    const int result = sd_bus_message_readv(message, types, args);
    va_end(args);
    return between.Success(result);
}

sd_bus_message* WrappedUnref(sd_bus_message* message)
{
    between.held.erase(message);
    return RealUnref(message);
}

sd_bus_creds* WrappedForget(sd_bus_creds* creds)
{
    between.held.erase(creds);
    return RealForget(creds);
}

void WrappedFree(sd_bus_error* error)
{
    between.held.erase(error);
    RealFree(error);
}

class TestDaemonBus : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void init();
    void cleanup();

    void callIsAddressedToTheDaemon_data();
    void callIsAddressedToTheDaemon();
    void answerOfTheDaemonIsAccepted_data();
    void answerOfTheDaemonIsAccepted();
    void everyCallIsLogged();
    void answerOfAnotherProcessIsDropped_data();
    void answerOfAnotherProcessIsDropped();
    void everyAnswerIsDroppedBeforeTheDaemonsIdIsSet();
    void answerIsAcceptedAfterTheDaemonsIdIsSet();
    void answerOfAnotherTypeFails();
    void answerOfAnotherTypeFromAnotherProcessIsOnlyDropped();
    void missingAnswerTimesOut();
    void blockedBusTimesOut();
    void answerIsDroppedIfTheBusBlocksTheSenderQuery();
    void textOfATimeoutIsTheSameInEveryLocale_data();
    void textOfATimeoutIsTheSameInEveryLocale();
    void innerCallKeepsTheTextOfATimeout();
    void otherFailureKeepsItsText_data();
    void otherFailureKeepsItsText();
    void missingBusFails();
    void missingDaemonFailsImmediately();
    void answerOfAnEndedSenderIsDropped();
    void answerOfASenderWithoutAProcessIsDropped();
    void lostReplyIsDropped();
    void answerWithoutItsTextIsEmpty();
    void zeroIsSuccess();
    void failureWithoutAReasonHasAnEmptyReason();
    void callThatCannotBeMadeFails();
    void commandThatCannotBeSentFails();
    void commandThatIsNotUtf8Fails();
    void connectionIsClosedEachTime_data();
    void connectionIsClosedEachTime();
    void threadsMayCallConcurrently();

private:
    QStringList Levels() const;

    int pidAtStart = -1;
    std::unique_ptr<PrivateBus> bus;
    std::unique_ptr<CapturedLog> log;
};

void TestDaemonBus::initTestCase()
{
    pidAtStart = g_velodeskdPid;
    bus = std::make_unique<PrivateBus>();
}

void TestDaemonBus::cleanupTestCase()
{
    bus.reset();
}

void TestDaemonBus::init()
{
    log = std::make_unique<CapturedLog>();
    between = Between();
    g_velodeskdPid = getpid();
}

void TestDaemonBus::cleanup()
{
    QVERIFY(between.held.empty());
    between = Between();
    g_velodeskdPid = 0;
    log.reset();
}

/// Returns each line as "LEVEL TAG message".
QStringList TestDaemonBus::Levels() const
{
    QStringList texts;
    const QList<CapturedLog::Line> lines = log->Lines();
    for (const CapturedLog::Line& line : lines) {
        texts.append(line.level + QLatin1Char(' ') + line.module + QLatin1Char(' ') + line.message);
    }
    return texts;
}

namespace {
QStringList Errors(const QStringList& messages)
{
    QStringList texts;
    for (const QString& message : messages) {
        texts.append(ERROR + QLatin1Char(' ') + UTILS + QLatin1Char(' ') + message);
    }
    return texts;
}
} // namespace

void TestDaemonBus::callIsAddressedToTheDaemon_data()
{
    QTest::addColumn<Way>("way");
    QTest::newRow("outer call") << &Utils::ExecutePopenAndReturnByDbus;
    QTest::newRow("inner call") << &Utils::DBusProcess;
}

void TestDaemonBus::callIsAddressedToTheDaemon()
{
    QFETCH(Way, way);
    Server server(Text("done"));
    QVERIFY(Call("velodeskd --exit", way).code >= 0);
    QVERIFY(Call("", way).code >= 0);
    server.Leave();
    const QString address =
        QStringLiteral("com.zelmora.velodesk /com/zelmora/velodesk com.zelmora.velodesk velodeskd s ");
    QCOMPARE(server.calls, QStringList({address + QStringLiteral("velodeskd --exit"), address}));
    // The time of connecting is part of the limit.
    QVERIFY2(between.timeout <= TIMEOUT_US && between.timeout > TIMEOUT_US / 2,
             qPrintable(QString::number(between.timeout)));
    QCOMPARE(between.asked, uint64_t(1));
}

void TestDaemonBus::answerOfTheDaemonIsAccepted_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("word") << QByteArray("done");
    QTest::newRow("nothing") << QByteArray();
    QTest::newRow("untrimmed") << QByteArray("  two\nlines \n");
    QTest::newRow("Chinese") << QByteArray("投屏助手");
    QTest::newRow("percent signs") << QByteArray("100%s");
    QTest::newRow("long") << QByteArray(100000, 'x');
}

void TestDaemonBus::answerOfTheDaemonIsAccepted()
{
    QFETCH(QByteArray, text);
    const Server server(Text(text.toStdString()));
    const Outcome outcome = Call();
    QVERIFY(outcome.code >= 0);
    QCOMPARE(outcome.result, text.toStdString());
    QCOMPARE(outcome.error, std::string());
    COMPARE_LISTS(log->Messages(), QStringList());
}

void TestDaemonBus::everyCallIsLogged()
{
    const EveryLine lines;
    {
        const Server server(Text("done"));
        const Outcome outcome = Call("command");
        QCOMPARE(
            lines.Take(),
            QStringList(
                {QStringLiteral("DEBUG UTILS sd_bus_message_read command = command, r = %1, result = done")
                     .arg(outcome.code),
                 QStringLiteral("DEBUG UTILS execute popoen result, ret:%1 result:done errorMessage:")
                     .arg(outcome.code)}));
    }
    const Server server(Failure(TIMED_OUT_IN_CHINESE));
    const Outcome outcome = Call("command");
    const QString text = QString::fromUtf8(TIMED_OUT_IN_CHINESE);
    QCOMPARE(lines.Take(),
             QStringList(
                 {QStringLiteral("ERROR UTILS Failed to call method, reason: ") + text,
                  QStringLiteral("DEBUG UTILS execute popoen result, ret:%1 result: errorMessage:")
                          .arg(outcome.code) +
                      text,
                  QStringLiteral("WARNING UTILS popoen error, please retry tandra, result:, errormessage:") +
                      text}));
}

void TestDaemonBus::answerOfAnotherProcessIsDropped_data()
{
    QTest::addColumn<int>("daemon");
    QTest::newRow("next process") << getpid() + 1;
    QTest::newRow("first process") << 1;
    QTest::newRow("no process") << 0;
    QTest::newRow("no number of a process") << -1;
}

void TestDaemonBus::answerOfAnotherProcessIsDropped()
{
    QFETCH(int, daemon);
    g_velodeskdPid = daemon;
    const Server server(Text("done"));
    const Outcome outcome = Call();
    QVERIFY(outcome.code >= 0);
    QCOMPARE(outcome.result, std::string());
    QCOMPARE(outcome.error, std::string());
    QCOMPARE(Levels(), Errors({Refusal(getpid(), daemon)}));
}

void TestDaemonBus::everyAnswerIsDroppedBeforeTheDaemonsIdIsSet()
{
    g_velodeskdPid = pidAtStart;
    const Server server(Text("done"));
    QCOMPARE(Call().result, std::string());
    COMPARE_LISTS(log->Messages(), QStringList(Refusal(getpid(), 0)));
}

void TestDaemonBus::answerIsAcceptedAfterTheDaemonsIdIsSet()
{
    g_velodeskdPid = 0;
    Utils::SetDbusServerPid(getpid());
    QCOMPARE(g_velodeskdPid, getpid());
    const Server server(Text("done"));
    QCOMPARE(Call().result, std::string("done"));
}

void TestDaemonBus::answerOfAnotherTypeFails()
{
    const Server server([](sd_bus_message* call) { return sd_bus_reply_method_return(call, "i", 5); });
    const Outcome outcome = Call();
    QVERIFY(outcome.code < 0);
    QCOMPARE(outcome.result, std::string());
    QCOMPARE(outcome.error, std::string());
    QCOMPARE(Levels(), Errors({QStringLiteral("sd_bus_message_read failed.")}));
}

void TestDaemonBus::answerOfAnotherTypeFromAnotherProcessIsOnlyDropped()
{
    g_velodeskdPid = 1;
    const Server server([](sd_bus_message* call) { return sd_bus_reply_method_return(call, "i", 5); });
    QVERIFY(Call().code >= 0);
    QCOMPARE(Levels(), Errors({Refusal(getpid(), 1)}));
}

void TestDaemonBus::missingAnswerTimesOut()
{
    const Server server(NONE);
    QElapsedTimer timer;
    timer.start();
    const Outcome outcome = Call();
    QVERIFY2(timer.elapsed() >= TIMEOUT_MS, qPrintable(QString::number(timer.elapsed())));
    QCOMPARE(outcome.code, -ETIMEDOUT);
    QCOMPARE(outcome.result, std::string());
    QCOMPARE(outcome.error, std::string(TIMED_OUT));
    COMPARE_LISTS(log->Messages(),
                  QStringList({QStringLiteral("Failed to call method, reason: Connection timed out"),
                               QStringLiteral("popoen error, please retry tandra, result:, "
                                              "errormessage:Connection timed out")}));
    QVERIFY(log->Contains(WARNING, UTILS, log->Messages().last()));
}

void TestDaemonBus::blockedBusTimesOut()
{
    bus->Pause();
    QElapsedTimer timer;
    timer.start();
    const Outcome outcome = Call();
    const qint64 took = timer.elapsed();
    bus->Resume();
    QVERIFY2(took >= TIMEOUT_MS && took < 2 * TIMEOUT_MS, qPrintable(QString::number(took)));
    QCOMPARE(outcome.code, -ETIMEDOUT);
    QCOMPARE(outcome.error, std::string(TIMED_OUT));
    QCOMPARE(log->Messages().value(0), QStringLiteral("Failed to call method, reason: Connection timed out"));
}

void TestDaemonBus::answerIsDroppedIfTheBusBlocksTheSenderQuery()
{
    const Server server(Text("done"));
    between.beforeTheSenderIsAsked = [this] {
        bus->Pause();
    };
    QElapsedTimer timer;
    timer.start();
    const Outcome outcome = Call();
    const qint64 took = timer.elapsed();
    bus->Resume();
    QVERIFY2(took < 2 * TIMEOUT_MS, qPrintable(QString::number(took)));
    QVERIFY(outcome.code >= 0);
    QCOMPARE(outcome.result, std::string());
    QCOMPARE(log->Messages().value(1), Refusal(-ETIMEDOUT, getpid()));
}

void TestDaemonBus::textOfATimeoutIsTheSameInEveryLocale_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("English") << QString::fromUtf8(TIMED_OUT);
    QTest::newRow("Chinese") << QString::fromUtf8(TIMED_OUT_IN_CHINESE);
}

void TestDaemonBus::textOfATimeoutIsTheSameInEveryLocale()
{
    QFETCH(QString, text);
    const Server server(Failure(text.toStdString()));
    const Outcome outcome = Call();
    QVERIFY(outcome.code < 0);
    QCOMPARE(outcome.result, std::string());
    QCOMPARE(outcome.error, std::string(TIMED_OUT));
    QCOMPARE(Levels(),
             Errors({QStringLiteral("Failed to call method, reason: ") + text}) +
                 QStringList(QStringLiteral(
                                 "WARNING UTILS popoen error, please retry tandra, result:, errormessage:") +
                             text));
}

void TestDaemonBus::innerCallKeepsTheTextOfATimeout()
{
    const Server server(Failure(TIMED_OUT_IN_CHINESE));
    const Outcome outcome = Call("command", &Utils::DBusProcess);
    QVERIFY(outcome.code < 0);
    QCOMPARE(outcome.error, std::string(TIMED_OUT_IN_CHINESE));
    QCOMPARE(Levels(), Errors({QStringLiteral("Failed to call method, reason: ") +
                               QString::fromUtf8(TIMED_OUT_IN_CHINESE)}));
}

void TestDaemonBus::otherFailureKeepsItsText_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("other words") << QByteArray("Not now");
    QTest::newRow("words after") << QByteArray("Connection timed out.");
    QTest::newRow("words before") << QByteArray("The Connection timed out");
    QTest::newRow("other letters") << QByteArray("connection timed out");
    QTest::newRow("Chinese, words after") << QByteArray("连接超时。");
}

void TestDaemonBus::otherFailureKeepsItsText()
{
    QFETCH(QByteArray, text);
    const Server server(Failure(text.toStdString()));
    const Outcome outcome = Call();
    QVERIFY(outcome.code < 0);
    QCOMPARE(outcome.result, std::string());
    QCOMPARE(outcome.error, text.toStdString());
    QCOMPARE(Levels(), Errors({QStringLiteral("Failed to call method, reason: ") + QString::fromUtf8(text)}));
}

void TestDaemonBus::missingBusFails()
{
    const Variable address("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nowhere/bus");
    const Outcome outcome = Call();
    QCOMPARE(outcome.code, -ENOENT);
    QCOMPARE(outcome.result, std::string());
    QCOMPARE(outcome.error, std::string());
    QCOMPARE(Levels(),
             Errors({QStringLiteral("Failed to connect to system bus: No such file or directory")}));
}

void TestDaemonBus::missingDaemonFailsImmediately()
{
    QElapsedTimer timer;
    timer.start();
    const Outcome outcome = Call();
    QVERIFY(timer.elapsed() < TIMEOUT_MS);
    QCOMPARE(outcome.code, -EHOSTUNREACH);
    QCOMPARE(outcome.result, std::string());
    QVERIFY(!outcome.error.empty());
    QCOMPARE(Levels(), Errors({QStringLiteral("Failed to call method, reason: ") +
                               QString::fromStdString(outcome.error)}));
}

void TestDaemonBus::answerOfAnEndedSenderIsDropped()
{
    Server server(Text("done"));
    between.beforeTheSenderIsAsked = [&server] {
        server.Leave();
    };
    const Outcome outcome = Call();
    QVERIFY(outcome.code >= 0);
    QCOMPARE(outcome.result, std::string());
    QCOMPARE(outcome.error, std::string());
    QCOMPARE(Levels(), Errors({QStringLiteral("sd_bus_query_sender_creds failed: 6, creds = (nil)"),
                               Refusal(-6, getpid())}));
}

void TestDaemonBus::answerOfASenderWithoutAProcessIsDropped()
{
    between.pidResult = -ENODATA;
    const Server server(Text("done"));
    const Outcome outcome = Call();
    QVERIFY(outcome.code >= 0);
    QCOMPARE(outcome.result, std::string());
    const QStringList lines = Levels();
    QCOMPARE(lines.size(), 2);
    const QRegularExpression first(
        QStringLiteral("^ERROR UTILS sd_bus_creds_get_pid failed: %1, creds = 0x[0-9a-f]+\\z").arg(ENODATA));
    QVERIFY2(first.match(lines.first()).hasMatch(), qPrintable(lines.first()));
    QCOMPARE(lines.last(), Errors({Refusal(-ENODATA, getpid())}).first());
}

void TestDaemonBus::lostReplyIsDropped()
{
    between.replyIsLost = true;
    const Server server(Text("done"));
    const Outcome outcome = Call();
    QVERIFY(outcome.code >= 0);
    QCOMPARE(outcome.result, std::string());
    QCOMPARE(Levels(), Errors({Refusal(-1, getpid())}));
}

void TestDaemonBus::answerWithoutItsTextIsEmpty()
{
    between.textIsLost = true;
    const Server server(Text("done"));
    const Outcome outcome = Call();
    QCOMPARE(outcome.code, 1);
    QCOMPARE(outcome.result, std::string());
    QCOMPARE(Levels(), QStringList());
}

void TestDaemonBus::zeroIsSuccess()
{
    between.successIsNought = true;
    const Server server(Text("done"));
    const Outcome outcome = Call();
    QCOMPARE(outcome.code, 0);
    QCOMPARE(outcome.result, std::string("done"));
    QCOMPARE(outcome.error, std::string());
    QCOMPARE(Levels(), QStringList());
}

void TestDaemonBus::failureWithoutAReasonHasAnEmptyReason()
{
    between.callResult = -EIO;
    const Outcome outcome = Call();
    QCOMPARE(outcome.code, -EIO);
    QCOMPARE(outcome.result, std::string());
    QCOMPARE(outcome.error, std::string());
    QCOMPARE(Levels(), Errors({QStringLiteral("Failed to call method, reason: ")}));
}

void TestDaemonBus::callThatCannotBeMadeFails()
{
    between.newCallResult = -ENOMEM;
    const Outcome outcome = Call();
    QCOMPARE(outcome.code, -ENOMEM);
    QCOMPARE(outcome.result, std::string());
    QCOMPARE(outcome.error, std::string());
    QCOMPARE(Levels(),
             Errors({QStringLiteral("Failed to sd_bus_message_new_method_call r:%1").arg(-ENOMEM)}));
}

void TestDaemonBus::commandThatCannotBeSentFails()
{
    const Server server(Text("done"));
    between.appendResult = -ENOMEM;
    const Outcome outcome = Call();
    QCOMPARE(outcome.code, -ENOMEM);
    QCOMPARE(outcome.result, std::string());
    QCOMPARE(outcome.error, std::string());
    QCOMPARE(Levels(), Errors({QStringLiteral("Failed to sd_bus_message_append")}));
}

void TestDaemonBus::commandThatIsNotUtf8Fails()
{
    // The bus accepts only UTF-8; older releases of the library detect it when they send.
    const Server server(Text("done"));
    const Outcome outcome = Call("\xff");
    QVERIFY(outcome.code < 0);
    QCOMPARE(outcome.result, std::string());
}

void TestDaemonBus::connectionIsClosedEachTime_data()
{
    QTest::addColumn<bool>("isServed");
    QTest::addColumn<QByteArray>("command");
    QTest::newRow("answer") << true << QByteArray("command");
    QTest::newRow("failure of the call") << false << QByteArray("command");
    QTest::newRow("failure before the call") << true << QByteArray("\xff");
}

void TestDaemonBus::connectionIsClosedEachTime()
{
    QFETCH(bool, isServed);
    QFETCH(QByteArray, command);
    const std::unique_ptr<Server> server = isServed ? std::make_unique<Server>(Text("done")) : nullptr;
    Call(command.toStdString());
    const int before = OpenFiles();
    Call(command.toStdString());
    QCOMPARE(OpenFiles(), before);
}

void TestDaemonBus::threadsMayCallConcurrently()
{
    constexpr int THREADS = 4;
    constexpr int CALLS = 20;
    const Server server([](sd_bus_message* call) {
        const char* command = nullptr;
        sd_bus_message_rewind(call, 1);
        sd_bus_message_read(call, "s", &command);
        return sd_bus_reply_method_return(call, "s", command);
    });
    std::atomic<int> right{0};
    std::vector<std::thread> threads;
    for (int thread = 0; thread < THREADS; ++thread) {
        threads.emplace_back([&right, thread] {
            for (int i = 0; i < CALLS; ++i) {
                const std::string command = std::to_string(thread) + "/" + std::to_string(i);
                std::string result;
                std::string error;
                if (Utils::ExecutePopenAndReturnByDbus(command, result, error) >= 0 && result == command) {
                    ++right;
                }
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    QCOMPARE(right.load(), THREADS * CALLS);
    COMPARE_LISTS(log->Messages(), QStringList());
}

QTEST_GUILESS_MAIN(TestDaemonBus)
#include "TestDaemonBus.moc"
