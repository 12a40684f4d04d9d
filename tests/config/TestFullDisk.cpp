#include <QFile>
#include <QtTest>

#include "config/IniParser.h"
#include "platform/Logger.h"
#include "platform/RandomCode.h"
#include "support/Files.h"
#include "support/Sandbox.h"

using Brevora::Config::IniParser;

namespace {
const QString DISK = QStringLiteral("/opt/");
constexpr char DISK_SIZE[] = "262144";
} // namespace

/// Runs on a file system of 256 KiB that each test fills.
class TestFullDisk : public QObject
{
    Q_OBJECT

private slots:
    void cleanup() { QFile::remove(DISK + QStringLiteral("filler")); }

    void logDropsLinesThatDoNotFitAndContinues();
    void shortSettingIsStored();
    void settingThatDoesNotFitChangesNoOtherFile();
    void erasingNeedsNoSpace();

private:
    /// Fills the remaining space.
    static void Fill()
    {
        QFile filler(DISK + QStringLiteral("filler"));
        QVERIFY(filler.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
        while (filler.write(QByteArray(512, 'x')) > 0) {
        }
        filler.close();
        QFile more(DISK + QStringLiteral("more"));
        QVERIFY(!more.open(QIODevice::WriteOnly | QIODevice::Unbuffered) || more.write("x") < 1);
        more.remove();
    }
};

void TestFullDisk::logDropsLinesThatDoNotFitAndContinues()
{
    const QString path = DISK + QStringLiteral("log");
    Brevora::Logger logger;
    logger.Init(Local(path));
    logger.WriteLog(2, "A.cpp", 1, "TAG", "%s", "before");
    Fill();
    for (int i = 0; i < 1000; ++i) {
        logger.WriteLog(2, "A.cpp", 1, "TAG", "%s", "a line that soon has no room left on this disk");
    }
    const QByteArray content = ReadAll(path);
    QVERIFY(content.contains("TAG: before\n"));
    QVERIFY(content.count('\n') < 1001);
    QCOMPARE(ModeOf(path), mode_t(0600));
    QVERIFY(QFile::remove(path));
}

void TestFullDisk::shortSettingIsStored()
{
    const QString path = DISK + QStringLiteral("settings");
    WriteAll(path, "[Tandra]\ndevicename=a\nfileStorePath=/home/a\n");
    Fill();
    IniParser::GetInstance().SetKeyValue(Local(path), "Tandra", "devicename", "another name");
    QCOMPARE(IniParser::GetInstance().GetKeyValueString(Local(path), "Tandra", "devicename"),
             std::string("another name"));
    QCOMPARE(IniParser::GetInstance().GetKeyValueString(Local(path), "Tandra", "fileStorePath"),
             std::string("/home/a"));
    QVERIFY(QFile::remove(path));
}

void TestFullDisk::settingThatDoesNotFitChangesNoOtherFile()
{
    const QString path = DISK + QStringLiteral("settings");
    const QString other = DISK + QStringLiteral("other");
    WriteAll(path, "[a]\nb=c\n");
    WriteAll(other, "untouched");
    Fill();
    // The parser rewrites the file in place and does not check the result: the file is truncated, but still
    // readable.
    IniParser::GetInstance().SetKeyValue(Local(path), "a", "b", std::string(300000, 'v'));
    QVERIFY(IniParser::GetInstance().GetKeyValueString(Local(path), "a", "b").size() < 300000);
    QCOMPARE(ReadAll(other), QByteArray("untouched"));
    QVERIFY(QFile::remove(path));
    QVERIFY(QFile::remove(other));
}

void TestFullDisk::erasingNeedsNoSpace()
{
    const QString path = DISK + QStringLiteral("secret");
    WriteAll(path, QByteArray(20000, 's'));
    Fill();
    QCOMPARE(Brevora::RandomCode::SafeCoverRemove(Local(path)), 0);
    QVERIFY(!QFile::exists(path));
}

int main(int argc, char** argv)
{
    EnterSandbox(argc, argv, DISK_SIZE);
    QCoreApplication application(argc, argv);
    TestFullDisk test;
    return QTest::qExec(&test, argc, argv);
}
#include "TestFullDisk.moc"
