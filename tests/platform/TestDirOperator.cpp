#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>
#include <cstring>
#include <dirent.h>
#include <memory>
#include <thread>
#include <unistd.h>

#include "platform/DirOperator.h"
#include "support/CapturedLog.h"
#include "support/Environment.h"
#include "support/EveryLine.h"
#include "support/Files.h"
#include "support/SmallStack.h"
#include "support/UnprivilegedUser.h"

namespace {
constexpr int CREATE_DIR_FAILED = 100;
constexpr int REMOVE_DIR_FAILED = 102;
const QString ERROR = QStringLiteral("ERROR");
const QString INFO = QStringLiteral("INFO");
const QString NO_DIR = QStringLiteral("dir:%1 not exist!");

/// Returns the names in a directory in the order of readdir().
QStringList EntriesInOrder(const QString& path)
{
    QStringList names;
    DIR* directory = opendir(Local(path).c_str());
    while (const dirent* entry = readdir(directory)) {
        const QString name = QString::fromLocal8Bit(entry->d_name);
        if (name != QLatin1String(".") && name != QLatin1String("..")) {
            names.append(name);
        }
    }
    closedir(directory);
    return names;
}

dirent Entry(const QByteArray& name, unsigned char type)
{
    dirent entry{};
    entry.d_type = type;
    std::strncpy(entry.d_name, name.constData(), sizeof entry.d_name - 1);
    return entry;
}

/// Whether another process creates a directory immediately before the intercepted mkdir() does.
bool anotherProcessIsFaster = false;
} // namespace

int RealMkdir(const char* path, mode_t mode) __asm__("__real_mkdir");
int WrappedMkdir(const char* path, mode_t mode) __asm__("__wrap_mkdir");

int WrappedMkdir(const char* path, mode_t mode)
{
    if (anotherProcessIsFaster) {
        RealMkdir(path, mode);
    }
    return RealMkdir(path, mode);
}

class TestDirOperator : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void directoryExists_data();
    void directoryExists();
    void allPermissionsAreNeeded_data();
    void allPermissionsAreNeeded();
    void isPathLinkIsTrueForLinksOnly_data();
    void isPathLinkIsTrueForLinksOnly();
    void linkOfAnyLengthIsALink_data();
    void linkOfAnyLengthIsALink();

    void directoryIsCreatedWithItsMode_data();
    void directoryIsCreatedWithItsMode();
    void existingDirectoryKeepsItsMode();
    void creationSucceedsIfAnotherProcessIsFaster();
    void directoryThatCannotBeCreatedFails_data();
    void directoryThatCannotBeCreatedFails();
    void everyMissingLevelIsCreated_data();
    void everyMissingLevelIsCreated();
    void existingLevelsKeepTheirModes();
    void relativeLevelsStartInTheCurrentDirectory();
    void creationStopsAtTheFirstLevelThatFails();

    void directoryIsRemovedWithItsContent();
    void everyRemovalIsLoggedBeforeItIsTried();
    void deepDirectoriesAreRemovedOnASmallStack();
    void missingDirectoryIsNotRemoved_data();
    void missingDirectoryIsNotRemoved();
    void linksAreRemovedAndNotFollowed();
    void removalStopsAtTheFirstEntryThatFails();
    void removalFailsIfTheParentIsNotWritable();
    void unreadableDirectoryInsideIsLoggedAtEachLevel();
    void entryTypeDecidesTheRemoval();
    void lengthOfAnEntrysPathIsLimited();

    void homeIsTheUsersDirectory();
    void missingHomeIsLogged_data();
    void missingHomeIsLogged();
    void homeThatIsNotSetIsNotLogged();
    void perUserDirectoriesAreCreated_data();
    void perUserDirectoriesAreCreated();
    void existingPerUserDirectoriesKeepTheirMode_data();
    void existingPerUserDirectoriesKeepTheirMode();
    void perUserDirectoriesThatCannotBeCreatedAreLogged_data();
    void perUserDirectoriesThatCannotBeCreatedAreLogged();

    void enginesDirectoriesAreNotCreated_data();
    void enginesDirectoriesAreNotCreated();
    void enginesDirectoriesAreEmptyWithoutAHome_data();
    void enginesDirectoriesAreEmptyWithoutAHome();
    void othersDirectoryIsCreatedLevelByLevel();
    void othersDirectoryIsCreatedOnce();
    void othersDirectoryNeedsAHome();
    void othersDirectoryThatCannotBeCreatedFails();
    void desktopPathComesFromXdgUserDir();
    void instanceIsTheSameEachTime();

