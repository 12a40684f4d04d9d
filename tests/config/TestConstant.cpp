#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>
#include <climits>
#include <iterator>
#include <memory>

#include "config/Constant.h"
#include "support/Files.h"
#include "support/Lists.h"

namespace {
const QString DATA = QStringLiteral("/Velodesk/");
const QString LOG = QStringLiteral("/Velodesk/log");

/// All texts in the order of their names. <data> and <log> stand for the results of the directory getters.
constexpr struct
{
    Velodesk::StrConstName name;
    const char* text;
} TEXTS[] = {
    {Velodesk::DATA_DIR, "<data>"},
    {Velodesk::LOG_FILE, "<log>/velodesk.log"},
    {Velodesk::CONF_FILE, "<data>/velodesk.conf"},
    {Velodesk::ENGINE_PATH, "/opt/apps/com.zelmora.velodesk/files/tandra/bin/Tandra"},
    {Velodesk::ENGINE_IPC_NAME, "<data>TandraIpc"},
    {Velodesk::ENGINE_SECTION, "Tandra"},
    {Velodesk::SERVER_SECTION, "VelodeskServer"},
    {Velodesk::KEY_DEVICE_NAME, "devicename"},
    {Velodesk::KEY_STATEMENT, "statement"},
    {Velodesk::KEY_TRUST_NUM, "trustNum"},
    {Velodesk::KEY_FILE_STORE_PATH, "fileStorePath"},
};
constexpr int TEXT_COUNT = int(std::size(TEXTS));

/// Returns a line for each text, with its number.
QStringList Table(const QString& dataDir, const QString& logDir)
{
    QStringList lines;
    for (const auto& row : TEXTS) {
        lines.append(QString::number(lines.size()) + QLatin1Char(' ') +
                     QString::fromLatin1(row.text)
                         .replace(QLatin1String("<data>"), dataDir)
                         .replace(QLatin1String("<log>"), logDir));
    }
    return lines;
}

/// Returns the probe's output: the table, and a constant that it read before main().
QStringList Probed(const QString& dataDir, const QString& logDir)
{
    return Table(dataDir, logDir) << QStringLiteral("early Tandra");
}
} // namespace

class TestConstant : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void textsAreNumberedInTheirOrder();
    void numbersAreInTheirTable();
    void otherNamesAreEmptyOrZero_data();
    void otherNamesAreEmptyOrZero();
    void valueIsACopy();

    void directoriesExistBeforeMain_data();
    void directoriesExistBeforeMain();
    void existingDirectoriesAreKept();
    void settingsPathHasADoubleSlashAndTheSocketPathNone();
    void missingHomeDoesNotPreventTheTable_data();
    void missingHomeDoesNotPreventTheTable();
    void readOnlyHomeGivesATableWithoutDirectories();
    void missingHomeIsReplacedByTheRootDirectory();

private:
    /// Returns the probe's output in a file system in which only this test's directory is writable.
    QStringList Probe(const QByteArray& home, const QStringList& directories = {});
    QStringList Run(const QStringList& world, const QByteArray& home, const QStringList& directories);

    std::unique_ptr<QTemporaryDir> directory;
    QString home;
};

void TestConstant::init()
{
    directory = std::make_unique<QTemporaryDir>();
    home = directory->filePath(QStringLiteral("a"));
    QVERIFY(QDir().mkdir(home));
    SetMode(home, 0755);
}

void TestConstant::cleanup()
{
    directory.reset();
}

QStringList TestConstant::Run(const QStringList& world, const QByteArray& variable,
                              const QStringList& directories)
{
    QStringList arguments = world;
    arguments << QStringLiteral("--cap-drop") << QStringLiteral("ALL") << QStringLiteral("--die-with-parent");
    if (variable.isNull()) {
        arguments << QStringLiteral("--unsetenv") << QStringLiteral("HOME");
    } else {
        arguments << QStringLiteral("--setenv") << QStringLiteral("HOME") << QString::fromLocal8Bit(variable);
    }
    arguments << QStringLiteral("--") << QStringLiteral(CONSTANTPROBE) << QString::number(TEXT_COUNT)
              << directories;
    QProcess probe;
    probe.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    probe.start(QStringLiteral("bwrap"), arguments);
    if (!probe.waitForFinished() || probe.exitStatus() != QProcess::NormalExit || probe.exitCode() != 0) {
        return {QStringLiteral("the probe failed")};
    }
    QStringList lines = QString::fromLocal8Bit(probe.readAllStandardOutput()).split(QLatin1Char('\n'));
    lines.removeLast();
    return lines;
}

QStringList TestConstant::Probe(const QByteArray& variable, const QStringList& directories)
{
    return Run({QStringLiteral("--ro-bind"), QStringLiteral("/"), QStringLiteral("/"),
                QStringLiteral("--bind"), directory->path(), directory->path()},
               variable, directories);
}

void TestConstant::textsAreNumberedInTheirOrder()
{
    QStringList lines;
    for (const auto& row : TEXTS) {
        lines.append(QStringLiteral("%1 %2")
                         .arg(int(row.name))
                         .arg(QString::fromStdString(
                             Constant<Velodesk::StrConstName, std::string>::GetConstant(row.name))));
    }
    const QString own = QString::fromLocal8Bit(qgetenv("HOME"));
    QCOMPARE(lines, Table(own + DATA, own + LOG));
}

void TestConstant::numbersAreInTheirTable()
{
    QCOMPARE(int(Velodesk::APP_STOP_TIMEOUT_MS), 0);
    QCOMPARE((Constant<Velodesk::IntConstName, int>::GetConstant(Velodesk::APP_STOP_TIMEOUT_MS)), 3000);
    QCOMPARE(GetConstant(Velodesk::APP_STOP_TIMEOUT_MS), 3000);
}

