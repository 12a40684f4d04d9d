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
struct Mock
{
    std::function<void()> beforeSenderQuery;
    int newCallResult = 0;
    int appendResult = 0;
    int pidResult = 0;
    bool replyIsLost = false;
    bool textIsLost = false;
    // The library documents only that a successful result is not negative.
    bool successIsZero = false;
    int callResult = 0;
    uint64_t timeout = 0;
    uint64_t queriedMask = 0;
    /// The objects of the library that are not released yet.
    std::set<const void*> unreleased;

    int Success(int result) const { return successIsZero ? qMin(result, 0) : result; }
};
/// Each calling thread has its own.
thread_local Mock mock;

/// A private system bus for this process. The bus exists as long as the object.
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

    /// Pauses the bus until Resume(). A paused bus accepts connections and messages, but does not reply.
    void Pause() const { kill(static_cast<pid_t>(daemon.processId()), SIGSTOP); }
    void Resume() const { kill(static_cast<pid_t>(daemon.processId()), SIGCONT); }

private:
    QTemporaryDir directory;
    QProcess daemon;
};

using ReplyHandler = std::function<int(sd_bus_message*)>;

/// Acts as the daemon on a thread of this process.
class Server
{
public:
    explicit Server(ReplyHandler replyHandler)
        : handler(std::move(replyHandler)), wake(eventfd(0, EFD_CLOEXEC))
    {
        if (sd_bus_open_system(&bus) < 0 ||
            sd_bus_add_object(bus, nullptr, "/com/zelmora/velodesk", &Server::HandleCall, this) < 0 ||
            sd_bus_request_name(bus, "com.zelmora.velodesk", 0) < 0) {
            qFatal("the server cannot connect to the bus");
        }
        thread = std::thread([this] { Serve(); });
    }
    ~Server()
    {
        Disconnect();
        close(wake);
    }
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    /// Disconnects from the bus. Returns after the bus has removed the connection.
    void Disconnect()
    {
        if (!thread.joinable()) {
            return;
        }
        eventfd_write(wake, 1);
        thread.join();
        const char* name = nullptr;
        sd_bus_get_unique_name(bus, &name);
        const std::string uniqueName = name;
        sd_bus_flush_close_unref(bus);
        while (IsConnected(uniqueName)) {
            std::this_thread::yield();
        }
    }

    /// The received calls as "destination path interface member signature argument". Complete after
    /// Disconnect().
    QStringList calls;

private:
    static bool IsConnected(const std::string& name)
    {
        sd_bus* connection = nullptr;
        sd_bus_message* reply = nullptr;
        int hasOwner = 0;
        if (sd_bus_open_system(&connection) < 0 ||
            sd_bus_call_method(connection, "org.freedesktop.DBus", "/org/freedesktop/DBus",
                               "org.freedesktop.DBus", "NameHasOwner", nullptr, &reply, "s",
                               name.c_str()) < 0 ||
            sd_bus_message_read(reply, "b", &hasOwner) < 0) {
            qFatal("the bus does not answer");
        }
        sd_bus_message_unref(reply);
        sd_bus_flush_close_unref(connection);
        return hasOwner != 0;
    }

    static int HandleCall(sd_bus_message* message, void* server, sd_bus_error*)
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
        const int result = self.handler(message);
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

    ReplyHandler handler;
    int wake;
    sd_bus* bus = nullptr;
    std::thread thread;
};

ReplyHandler Text(const std::string& text)
{
    return [text](sd_bus_message* call) {
        return sd_bus_reply_method_return(call, "s", text.c_str());
    };
}

ReplyHandler Failure(const std::string& message)
{
    return [message](sd_bus_message* call) {
        return sd_bus_reply_method_errorf(call, SD_BUS_ERROR_TIMEOUT, "%s", message.c_str());
    };
}

const ReplyHandler NONE = [](sd_bus_message*) {
    return 0;
};

/// The result of a call. The initial texts show whether the call has assigned new ones.
struct Outcome
{
    int code = 0;
    std::string result = "left over";
    std::string error = "left over";
};

using CallFunction = int (*)(const std::string&, std::string&, std::string&);

Outcome Call(const std::string& command = "velodeskd --exit",
             CallFunction function = &Utils::ExecutePopenAndReturnByDbus)
{
    Outcome outcome;
    outcome.code = function(command, outcome.result, outcome.error);
    return outcome;
}

int OpenFiles()
{
    return static_cast<int>(QDir(QStringLiteral("/proc/self/fd")).entryList(QDir::AllEntries).size());
}

