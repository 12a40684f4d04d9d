#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTest>
#include <memory>
#include <sys/stat.h>

#include "IniModel.h"
#include "config/Configure.h"
#include "config/Constant.h"
#include "support/CapturedLog.h"
#include "support/Files.h"
#include "support/UnprivilegedUser.h"

namespace {
const QString INFO = QStringLiteral("INFO");
const QString ERROR = QStringLiteral("ERROR");
const QString VELODESK = QStringLiteral("VELODESK");
constexpr int LIMIT = 1048576;
} // namespace

class TestConfigure : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void firstStartCreatesAnEmptyPrivateFile_data();
    void firstStartCreatesAnEmptyPrivateFile();
    void emptyFileReturnsTheDefaults();
    void getOnAnEmptyFileIsLogged();
    void modeIsSetToPrivateAtEveryStart();
    void fileThatCannotBeCreatedIsLogged();
    void permissionThatCannotBeSetIsLogged();
    void agreementIsStored();
    void onlyTheTextTrueCountsAsAgreement_data();
    void onlyTheTextTrueCountsAsAgreement();
    void trustedPhonesAreCleared_data();
    void trustedPhonesAreCleared();
    void trustedPhonesAreCounted_data();
    void trustedPhonesAreCounted();
    void textsAreStored_data();
    void textsAreStored();
    void textsCannotBeSetToEmpty();
    void everySettingHasItsSectionAndKey();
    void settersKeepOtherSettings();
    void settersKeepModeAndFile();
    void changesOfOtherProcessesAreRead();
    void unreadableFileIsNotChanged_data();
    void unreadableFileIsNotChanged();
    void settersDoNotCreateTheFile();
    void daemonsIdIsZeroAtFirst();
    void singletonCreatesTheFileAndItsDestructionWritesNothing();

private:
    QByteArray Content() const { return ReadAll(path); }

    QString path;
    std::unique_ptr<CapturedLog> log;
};

void TestConfigure::initTestCase()
{
    path = QString::fromStdString(GetConstant(Velodesk::CONF_FILE));
    QCOMPARE(path, QString::fromLocal8Bit(qgetenv("HOME")) + QStringLiteral("/Velodesk//velodesk.conf"));
    QVERIFY2(!QFileInfo::exists(path), "the test needs a separate home");
}

void TestConfigure::init()
{
    log = std::make_unique<CapturedLog>();
}

void TestConfigure::cleanup()
{
    Singleton<Configure>::Destroy();
    log.reset();
    QFile::remove(path);
}

void TestConfigure::firstStartCreatesAnEmptyPrivateFile_data()
{
    QTest::addColumn<int>("mask");
    QTest::newRow("wide mask") << 0;
    QTest::newRow("common mask") << 022;
    QTest::newRow("narrow mask") << 0777;
}

void TestConfigure::firstStartCreatesAnEmptyPrivateFile()
{
    QFETCH(int, mask);
    {
        const Umask umaskOfThisTest(static_cast<mode_t>(mask));
        const Configure configure;
    }
    QCOMPARE(Content(), QByteArray());
    QCOMPARE(ModeOf(path), mode_t(0600));
    COMPARE_LISTS(log->Messages(), QStringList(QStringLiteral("chmod %1.").arg(path)));
    QVERIFY(log->Contains(INFO, VELODESK, log->Messages().first()));
}

void TestConfigure::emptyFileReturnsTheDefaults()
{
    const Configure configure;
    QCOMPARE(configure.IsStatementRead(), false);
    QCOMPARE(configure.GetTrustDeviceNum(), 0U);
    QCOMPARE(configure.GetPCDeviceName(), std::string());
    QCOMPARE(configure.GetSavePath(), std::string());
    QCOMPARE(Content(), QByteArray());
}