private:
    QString At(const QString& name) const { return directory->filePath(name); }
    /// Verifies that all lines have that level, the tag of the shared code and these messages.
    void CompareLines(const QString& level, const QStringList& messages) const;

    std::unique_ptr<QTemporaryDir> directory;
    std::unique_ptr<Variable> home;
    std::unique_ptr<CapturedLog> log;
    Brevora::DirOperator dirs;
};

void TestDirOperator::init()
{
    directory = std::make_unique<QTemporaryDir>();
    home = std::make_unique<Variable>("HOME", directory->path().toLocal8Bit());
    log = std::make_unique<CapturedLog>();
}

void TestDirOperator::cleanup()
{
    log.reset();
    home.reset();
    directory.reset();
}

void TestDirOperator::CompareLines(const QString& level, const QStringList& messages) const
{
    COMPARE_LISTS(log->Messages(), messages);
    const QList<CapturedLog::Line> lines = log->Lines();
    for (const CapturedLog::Line& line : lines) {
        QCOMPARE(line.level, level);
        QCOMPARE(line.module, QStringLiteral("UTILS"));
    }
}

void TestDirOperator::directoryExists_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("exists");
    QTest::newRow("directory") << QStringLiteral("directory") << true;
    QTest::newRow("slash at the end") << QStringLiteral("directory/") << true;
    QTest::newRow("link to a directory") << QStringLiteral("to directory") << true;
    QTest::newRow("file") << QStringLiteral("file") << false;
    QTest::newRow("link to a file") << QStringLiteral("to file") << false;
    QTest::newRow("dangling link") << QStringLiteral("dangling") << false;
    QTest::newRow("missing") << QStringLiteral("missing") << false;
}

void TestDirOperator::directoryExists()
{
    QFETCH(QString, name);
    QVERIFY(QDir().mkdir(At("directory")));
    WriteAll(At("file"), "text");
    QVERIFY(QFile::link(At("directory"), At("to directory")));
    QVERIFY(QFile::link(At("file"), At("to file")));
    QVERIFY(QFile::link(At("missing"), At("dangling")));
    QTEST(dirs.IsDirExist(Local(At(name))), "exists");
    QVERIFY(!dirs.IsDirExist(""));
    CompareLines(QString(), {});
}

void TestDirOperator::allPermissionsAreNeeded_data()
{
    QTest::addColumn<int>("mode");
    QTest::addColumn<bool>("all");
    QTest::newRow("all") << 0700 << true;
    QTest::newRow("no execution") << 0600 << false;
    QTest::newRow("no writing") << 0500 << false;
    QTest::newRow("no reading") << 0300 << false;
    QTest::newRow("none") << 0 << false;
}

void TestDirOperator::allPermissionsAreNeeded()
{
    QFETCH(int, mode);
    WriteAll(At("file"), "text");
    SetMode(At("file"), static_cast<mode_t>(mode));
    bool seen = false;
    bool missing = true;
    std::thread([this, &seen, &missing] {
        UnprivilegedUser::Stay();
        seen = dirs.IsFileHasAllMode(Local(At("file")));
        missing = dirs.IsFileHasAllMode(Local(At("missing")));
    }).join();
    QTEST(seen, "all");
    QVERIFY(!missing);
}

void TestDirOperator::isPathLinkIsTrueForLinksOnly_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("isLink");
    QTest::newRow("directory") << QStringLiteral("directory") << false;
    QTest::newRow("file") << QStringLiteral("file") << false;
    QTest::newRow("missing") << QStringLiteral("missing") << false;
    QTest::newRow("link to a directory") << QStringLiteral("to directory") << true;
    QTest::newRow("link to a file") << QStringLiteral("to file") << true;
    QTest::newRow("dangling link") << QStringLiteral("dangling") << true;
    QTest::newRow("file below a link") << QStringLiteral("to directory/file") << false;
}

void TestDirOperator::isPathLinkIsTrueForLinksOnly()
{
    QFETCH(QString, name);
    QVERIFY(QDir().mkdir(At("directory")));
    WriteAll(At("directory/file"), "text");
    WriteAll(At("file"), "text");
    QVERIFY(QFile::link(At("directory"), At("to directory")));
    QVERIFY(QFile::link(At("file"), At("to file")));
    QVERIFY(QFile::link(At("missing"), At("dangling")));
    QTEST(dirs.IsPathLink(Local(At(name))), "isLink");
}