QString DroppedLine(int sender, int daemon)
{
    return QStringLiteral("Failed to msg reply id: %1 != velodeskd pid %2").arg(sender).arg(daemon);
}
} // namespace
Q_DECLARE_METATYPE(CallFunction)

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
sd_bus_creds* RealUnrefCreds(sd_bus_creds* creds) __asm__("__real_sd_bus_creds_unref");
sd_bus_creds* WrappedUnrefCreds(sd_bus_creds* creds) __asm__("__wrap_sd_bus_creds_unref");
void RealFree(sd_bus_error* error) __asm__("__real_sd_bus_error_free");
void WrappedFree(sd_bus_error* error) __asm__("__wrap_sd_bus_error_free");

int WrappedCall(sd_bus* bus, sd_bus_message* message, uint64_t usec, sd_bus_error* error,
                sd_bus_message** reply)
{
    mock.timeout = usec;
    if (mock.callResult < 0) {
        // The error has no message.
        return mock.callResult;
    }
    const int result = RealCall(bus, message, usec, error, reply);
    if (mock.replyIsLost) {
        *reply = sd_bus_message_unref(*reply);
    }
    if (*reply != nullptr) {
        mock.unreleased.insert(*reply);
    }
    if (error->message != nullptr) {
        mock.unreleased.insert(error);
    }
    return mock.Success(result);
}

int WrappedNewCall(sd_bus* bus, sd_bus_message** message, const char* destination, const char* path,
                   const char* interface, const char* member)
{
    if (mock.newCallResult < 0) {
        return mock.newCallResult;
    }
    const int result = RealNewCall(bus, message, destination, path, interface, member);
    mock.unreleased.insert(*message);
    return mock.Success(result);
}

int WrappedQuery(sd_bus_message* message, uint64_t mask, sd_bus_creds** creds)
{
    mock.queriedMask = mask;
    if (mock.beforeSenderQuery) {
        mock.beforeSenderQuery();
    }
    const int result = RealQuery(message, mask, creds);
    if (result >= 0) {
        mock.unreleased.insert(*creds);
    }
    return mock.Success(result);
}

int WrappedPid(sd_bus_creds* creds, pid_t* pid)
{
    return mock.pidResult < 0 ? mock.pidResult : mock.Success(RealPid(creds, pid));
}

int WrappedAppend(sd_bus_message* message, const char* types, ...)
{
    if (mock.appendResult < 0) {
        return mock.appendResult;
    }
    va_list args;
    va_start(args, types);
    const int result = sd_bus_message_appendv(message, types, args);
    va_end(args);
    return mock.Success(result);
}

int WrappedRead(sd_bus_message* message, const char* types, ...)
{
    if (mock.textIsLost) {
        return 1;
    }
    va_list args;
    va_start(args, types);
    const int result = sd_bus_message_readv(message, types, args);
    va_end(args);
    return mock.Success(result);
}

sd_bus_message* WrappedUnref(sd_bus_message* message)
{
    mock.unreleased.erase(message);
    return RealUnref(message);
}

sd_bus_creds* WrappedUnrefCreds(sd_bus_creds* creds)
{
    mock.unreleased.erase(creds);
    return RealUnrefCreds(creds);
}

void WrappedFree(sd_bus_error* error)
{
    mock.unreleased.erase(error);
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
    void replyOfTheDaemonIsAccepted_data();
    void replyOfTheDaemonIsAccepted();
    void everyCallIsLogged();
    void replyOfAnotherProcessIsDropped_data();
    void replyOfAnotherProcessIsDropped();
    void everyReplyIsDroppedBeforeTheDaemonsIdIsSet();
    void replyIsAcceptedAfterTheDaemonsIdIsSet();
    void replyOfAnotherTypeFails();
    void replyOfAnotherTypeFromAnotherProcessIsOnlyDropped();
    void missingReplyTimesOut();
    void blockedBusTimesOut();
    void replyIsDroppedIfTheBusBlocksTheSenderQuery();
    void textOfATimeoutIsTheSameInEveryLocale_data();
    void textOfATimeoutIsTheSameInEveryLocale();
    void innerCallKeepsTheTextOfATimeout();
    void otherFailureKeepsItsText_data();
    void otherFailureKeepsItsText();
    void missingBusFails();
    void missingDaemonFailsImmediately();
    void replyOfAnEndedSenderIsDropped();
    void replyOfASenderWithoutAProcessIsDropped();
    void successWithoutReplyIsDropped();
    void replyWithoutItsTextGivesAnEmptyResult();
    void zeroIsSuccess();
    void failureWithoutAReasonHasAnEmptyReason();
    void callThatCannotBeMadeFails();
    void commandThatCannotBeSentFails();
    void commandThatIsNotUtf8Fails();
    void connectionIsClosedEachTime_data();
    void connectionIsClosedEachTime();
    void threadsCanCallConcurrently();

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
    mock = Mock();
    g_velodeskdPid = getpid();
}