void TestConfigure::getOnAnEmptyFileIsLogged()
{
    const Configure configure;
    log->Clear();
    QCOMPARE(configure.GetPCDeviceName(), std::string());
    const QString message = QStringLiteral("config file %1 is empty!").arg(path);
    COMPARE_LISTS(log->Messages(), QStringList(message));
    QVERIFY(log->Contains(QStringLiteral("WARNING"), QStringLiteral("UTILS"), message));
}

void TestConfigure::modeIsSetToPrivateAtEveryStart()
{
    const QByteArray content("[VelodeskServer]\nstatement=true\n");
    WriteAll(path, content);
    for (const mode_t mode : {0644U, 0666U, 0777U, 0400U}) {
        SetMode(path, mode);
        const Configure configure;
        QCOMPARE(ModeOf(path), mode_t(0600));
        QCOMPARE(Content(), content);
        QVERIFY(configure.IsStatementRead());
    }
    SetMode(path, 0644);
    Configure configure;
    SetMode(path, 0644);
    configure.Init();
    QCOMPARE(ModeOf(path), mode_t(0600));
}

void TestConfigure::fileThatCannotBeCreatedIsLogged()
{
    const QString directory = QFileInfo(path).path();
    SetMode(directory, 0500);
    {
        const UnprivilegedUser user;
        const Configure configure;
        QVERIFY(!configure.IsStatementRead());
    }
    SetMode(directory, 0700);
    QVERIFY(!QFileInfo::exists(path));
    COMPARE_LISTS(log->Messages(),
                  QStringList({QStringLiteral("chmod %1.").arg(path), QStringLiteral("chmod fail!")}));
    QVERIFY(log->Contains(ERROR, VELODESK, QStringLiteral("chmod fail!")));
}

void TestConfigure::permissionThatCannotBeSetIsLogged()
{
    // In a directory without search permission, the mode of a file can neither be read nor set.
    WriteAll(path, "text");
    const QString directory = QFileInfo(path).path();
    SetMode(directory, 0600);
    {
        const UnprivilegedUser user;
        const Configure configure;
    }
    SetMode(directory, 0700);
    QCOMPARE(log->Count(QStringLiteral("chmod fail!")), 1);
    QCOMPARE(Content(), QByteArray("text"));
}

void TestConfigure::agreementIsStored()
{
    Configure configure;
    configure.SetStatementReadFlag();
    QCOMPARE(Content(), QByteArray("[VelodeskServer]\nstatement=true\n"));
    QVERIFY(configure.IsStatementRead());
    configure.SetStatementReadFlag();
    QCOMPARE(Content(), QByteArray("[VelodeskServer]\nstatement=true\n"));
}

void TestConfigure::onlyTheTextTrueCountsAsAgreement_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<bool>("isRead");
    QTest::newRow("true") << QByteArray("[VelodeskServer]\nstatement=true\n") << true;
    QTest::newRow("false") << QByteArray("[VelodeskServer]\nstatement=false\n") << false;
    QTest::newRow("1") << QByteArray("[VelodeskServer]\nstatement=1\n") << false;
    QTest::newRow("other section") << QByteArray("[Tandra]\nstatement=true\n") << false;
    QTest::newRow("other key") << QByteArray("[VelodeskServer]\nStatement=true\n") << false;
}

void TestConfigure::onlyTheTextTrueCountsAsAgreement()
{
    QFETCH(QByteArray, content);
    WriteAll(path, content);
    const Configure configure;
    QTEST(configure.IsStatementRead(), "isRead");
}

void TestConfigure::trustedPhonesAreCleared_data()
{
    QTest::addColumn<QByteArray>("before");
    QTest::newRow("absent") << QByteArray();
    QTest::newRow("some") << QByteArray("[VelodeskServer]\ntrustNum=3\n");
    QTest::newRow("none") << QByteArray("[VelodeskServer]\ntrustNum=0\n");
}

void TestConfigure::trustedPhonesAreCleared()
{
    QFETCH(QByteArray, before);
    WriteAll(path, before);
    Configure configure;
    configure.ClearTrustDevices();
    QCOMPARE(Content(), QByteArray("[VelodeskServer]\ntrustNum=0\n"));
    QCOMPARE(configure.GetTrustDeviceNum(), 0U);
}