void TestDirOperator::linkOfAnyLengthIsALink_data()
{
    QTest::addColumn<int>("length");
    for (const int length : {1, 254, 255, 256, 300, 4000}) {
        QTest::addRow("%d", length) << length;
    }
}

void TestDirOperator::linkOfAnyLengthIsALink()
{
    QFETCH(int, length);
    QCOMPARE(symlink(std::string(static_cast<std::size_t>(length), 'x').c_str(), Local(At("link")).c_str()),
             0);
    QVERIFY(dirs.IsPathLink(Local(At("link"))));
}

void TestDirOperator::directoryIsCreatedWithItsMode_data()
{
    QTest::addColumn<int>("mode");
    QTest::addColumn<int>("made");
    QTest::newRow("private") << 0700 << 0700;
    QTest::newRow("wide, reduced by the mask") << 0777 << 0755;
    QTest::newRow("read only") << 0500 << 0500;
}

void TestDirOperator::directoryIsCreatedWithItsMode()
{
    QFETCH(int, mode);
    QFETCH(int, made);
    const Umask mask(022);
    QCOMPARE(dirs.CreateDir(Local(At("new")), static_cast<mode_t>(mode)), 0);
    QVERIFY(QFileInfo(At("new")).isDir());
    QCOMPARE(ModeOf(At("new")), static_cast<mode_t>(made));
}

void TestDirOperator::existingDirectoryKeepsItsMode()
{
    QVERIFY(QDir().mkdir(At("directory")));
    SetMode(At("directory"), 0755);
    QCOMPARE(dirs.CreateDir(Local(At("directory")), 0700), 0);
    QCOMPARE(ModeOf(At("directory")), mode_t(0755));
    QVERIFY(QFile::link(At("directory"), At("link")));
    QCOMPARE(dirs.CreateDir(Local(At("link")), 0700), 0);
    QVERIFY(QFileInfo(At("link")).isSymLink());
}

void TestDirOperator::creationSucceedsIfAnotherProcessIsFaster()
{
    anotherProcessIsFaster = true;
    const int result = dirs.CreateDir(Local(At("new")), 0700);
    anotherProcessIsFaster = false;
    QCOMPARE(result, 0);
}

void TestDirOperator::directoryThatCannotBeCreatedFails_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("file in its place") << QStringLiteral("file");
    QTest::newRow("dangling link in its place") << QStringLiteral("dangling");
    QTest::newRow("missing parent") << QStringLiteral("missing/new");
    QTest::newRow("parent that is not writable") << QStringLiteral("closed/new");
}

void TestDirOperator::directoryThatCannotBeCreatedFails()
{
    QFETCH(QString, name);
    WriteAll(At("file"), "text");
    QVERIFY(QFile::link(At("nowhere"), At("dangling")));
    QVERIFY(QDir().mkdir(At("closed")));
    SetMode(At("closed"), 0500);
    const UnprivilegedUser user;
    QCOMPARE(dirs.CreateDir(Local(At(name)), 0700), CREATE_DIR_FAILED);
    QVERIFY(!QFileInfo(At(name)).isDir());
    CompareLines(QString(), {});
}

void TestDirOperator::everyMissingLevelIsCreated_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("slash at the end") << QStringLiteral("a/b/c/");
    QTest::newRow("no slash at the end") << QStringLiteral("a/b/c");
    QTest::newRow("two slashes") << QStringLiteral("a//b///c");
}

void TestDirOperator::everyMissingLevelIsCreated()
{
    QFETCH(QString, name);
    const Umask mask(0);
    QCOMPARE(dirs.CreateDirectories(Local(At(name))), 0);
    for (const char* level : {"a", "a/b", "a/b/c"}) {
        QVERIFY(QFileInfo(At(level)).isDir());
        QCOMPARE(ModeOf(At(level)), mode_t(0700));
    }
    QCOMPARE(dirs.CreateDirectories(Local(At(name))), 0);
}