void TestDaemonBus::cleanup()
{
    QVERIFY(mock.unreleased.empty());
    mock = Mock();
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
    QTest::addColumn<CallFunction>("function");
    QTest::newRow("outer call") << &Utils::ExecutePopenAndReturnByDbus;
    QTest::newRow("inner call") << &Utils::DBusProcess;
}

void TestDaemonBus::callIsAddressedToTheDaemon()
{
    QFETCH(CallFunction, function);
    Server server(Text("done"));
    QVERIFY(Call("velodeskd --exit", function).code >= 0);
    QVERIFY(Call("", function).code >= 0);
    server.Disconnect();
    const QString address =
        QStringLiteral("com.zelmora.velodesk /com/zelmora/velodesk com.zelmora.velodesk velodeskd s ");
    QCOMPARE(server.calls, QStringList({address + QStringLiteral("velodeskd --exit"), address}));
    // The timeout includes the time for the connection, so the call gets less.
    QVERIFY2(mock.timeout <= TIMEOUT_US && mock.timeout > TIMEOUT_US / 2,
             qPrintable(QString::number(mock.timeout)));
    QCOMPARE(mock.queriedMask, uint64_t(1));
}

void TestDaemonBus::replyOfTheDaemonIsAccepted_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("word") << QByteArray("done");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("untrimmed") << QByteArray("  two\nlines \n");
    QTest::newRow("Chinese") << QByteArray("投屏助手");
    QTest::newRow("percent signs") << QByteArray("100%s");
    QTest::newRow("long") << QByteArray(100000, 'x');
}

void TestDaemonBus::replyOfTheDaemonIsAccepted()
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

void TestDaemonBus::replyOfAnotherProcessIsDropped_data()
{
    QTest::addColumn<int>("daemon");
    QTest::newRow("next process") << getpid() + 1;
    QTest::newRow("first process") << 1;
    QTest::newRow("no process") << 0;
    QTest::newRow("invalid process id") << -1;
}

void TestDaemonBus::replyOfAnotherProcessIsDropped()
{
    QFETCH(int, daemon);
    g_velodeskdPid = daemon;
    const Server server(Text("done"));
    const Outcome outcome = Call();
    QVERIFY(outcome.code >= 0);
    QCOMPARE(outcome.result, std::string());
    QCOMPARE(outcome.error, std::string());
    QCOMPARE(Levels(), Errors({DroppedLine(getpid(), daemon)}));
}

void TestDaemonBus::everyReplyIsDroppedBeforeTheDaemonsIdIsSet()
{
    g_velodeskdPid = pidAtStart;
    const Server server(Text("done"));
    QCOMPARE(Call().result, std::string());
    COMPARE_LISTS(log->Messages(), QStringList(DroppedLine(getpid(), 0)));
}

void TestDaemonBus::replyIsAcceptedAfterTheDaemonsIdIsSet()
{
    g_velodeskdPid = 0;
    Utils::SetDbusServerPid(getpid());
    QCOMPARE(g_velodeskdPid, getpid());
    const Server server(Text("done"));
    QCOMPARE(Call().result, std::string("done"));
}

void TestDaemonBus::replyOfAnotherTypeFails()
{
    const Server server([](sd_bus_message* call) { return sd_bus_reply_method_return(call, "i", 5); });
    const Outcome outcome = Call();
    QVERIFY(outcome.code < 0);
    QCOMPARE(outcome.result, std::string());
    QCOMPARE(outcome.error, std::string());
    QCOMPARE(Levels(), Errors({QStringLiteral("sd_bus_message_read failed.")}));
}

void TestDaemonBus::replyOfAnotherTypeFromAnotherProcessIsOnlyDropped()
{
    g_velodeskdPid = 1;
    const Server server([](sd_bus_message* call) { return sd_bus_reply_method_return(call, "i", 5); });
    QVERIFY(Call().code >= 0);
    QCOMPARE(Levels(), Errors({DroppedLine(getpid(), 1)}));
}

void TestDaemonBus::missingReplyTimesOut()
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