void TestConfigure::trustedPhonesAreCounted_data()
{
    QTest::addColumn<QByteArray>("value");
    QTest::addColumn<unsigned int>("count");
    QTest::newRow("some") << QByteArray("3") << 3U;
    QTest::newRow("negative") << QByteArray("-1") << 0U;
    QTest::newRow("below an integer") << QByteArray("-99999999999") << 0U;
    QTest::newRow("empty") << QByteArray() << 0U;
    QTest::newRow("text") << QByteArray("x") << 0U;
    QTest::newRow("beyond an integer") << QByteArray("4294967295") << 2147483647U;
}

void TestConfigure::trustedPhonesAreCounted()
{
    QFETCH(QByteArray, value);
    WriteAll(path, "[VelodeskServer]\ntrustNum=" + value + "\n");
    const Configure configure;
    QTEST(configure.GetTrustDeviceNum(), "count");
}

void TestConfigure::textsAreStored_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("word") << QByteArray("MyPC");
    QTest::newRow("blanks at the ends") << QByteArray(" My PC ");
    QTest::newRow("Chinese") << QByteArray("我的电脑");
    QTest::newRow("equals sign") << QByteArray("a=b");
    QTest::newRow("path") << QByteArray("/home/a/Desktop");
}

void TestConfigure::textsAreStored()
{
    QFETCH(QByteArray, text);
    Configure configure;
    configure.SetPCDeviceName(text.toStdString());
    QCOMPARE(Content(), "[Tandra]\ndevicename=" + text + "\n");
    QCOMPARE(configure.GetPCDeviceName(), text.toStdString());
    QFile::resize(path, 0);
    configure.SetSavePath(text.toStdString());
    QCOMPARE(Content(), "[Tandra]\nfileStorePath=" + text + "\n");
    QCOMPARE(configure.GetSavePath(), text.toStdString());
}

void TestConfigure::textsCannotBeSetToEmpty()
{
    const QByteArray content("[Tandra]\ndevicename=MyPC\nfileStorePath=/home/a\n");
    WriteAll(path, content);
    Configure configure;
    configure.SetPCDeviceName("");
    configure.SetSavePath("");
    QCOMPARE(Content(), content);
}

void TestConfigure::everySettingHasItsSectionAndKey()
{
    Configure configure;
    configure.SetStatementReadFlag();
    configure.ClearTrustDevices();
    configure.SetPCDeviceName("MyPC");
    configure.SetSavePath("/home/a/Desktop");
    QCOMPARE(IniModel::Split(Content()),
             IniModel::Split("[VelodeskServer]\nstatement=true\ntrustNum=0\n"
                             "[Tandra]\ndevicename=MyPC\nfileStorePath=/home/a/Desktop\n"));
    QVERIFY(configure.IsStatementRead());
    QCOMPARE(configure.GetPCDeviceName(), std::string("MyPC"));
    QCOMPARE(configure.GetSavePath(), std::string("/home/a/Desktop"));
}

void TestConfigure::settersKeepOtherSettings()
{
    WriteAll(path, ";one\n[Tandra];two\nother=1;three\ndevicename=Old\n[Own]\nkey=value\n");
    Configure configure;
    configure.SetPCDeviceName("New");
    configure.SetSavePath("/home/a");
    configure.SetStatementReadFlag();
    QCOMPARE(IniModel::Split(Content()),
             IniModel::Split(";one\n[Tandra];two\nother=1;three\ndevicename=New\nfileStorePath=/home/a\n"
                             "[Own]\nkey=value\n[VelodeskServer]\nstatement=true\n"));
}