void TestDirOperator::existingLevelsKeepTheirModes()
{
    QVERIFY(QDir().mkdir(At("a")));
    SetMode(At("a"), 0755);
    QCOMPARE(dirs.CreateDirectories(Local(At("a/b"))), 0);
    QCOMPARE(ModeOf(At("a")), mode_t(0755));
    QCOMPARE(ModeOf(At("a/b")), mode_t(0700));
}

void TestDirOperator::relativeLevelsStartInTheCurrentDirectory()
{
    const QString before = QDir::currentPath();
    QVERIFY(QDir::setCurrent(directory->path()));
    const int result = dirs.CreateDirectories("a/b");
    const int nothing = dirs.CreateDirectories("");
    QVERIFY(QDir::setCurrent(before));
    QCOMPARE(result, 0);
    QCOMPARE(nothing, 0);
    QVERIFY(QFileInfo(At("a/b")).isDir());
    QCOMPARE(dirs.CreateDirectories("/"), 0);
}

void TestDirOperator::creationStopsAtTheFirstLevelThatFails()
{
    QVERIFY(QDir().mkdir(At("a")));
    WriteAll(At("a/b"), "text");
    QCOMPARE(dirs.CreateDirectories(Local(At("a/b/c"))), CREATE_DIR_FAILED);
    QCOMPARE(ReadAll(At("a/b")), QByteArray("text"));
    QVERIFY(QFile::remove(At("a/b")));
    SetMode(At("a"), 0500);
    {
        const UnprivilegedUser user;
        QCOMPARE(dirs.CreateDirectories(Local(At("a/b/c"))), CREATE_DIR_FAILED);
    }
    SetMode(At("a"), 0700);
    QVERIFY(QDir(At("a")).isEmpty());
}

void TestDirOperator::directoryIsRemovedWithItsContent()
{
    QVERIFY(QDir().mkpath(At("a/b/c")));
    QVERIFY(QDir().mkpath(At("a/.hidden")));
    for (const char* file : {"a/one", "a/.two", "a/b/three", "a/b/c/four", "a/.hidden/five"}) {
        WriteAll(At(file), "text");
    }
    QVERIFY(QDir().mkdir(At("beside")));
    QCOMPARE(dirs.RemoveDir(Local(At("a"))), 0);
    COMPARE_LISTS(QDir(directory->path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
                  QStringList(QStringLiteral("beside")));
    CompareLines(QString(), {});
}

void TestDirOperator::everyRemovalIsLoggedBeforeItIsTried()
{
    QVERIFY(QDir().mkpath(At("a/b")));
    WriteAll(At("a/b/file"), "text");
    const EveryLine lines;
    QCOMPARE(dirs.RemoveDir(Local(At("a"))), 0);
    const QString line = QStringLiteral("DEBUG UTILS removing dir, file path is %1");
    QCOMPARE(lines.Take(), QStringList({line.arg(At("a/b")), line.arg(At("a/b/file"))}));
}

void TestDirOperator::deepDirectoriesAreRemovedOnASmallStack()
{
    constexpr int LEVELS = 60;
    const QString top = At("top");
    QVERIFY(QDir().mkpath(top + QStringLiteral("/level").repeated(LEVELS)));
    int result = -1;
    RunOnSmallStack([&] { result = dirs.RemoveDir(Local(top)); });
    QCOMPARE(result, 0);
    QVERIFY(!QFileInfo::exists(top));
}

void TestDirOperator::missingDirectoryIsNotRemoved_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("missing") << QStringLiteral("missing");
    QTest::newRow("file") << QStringLiteral("file");
    QTest::newRow("not readable") << QStringLiteral("closed");
}

void TestDirOperator::missingDirectoryIsNotRemoved()
{
    QFETCH(QString, name);
    WriteAll(At("file"), "text");
    QVERIFY(QDir().mkdir(At("closed")));
    SetMode(At("closed"), 0);
    const UnprivilegedUser user;
    QCOMPARE(dirs.RemoveDir(Local(At(name))), -REMOVE_DIR_FAILED);
    CompareLines(ERROR, {QStringLiteral("opendir %1 failed").arg(At(name))});
    QVERIFY(QFileInfo::exists(At("file")));
    QVERIFY(QFileInfo::exists(At("closed")));
}