void TestDaemonBus::replyIsDroppedIfTheBusBlocksTheSenderQuery()
{
    const Server server(Text("done"));
    mock.beforeSenderQuery = [this] {
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
    QCOMPARE(log->Messages().value(1), DroppedLine(-ETIMEDOUT, getpid()));
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
    QTest::newRow("other text") << QByteArray("Not now");
    QTest::newRow("text after") << QByteArray("Connection timed out.");
    QTest::newRow("text before") << QByteArray("The Connection timed out");
    QTest::newRow("other case") << QByteArray("connection timed out");
    QTest::newRow("Chinese, text after") << QByteArray("连接超时。");
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

void TestDaemonBus::replyOfAnEndedSenderIsDropped()
{
    Server server(Text("done"));
    mock.beforeSenderQuery = [&server] {
        server.Disconnect();
    };
    const Outcome outcome = Call();
    QVERIFY(outcome.code >= 0);
    QCOMPARE(outcome.result, std::string());
    QCOMPARE(outcome.error, std::string());
    QCOMPARE(Levels(), Errors({QStringLiteral("sd_bus_query_sender_creds failed: 6, creds = (nil)"),
                               DroppedLine(-6, getpid())}));
}

void TestDaemonBus::replyOfASenderWithoutAProcessIsDropped()
{
    mock.pidResult = -ENODATA;
    const Server server(Text("done"));
    const Outcome outcome = Call();
    QVERIFY(outcome.code >= 0);
    QCOMPARE(outcome.result, std::string());
    const QStringList lines = Levels();
    QCOMPARE(lines.size(), 2);
    const QRegularExpression first(
        QStringLiteral("^ERROR UTILS sd_bus_creds_get_pid failed: %1, creds = 0x[0-9a-f]+\\z").arg(ENODATA));
    QVERIFY2(first.match(lines.first()).hasMatch(), qPrintable(lines.first()));
    QCOMPARE(lines.last(), Errors({DroppedLine(-ENODATA, getpid())}).first());
}

void TestDaemonBus::successWithoutReplyIsDropped()
{
    mock.replyIsLost = true;
    const Server server(Text("done"));
    const Outcome outcome = Call();
    QVERIFY(outcome.code >= 0);
    QCOMPARE(outcome.result, std::string());
    QCOMPARE(Levels(), Errors({DroppedLine(-1, getpid())}));
}

void TestDaemonBus::replyWithoutItsTextGivesAnEmptyResult()
{
    mock.textIsLost = true;
    const Server server(Text("done"));
    const Outcome outcome = Call();
    QCOMPARE(outcome.code, 1);
    QCOMPARE(outcome.result, std::string());
    QCOMPARE(Levels(), QStringList());
}

void TestDaemonBus::zeroIsSuccess()
{
    mock.successIsZero = true;
    const Server server(Text("done"));
    const Outcome outcome = Call();
    QCOMPARE(outcome.code, 0);
    QCOMPARE(outcome.result, std::string("done"));
    QCOMPARE(outcome.error, std::string());
    QCOMPARE(Levels(), QStringList());
}

void TestDaemonBus::failureWithoutAReasonHasAnEmptyReason()
{
    mock.callResult = -EIO;
    const Outcome outcome = Call();
    QCOMPARE(outcome.code, -EIO);
    QCOMPARE(outcome.result, std::string());
    QCOMPARE(outcome.error, std::string());
    QCOMPARE(Levels(), Errors({QStringLiteral("Failed to call method, reason: ")}));
}

void TestDaemonBus::callThatCannotBeMadeFails()
{
    mock.newCallResult = -ENOMEM;
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
    mock.appendResult = -ENOMEM;
    const Outcome outcome = Call();
    QCOMPARE(outcome.code, -ENOMEM);
    QCOMPARE(outcome.result, std::string());
    QCOMPARE(outcome.error, std::string());
    QCOMPARE(Levels(), Errors({QStringLiteral("Failed to sd_bus_message_append")}));
}

void TestDaemonBus::commandThatIsNotUtf8Fails()
{
    // The bus accepts only UTF-8. Older versions of the library detect the error only when they send the
    // message.
    const Server server(Text("done"));
    const Outcome outcome = Call("\xff");
    QVERIFY(outcome.code < 0);
    QCOMPARE(outcome.result, std::string());
}

void TestDaemonBus::connectionIsClosedEachTime_data()
{
    QTest::addColumn<bool>("isServed");
    QTest::addColumn<QByteArray>("command");
    QTest::newRow("reply") << true << QByteArray("command");
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

void TestDaemonBus::threadsCanCallConcurrently()
{
    constexpr int THREADS = 4;
    constexpr int CALLS = 20;
    const Server server([](sd_bus_message* call) {
        const char* command = nullptr;
        sd_bus_message_rewind(call, 1);
        sd_bus_message_read(call, "s", &command);
        return sd_bus_reply_method_return(call, "s", command);
    });
    std::atomic<int> correct{0};
    std::vector<std::thread> threads;
    for (int thread = 0; thread < THREADS; ++thread) {
        threads.emplace_back([&correct, thread] {
            for (int i = 0; i < CALLS; ++i) {
                const std::string command = std::to_string(thread) + "/" + std::to_string(i);
                std::string result;
                std::string error;
                if (Utils::ExecutePopenAndReturnByDbus(command, result, error) >= 0 && result == command) {
                    ++correct;
                }
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    QCOMPARE(correct.load(), THREADS * CALLS);
    COMPARE_LISTS(log->Messages(), QStringList());
}

QTEST_GUILESS_MAIN(TestDaemonBus)
#include "TestDaemonBus.moc"