void TestConstant::otherNamesAreEmptyOrZero_data()
{
    QTest::addColumn<int>("text");
    QTest::addColumn<int>("number");
    QTest::newRow("the next") << TEXT_COUNT << 1;
    QTest::newRow("the largest") << INT_MAX << INT_MAX;
    QTest::newRow("negative") << -1 << -1;
}

void TestConstant::otherNamesAreEmptyOrZero()
{
    QFETCH(int, text);
    QFETCH(int, number);
    QCOMPARE(GetConstant(static_cast<Velodesk::StrConstName>(text)), std::string());
    QCOMPARE(GetConstant(static_cast<Velodesk::IntConstName>(number)), 0);
}

void TestConstant::valueIsACopy()
{
    std::string text = GetConstant(Velodesk::ENGINE_SECTION);
    text += "changed";
    QCOMPARE(GetConstant(Velodesk::ENGINE_SECTION), std::string("Tandra"));
}

void TestConstant::directoriesExistBeforeMain_data()
{
    QTest::addColumn<int>("mask");
    QTest::newRow("wide mask") << 0;
    QTest::newRow("common mask") << 022;
}

void TestConstant::directoriesExistBeforeMain()
{
    QFETCH(int, mask);
    const Umask umaskOfThisTest(static_cast<mode_t>(mask));
    const QStringList there{QStringLiteral("there"), QStringLiteral("there")};
    QCOMPARE(Probe(home.toLocal8Bit(), {home + DATA, home + LOG}), there + Probed(home + DATA, home + LOG));
    QCOMPARE(ModeOf(home + QStringLiteral("/Velodesk")), mode_t(0700));
    QCOMPARE(ModeOf(home + LOG), mode_t(0700));
    QCOMPARE(ModeOf(home), mode_t(0755));
    // The program creates no files and no directories of the engine.
    COMPARE_LISTS(QDir(home + DATA).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
                  QStringList(QStringLiteral("log")));
    QVERIFY(QDir(home + LOG).isEmpty());
}

void TestConstant::existingDirectoriesAreKept()
{
    QVERIFY(QDir().mkpath(home + LOG));
    SetMode(home + QStringLiteral("/Velodesk"), 0755);
    SetMode(home + LOG, 0750);
    WriteAll(home + QStringLiteral("/Velodesk/velodesk.conf"), "text");
    QCOMPARE(Probe(home.toLocal8Bit()), Probed(home + DATA, home + LOG));
    QCOMPARE(ModeOf(home + QStringLiteral("/Velodesk")), mode_t(0755));
    QCOMPARE(ModeOf(home + LOG), mode_t(0750));
    QCOMPARE(ReadAll(home + QStringLiteral("/Velodesk/velodesk.conf")), QByteArray("text"));
}

void TestConstant::settingsPathHasADoubleSlashAndTheSocketPathNone()
{
    const QStringList table = Probe(home.toLocal8Bit());
    QCOMPARE(table.at(2), QStringLiteral("2 ") + home + QStringLiteral("/Velodesk//velodesk.conf"));
    QCOMPARE(table.at(4), QStringLiteral("4 ") + home + QStringLiteral("/Velodesk/TandraIpc"));
}

void TestConstant::missingHomeDoesNotPreventTheTable_data()
{
    QTest::addColumn<QByteArray>("value");
    QTest::newRow("unset") << QByteArray();
    QTest::newRow("empty") << QByteArray("");
    QTest::newRow("missing") << QByteArray("/nowhere/at/all");
    QTest::newRow("file") << QByteArray("/proc/self/exe");
}

void TestConstant::missingHomeDoesNotPreventTheTable()
{
    QFETCH(QByteArray, value);
    QCOMPARE(Probe(value), Probed(QString(), QString()));
}

void TestConstant::readOnlyHomeGivesATableWithoutDirectories()
{
    SetMode(home, 0500);
    QCOMPARE(Probe(home.toLocal8Bit()), Probed(QString(), QString()));
    SetMode(home, 0700);
    QVERIFY(QDir(home).isEmpty());
    // Now only the log directory cannot be created.
    QVERIFY(QDir().mkdir(home + DATA));
    SetMode(home + QStringLiteral("/Velodesk"), 0500);
    QCOMPARE(Probe(home.toLocal8Bit()), Probed(home + DATA, QString()));
    SetMode(home + QStringLiteral("/Velodesk"), 0700);
}

void TestConstant::missingHomeIsReplacedByTheRootDirectory()
{
    // The process can write to the root directory, because it runs in a separate root file system.
    const QString programs = QFileInfo(QStringLiteral(CONSTANTPROBE)).path();
    QStringList world{QStringLiteral("--proc"), QStringLiteral("/proc"), QStringLiteral("--ro-bind"),
                      programs, programs};
    // /lib is a link into /usr or, on older systems, a folder. A bind mount works for both.
    for (const QString& folder : {QStringLiteral("/usr"), QStringLiteral("/lib"), QStringLiteral("/lib64")}) {
        world << QStringLiteral("--ro-bind") << folder << folder;
    }
    QCOMPARE(Run(world, QByteArray(), {DATA, LOG}),
             QStringList({QStringLiteral("there"), QStringLiteral("there")}) + Probed(DATA, LOG));
    QVERIFY(!QFileInfo::exists(DATA));
}

QTEST_GUILESS_MAIN(TestConstant)
#include "TestConstant.moc"