void TestDirOperator::linksAreRemovedAndNotFollowed()
{
    QVERIFY(QDir().mkpath(At("a/b")));
    QVERIFY(QDir().mkdir(At("target")));
    WriteAll(At("target/file"), "text");
    QVERIFY(QFile::link(At("target"), At("a/to directory")));
    QVERIFY(QFile::link(At("target/file"), At("a/b/to file")));
    QVERIFY(QFile::link(At("missing"), At("a/dangling")));
    QCOMPARE(dirs.RemoveDir(Local(At("a"))), 0);
    QVERIFY(!QFileInfo::exists(At("a")));
    QCOMPARE(ReadAll(At("target/file")), QByteArray("text"));
}

void TestDirOperator::removalStopsAtTheFirstEntryThatFails()
{
    constexpr int FILES = 20;
    QVERIFY(QDir().mkpath(At("a/closed")));
    WriteAll(At("a/closed/file"), "text");
    for (int i = 0; i < FILES; ++i) {
        WriteAll(At(QStringLiteral("a/%1").arg(i)), "text");
    }
    SetMode(At("a/closed"), 0500);
    const QStringList order = EntriesInOrder(At("a"));
    int result = 0;
    {
        const UnprivilegedUser user;
        result = dirs.RemoveDir(Local(At("a")));
    }
    SetMode(At("a/closed"), 0700);
    QCOMPARE(result, -1);
    // The entries before the directory are removed, the entries after it are kept.
    QStringList expected = order.mid(order.indexOf(QStringLiteral("closed")));
    QStringList actual = EntriesInOrder(At("a"));
    expected.sort();
    actual.sort();
    QCOMPARE(actual, expected);
    QVERIFY(QFileInfo::exists(At("a/closed/file")));
    CompareLines(ERROR, {QStringLiteral("unlink failed, %1").arg(At("a/closed/file")),
                         QStringLiteral("RemoveDir failed, %1").arg(At("a"))});
}

void TestDirOperator::removalFailsIfTheParentIsNotWritable()
{
    QVERIFY(QDir().mkpath(At("a/b")));
    WriteAll(At("a/b/file"), "text");
    SetMode(At("a"), 0500);
    int result = 0;
    {
        const UnprivilegedUser user;
        result = dirs.RemoveDir(Local(At("a/b")));
    }
    SetMode(At("a"), 0700);
    QCOMPARE(result, -1);
    QVERIFY(QFileInfo(At("a/b")).isDir());
    QVERIFY(QDir(At("a/b")).isEmpty());
    CompareLines(QString(), {});
}

void TestDirOperator::unreadableDirectoryInsideIsLoggedAtEachLevel()
{
    QVERIFY(QDir().mkpath(At("a/b/c")));
    SetMode(At("a/b/c"), 0);
    int result = 0;
    {
        const UnprivilegedUser user;
        result = dirs.RemoveDir(Local(At("a")));
    }
    SetMode(At("a/b/c"), 0700);
    QCOMPARE(result, -REMOVE_DIR_FAILED);
    CompareLines(ERROR, {QStringLiteral("opendir %1 failed").arg(At("a/b/c")),
                         QStringLiteral("RemoveDir failed, %1").arg(At("a/b")),
                         QStringLiteral("RemoveDir failed, %1").arg(At("a"))});
}

void TestDirOperator::entryTypeDecidesTheRemoval()
{
    QVERIFY(QDir().mkdir(At("a")));
    WriteAll(At("a/file"), "text");
    QVERIFY(QDir().mkdir(At("a/inner")));
    dirent file = Entry("file", DT_REG);
    dirent wrongType = Entry("inner", DT_REG);
    dirent inner = Entry("inner", DT_DIR);
    QCOMPARE(dirs.RemoveDirAll(Local(At("a")), &file), 0);
    QVERIFY(!QFileInfo::exists(At("a/file")));
    QCOMPARE(dirs.RemoveDirAll(Local(At("a")), &wrongType), -1);
    CompareLines(ERROR, {QStringLiteral("unlink failed, %1").arg(At("a/inner"))});
    QCOMPARE(dirs.RemoveDirAll(Local(At("a")), &inner), 0);
    QVERIFY(!QFileInfo::exists(At("a/inner")));
}

void TestDirOperator::lengthOfAnEntrysPathIsLimited()
{
    // With a slash and a name of 95 characters, the path is one character too long.
    const std::string path(4000, 'x');
    dirent longest = Entry(QByteArray(94, 'y'), DT_REG);
    dirent tooLong = Entry(QByteArray(95, 'y'), DT_REG);
    QCOMPARE(dirs.RemoveDirAll(path, &longest), -1);
    // The log line of the failed removal would be too long for the log.
    CompareLines(QString(), {});
    QVERIFY(dirs.RemoveDirAll(path, &tooLong) < 0);
    CompareLines(
        ERROR, {QStringLiteral("remove dir failed %1 for sprintf error").arg(QString::fromStdString(path))});
}