void TestConfigure::settersKeepModeAndFile()
{
    const Umask mask(0);
    Configure configure;
    struct stat before
    {
    }, after{};
    QCOMPARE(stat(Local(path).c_str(), &before), 0);
    configure.SetStatementReadFlag();
    configure.SetPCDeviceName("MyPC");
    QCOMPARE(stat(Local(path).c_str(), &after), 0);
    QCOMPARE(after.st_ino, before.st_ino);
    QCOMPARE(ModeOf(path), mode_t(0600));
}

void TestConfigure::changesOfOtherProcessesAreRead()
{
    Configure configure;
    configure.SetPCDeviceName("MyPC");
    WriteAll(path, "[Tandra]\ndevicename=Other\n[VelodeskServer]\ntrustNum=2\n");
    QCOMPARE(configure.GetPCDeviceName(), std::string("Other"));
    QCOMPARE(configure.GetTrustDeviceNum(), 2U);
    configure.SetStatementReadFlag();
    QCOMPARE(IniModel::Split(Content()),
             IniModel::Split("[Tandra]\ndevicename=Other\n[VelodeskServer]\ntrustNum=2\nstatement=true\n"));
}

void TestConfigure::unreadableFileIsNotChanged_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<bool>("isReadable");
    const QByteArray good("[VelodeskServer]\nstatement=true\ntrustNum=3\n"
                          "[Tandra]\ndevicename=MyPC\nfileStorePath=/home/a\n");
    QTest::newRow("blank line") << good + "\n" << true;
    QTest::newRow("equals sign first") << good + "=x\n" << true;
    QTest::newRow("oversize") << (good + "x=").leftJustified(LIMIT + 1, 'x') << true;
    QTest::newRow("unreadable") << good << false;
}

void TestConfigure::unreadableFileIsNotChanged()
{
    QFETCH(QByteArray, content);
    QFETCH(bool, isReadable);
    WriteAll(path, content);
    {
        const UnprivilegedUser user;
        Configure configure;
        if (!isReadable) {
            SetMode(path, 0200);
        }
        log->Clear();
        QCOMPARE(configure.IsStatementRead(), false);
        QCOMPARE(configure.GetTrustDeviceNum(), 0U);
        QCOMPARE(configure.GetPCDeviceName(), std::string());
        QCOMPARE(configure.GetSavePath(), std::string());
        configure.SetStatementReadFlag();
        configure.ClearTrustDevices();
        configure.SetPCDeviceName("New");
        configure.SetSavePath("/home/b");
    }
    SetMode(path, 0600);
    QVERIFY(Content() == content);
    COMPARE_LISTS(log->Messages(), QStringList());
}

void TestConfigure::settersDoNotCreateTheFile()
{
    Configure configure;
    QVERIFY(QFile::remove(path));
    configure.SetStatementReadFlag();
    configure.ClearTrustDevices();
    configure.SetPCDeviceName("New");
    configure.SetSavePath("/home/b");
    QVERIFY(!QFileInfo::exists(path));
}

void TestConfigure::daemonsIdIsZeroAtFirst()
{
    Configure configure;
    QCOMPARE(configure.daemonPid, 0);
    configure.daemonPid = 4711;
    configure.Init();
    configure.SetStatementReadFlag();
    configure.ClearTrustDevices();
    QCOMPARE(configure.daemonPid, 4711);
    QVERIFY(!Content().contains("4711"));
}

void TestConfigure::singletonCreatesTheFileAndItsDestructionWritesNothing()
{
    QVERIFY(!QFileInfo::exists(path));
    Singleton<Configure>::GetInstance()->SetStatementReadFlag();
    QCOMPARE(ModeOf(path), mode_t(0600));
    const QByteArray content("left by another");
    WriteAll(path, content);
    SetMode(path, 0644);
    log->Clear();
    Singleton<Configure>::Destroy();
    QCOMPARE(Content(), content);
    QCOMPARE(ModeOf(path), mode_t(0644));
    COMPARE_LISTS(log->Messages(), QStringList());
}

QTEST_GUILESS_MAIN(TestConfigure)
#include "TestConfigure.moc"