void TestDirOperator::homeIsTheUsersDirectory()
{
    QCOMPARE(dirs.GetUserDir(), Local(directory->path()));
    const Variable slash("HOME", (directory->path() + QStringLiteral("/")).toLocal8Bit());
    QCOMPARE(dirs.GetUserDir(), Local(directory->path()) + "/");
    CompareLines(QString(), {});
}

void TestDirOperator::missingHomeIsLogged_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("missing") << QStringLiteral("missing");
    QTest::newRow("file") << QStringLiteral("file");
    QTest::newRow("empty") << QString();
}

void TestDirOperator::missingHomeIsLogged()
{
    QFETCH(QString, name);
    WriteAll(At("file"), "text");
    const QString value = name.isEmpty() ? QString() : At(name);
    const Variable other("HOME", value.isEmpty() ? QByteArray("") : value.toLocal8Bit());
    QCOMPARE(dirs.GetUserDir(), std::string());
    CompareLines(ERROR, {NO_DIR.arg(value)});
}

void TestDirOperator::homeThatIsNotSetIsNotLogged()
{
    const Variable unset("HOME", QByteArray());
    QVERIFY(!qEnvironmentVariableIsSet("HOME"));
    QCOMPARE(dirs.GetUserDir(), std::string());
    CompareLines(QString(), {});
}

namespace {
using Getter = std::string (Brevora::DirOperator::*)();
using ConstGetter = std::string (Brevora::DirOperator::*)() const;

void AddPerUserGetters()
{
    QTest::addColumn<Getter>("get");
    QTest::addColumn<QString>("field");
    QTest::newRow("data") << &Brevora::DirOperator::GetVelodeskDir << QStringLiteral("/Velodesk/");
    QTest::newRow("log") << &Brevora::DirOperator::GetVelodeskLogDir << QStringLiteral("/Velodesk/log");
}

void AddEngineGetters()
{
    QTest::addColumn<ConstGetter>("get");
    QTest::addColumn<QString>("field");
    QTest::newRow("others") << &Brevora::DirOperator::GetOthersDir
                            << QStringLiteral("/Velodesk/Tandra/others/");
    QTest::newRow("conf") << &Brevora::DirOperator::GetConfDir << QStringLiteral("/Velodesk/Tandra/conf/");
}
} // namespace
Q_DECLARE_METATYPE(Getter)
Q_DECLARE_METATYPE(ConstGetter)

void TestDirOperator::perUserDirectoriesAreCreated_data()
{
    AddPerUserGetters();
}

void TestDirOperator::perUserDirectoriesAreCreated()
{
    QFETCH(Getter, get);
    QFETCH(QString, field);
    const Umask mask(0);
    SetMode(directory->path(), 0755);
    const QString path = directory->path() + field;
    QCOMPARE((dirs.*get)(), Local(path));
    QVERIFY(QFileInfo(path).isDir());
    QCOMPARE(ModeOf(At("Velodesk")), mode_t(0700));
    QCOMPARE(ModeOf(path), mode_t(0700));
    QCOMPARE(ModeOf(directory->path()), mode_t(0755));
    CompareLines(QString(), {});
}

void TestDirOperator::existingPerUserDirectoriesKeepTheirMode_data()
{
    AddPerUserGetters();
}

void TestDirOperator::existingPerUserDirectoriesKeepTheirMode()
{
    QFETCH(Getter, get);
    QFETCH(QString, field);
    const QString path = directory->path() + field;
    QVERIFY(QDir().mkpath(path));
    SetMode(path, 0755);
    QCOMPARE((dirs.*get)(), Local(path));
    QCOMPARE(ModeOf(path), mode_t(0755));
    CompareLines(QString(), {});
}

void TestDirOperator::perUserDirectoriesThatCannotBeCreatedAreLogged_data()
{
    AddPerUserGetters();
}

void TestDirOperator::perUserDirectoriesThatCannotBeCreatedAreLogged()
{
    QFETCH(Getter, get);
    QFETCH(QString, field);
    SetMode(directory->path(), 0500);
    {
        const UnprivilegedUser user;
        QCOMPARE((dirs.*get)(), std::string());
    }
    SetMode(directory->path(), 0700);
    WriteAll(At("Velodesk"), "text");
    QCOMPARE((dirs.*get)(), std::string());
    const QString line = NO_DIR.arg(directory->path() + field);
    CompareLines(ERROR, {line, line});
}

void TestDirOperator::enginesDirectoriesAreNotCreated_data()
{
    AddEngineGetters();
}

void TestDirOperator::enginesDirectoriesAreNotCreated()
{
    QFETCH(ConstGetter, get);
    QFETCH(QString, field);
    const QString path = directory->path() + field;
    QCOMPARE((dirs.*get)(), std::string());
    CompareLines(ERROR, {NO_DIR.arg(path)});
    QVERIFY(QDir(directory->path()).isEmpty());
    QVERIFY(QDir().mkpath(path));
    log->Clear();
    QCOMPARE((dirs.*get)(), Local(path));
    CompareLines(ERROR, {});
}

void TestDirOperator::enginesDirectoriesAreEmptyWithoutAHome_data()
{
    AddEngineGetters();
}

void TestDirOperator::enginesDirectoriesAreEmptyWithoutAHome()
{
    QFETCH(ConstGetter, get);
    QFETCH(QString, field);
    const Variable unset("HOME", QByteArray());
    QCOMPARE((dirs.*get)(), std::string());
    CompareLines(ERROR, {NO_DIR.arg(field)});
}

void TestDirOperator::othersDirectoryIsCreatedLevelByLevel()
{
    const Umask mask(0);
    QCOMPARE(dirs.CreateOthersDir(), 0);
    const QString made = QStringLiteral("CreateOthersDir userdir:") + directory->path();
    COMPARE_LISTS(log->Messages(),
                  QStringList({NO_DIR.arg(At("Velodesk/Tandra/others/")), made + "/", made + "/Velodesk/",
                               made + "/Velodesk/Tandra/", made + "/Velodesk/Tandra/others/"}));
    QVERIFY(log->Contains(INFO, QStringLiteral("UTILS"), made + "/"));
    for (const char* level : {"Velodesk", "Velodesk/Tandra", "Velodesk/Tandra/others"}) {
        QCOMPARE(ModeOf(At(level)), mode_t(0700));
    }
}

void TestDirOperator::othersDirectoryIsCreatedOnce()
{
    const QString path = At("Velodesk/Tandra/others/");
    QVERIFY(QDir().mkpath(path));
    SetMode(path, 0755);
    QCOMPARE(dirs.CreateOthersDir(), 0);
    CompareLines(INFO, {QStringLiteral("CreateOthersDir othersdir:%1 already exist").arg(path)});
    QCOMPARE(ModeOf(path), mode_t(0755));
}

void TestDirOperator::othersDirectoryNeedsAHome()
{
    const Variable unset("HOME", QByteArray());
    QCOMPARE(dirs.CreateOthersDir(), CREATE_DIR_FAILED);
    CompareLines(ERROR, {NO_DIR.arg(QStringLiteral("/Velodesk/Tandra/others/")),
                         QStringLiteral("CreateOthersDir userdir empty!")});
}

void TestDirOperator::othersDirectoryThatCannotBeCreatedFails()
{
    WriteAll(At("Velodesk"), "text");
    QCOMPARE(dirs.CreateOthersDir(), CREATE_DIR_FAILED);
    QCOMPARE(log->Messages().last(), QStringLiteral("CreateOthersDir userdir:%1/").arg(At("Velodesk")));
}

void TestDirOperator::desktopPathComesFromXdgUserDir()
{
    const QString program = At("xdg-user-dir");
    WriteAll(program, "#!/bin/sh\necho \"  /somewhere/$1/$#\"\n");
    SetMode(program, 0700);
    const Variable path("PATH", (directory->path() + QStringLiteral(":")).toLocal8Bit() + qgetenv("PATH"));
    QCOMPARE(dirs.GetDesktopPath(), std::string("/somewhere/DESKTOP/1"));
}

void TestDirOperator::instanceIsTheSameEachTime()
{
    QCOMPARE(&DIR_OPERATOR, &SingletonNew<Brevora::DirOperator>::GetInstance());
}

QTEST_GUILESS_MAIN(TestDirOperator)
#include "TestDirOperator.moc"
