#include <QDir>
#include <QFile>
#include <QLabel>
#include <QPushButton>
#include <QTest>
#include <memory>
#include <unistd.h>

#include "DialogScript.h"
#include "SettingsFile.h"
#include "multiscreen/MultiScreen.h"
#include "shell/VeloMessageBox.h"
#include "support/CapturedLog.h"
#include "support/Files.h"
#include "support/Sandbox.h"
#include "support/Widgets.h"

namespace {
const QString VELODESK = QStringLiteral("VELODESK");
const QString UTILS = QStringLiteral("UTILS");
const QString INFO = QStringLiteral("INFO");
const QString WARNING = QStringLiteral("WARNING");
const QString ERROR = QStringLiteral("ERROR");
const QString CLEAR_LINE = QStringLiteral("ClearTrustDevices.");
const QStringList NAMES{QStringLiteral("cd59de12d29aa1b8c695576f73fed493"),
                        QStringLiteral("b527a39b0674942c13c451bc81ea6792"),
                        QStringLiteral("2e5e9c1f131587ab665a2f38ec73e412")};
const QByteArray SECRET(1000, 's');

QString Others()
{
    return QDir::homePath() + QStringLiteral("/Velodesk/Tandra/others/");
}

QStringList ExistingFiles()
{
    return QDir(Others()).entryList(QDir::Files, QDir::Name);
}

QStringList Sorted(QStringList names)
{
    names.sort();
    return names;
}

QString RemovalLine()
{
    return QStringLiteral("RemoveFile filePath:") + Others() + NAMES.first();
}

QString FailureLine(const QString& name)
{
    return QStringLiteral("SafeCoverRemove %1 failed").arg(name);
}

void Confirm(QWidget* box)
{
    QTest::mouseClick(Find(*box, "btnRight"), Qt::LeftButton);
}
} // namespace

class TestTrustedDevices : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void questionIsAsked();
    void refusalChangesNothing_data();
    void refusalChangesNothing();
    void confirmationErasesTheFilesAndResetsTheCount();
    void contentIsOverwrittenBeforeTheRemoval();
    void missingFilesAreReportedInTheirOrder();
    void failureDoesNotStopTheOtherErasures_data();
    void failureDoesNotStopTheOtherErasures();
    void otherFilesAreKept();
    void missingDirectoryKeepsTheCount();
    void refusalAfterConfirmationChangesNothing();
    void castSignalsAreHandledWhileTheQuestionIsOpen();
    void clearButtonIsGreyAfterwards();

private:
    void Click() { QTest::mouseClick(Find(*page, "clear"), Qt::LeftButton); }
    QString Count() { return Find<QLabel>(*page, "numDevice")->text(); }
    void VerifyUnchanged();
    void VerifyCleared();

    std::unique_ptr<CapturedLog> log;
    std::unique_ptr<MultiScreen> page;
};

void TestTrustedDevices::init()
{
    SettingsFile::Write("[VelodeskServer]\ntrustNum=3\n[Tandra]\ndevicename=Old\nfileStorePath=/x\n");
    QVERIFY(QDir().mkpath(Others()));
    for (const QString& name : NAMES) {
        WriteAll(Others() + name, SECRET);
    }
    log = std::make_unique<CapturedLog>();
    page = std::make_unique<MultiScreen>(nullptr);
    page->show();
    page->ShowSetView();
    log->Clear();
}

void TestTrustedDevices::cleanup()
{
    page.reset();
    log.reset();
    QFile::setPermissions(Others(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    QDir(Others()).removeRecursively();
}

void TestTrustedDevices::VerifyUnchanged()
{
    QCOMPARE(Count(), QStringLiteral("当前信任设备台数：3"));
    QVERIFY(Find(*page, "clear")->isEnabled());
    QCOMPARE(SettingsFile::TrustNum(), QByteArray("3"));
}

void TestTrustedDevices::VerifyCleared()
{
    QCOMPARE(Count(), QStringLiteral("当前信任设备台数：0"));
    QVERIFY(!Find(*page, "clear")->isEnabled());
    QCOMPARE(SettingsFile::TrustNum(), QByteArray("0"));
    QCOMPARE(SettingsFile::DeviceName(), QByteArray("Old"));
    QCOMPARE(SettingsFile::SavePath(), QByteArray("/x"));
}

void TestTrustedDevices::questionIsAsked()
{
    DialogScript script({[this](QWidget* dialog) {
        auto* box = qobject_cast<VeloMessageBox*>(dialog);
        QVERIFY(box != nullptr);
        QCOMPARE(box->parentWidget(), page.get());
        QCOMPARE(Find<QLabel>(*box, "textMsgWarn")->text(), QStringLiteral("清除全部信任设备后，"));
        QCOMPARE(Find<QLabel>(*box, "textMsg")->text(), QStringLiteral("下次投屏时需要手机重新确认连接"));
        QVERIFY(!Find(*box, "warnIcon")->isVisible());
        QVERIFY(Find(*box, "btnLeft")->isVisible() && Find(*box, "btnRight")->isVisible());
        QCOMPARE(Find<QPushButton>(*box, "btnLeft")->text(), QStringLiteral("取消"));
        QCOMPARE(Find<QPushButton>(*box, "btnRight")->text(), QStringLiteral("确定"));
        // Nothing is erased before the answer.
        COMPARE_LISTS(log->Messages(), QStringList(CLEAR_LINE));
        QCOMPARE(ExistingFiles(), Sorted(NAMES));
        box->close();
    }});
    Click();
    QVERIFY(script.IsComplete());
    QVERIFY(log->Contains(INFO, VELODESK, CLEAR_LINE));
    QCOMPARE(VeloMessageBox::GetWindCount(), 0);
}

void TestTrustedDevices::refusalChangesNothing_data()
{
    QTest::addColumn<QByteArray>("button");
    QTest::newRow("left button") << QByteArray("btnLeft");
    QTest::newRow("close button") << QByteArray("btnClose");
    QTest::newRow("closed by the window manager") << QByteArray("close");
    QTest::newRow("Escape") << QByteArray();
}

void TestTrustedDevices::refusalChangesNothing()
{
    QFETCH(QByteArray, button);
    const QByteArray before = SettingsFile::Content();
    DialogScript script({[&button](QWidget* box) {
        if (button.isEmpty()) {
            QTest::keyClick(box, Qt::Key_Escape);
        } else if (button == "close") {
            box->close();
        } else {
            QTest::mouseClick(Find(*box, button.constData()), Qt::LeftButton);
        }
    }});
    Click();
    QVERIFY(script.IsComplete());
    VerifyUnchanged();
    QCOMPARE(SettingsFile::Content(), before);
    QCOMPARE(ExistingFiles(), Sorted(NAMES));
    COMPARE_LISTS(log->Messages(), QStringList(CLEAR_LINE));
}

void TestTrustedDevices::confirmationErasesTheFilesAndResetsTheCount()
{
    DialogScript script({Confirm});
    Click();
    QVERIFY(script.IsComplete());
    VerifyCleared();
    QCOMPARE(ExistingFiles(), QStringList());
    COMPARE_LISTS(log->Messages().mid(0, 2), QStringList({CLEAR_LINE, RemovalLine()}));
    QVERIFY(log->Contains(INFO, VELODESK, RemovalLine()));
    QCOMPARE(log->Messages().filter(QStringLiteral("RemoveFile")).size(), 1);
    COMPARE_LISTS(log->Messages().filter(QStringLiteral("failed")), QStringList());
}

void TestTrustedDevices::contentIsOverwrittenBeforeTheRemoval()
{
    for (const QString& name : NAMES) {
        QFile::remove(QDir::home().filePath(name));
        QCOMPARE(link((Others() + name).toLocal8Bit().constData(),
                      QDir::home().filePath(name).toLocal8Bit().constData()),
                 0);
    }
    DialogScript script({Confirm});
    Click();
    for (const QString& name : NAMES) {
        QFile file(QDir::home().filePath(name));
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QByteArray content = file.readAll();
        QCOMPARE(content.size(), SECRET.size());
        QVERIFY(!content.contains("ssssss"));
        QVERIFY(content != QByteArray(SECRET.size(), '\1'));
        file.remove();
    }
}

void TestTrustedDevices::missingFilesAreReportedInTheirOrder()
{
    QStringList lines{CLEAR_LINE, RemovalLine()};
    for (const QString& name : NAMES) {
        QVERIFY(QFile::remove(Others() + name));
        lines.append(QStringLiteral("filename:%1%2 not exist!").arg(Others(), name));
        lines.append(FailureLine(name));
    }
    DialogScript script({Confirm});
    Click();
    QVERIFY(script.IsComplete());
    COMPARE_LISTS(log->Messages().mid(0, lines.size()), lines);
    for (const QString& name : NAMES) {
        QVERIFY(log->Contains(WARNING, VELODESK, FailureLine(name)));
    }
    VerifyCleared();
}

void TestTrustedDevices::failureDoesNotStopTheOtherErasures_data()
{
    QTest::addColumn<int>("number");
    QTest::addColumn<int>("size");
    for (int number = 0; number < 3; ++number) {
        QTest::newRow(qPrintable(QStringLiteral("empty file %1").arg(number + 1))) << number << 0;
        QTest::newRow(qPrintable(QStringLiteral("large file %1").arg(number + 1))) << number << 1048577;
    }
}

void TestTrustedDevices::failureDoesNotStopTheOtherErasures()
{
    QFETCH(int, number);
    QFETCH(int, size);
    WriteAll(Others() + NAMES.at(number), QByteArray(size, 's'));
    DialogScript script({Confirm});
    Click();
    QCOMPARE(ExistingFiles(), QStringList(NAMES.at(number)));
    QCOMPARE(QFile(Others() + NAMES.at(number)).size(), size);
    COMPARE_LISTS(log->Messages().filter(QStringLiteral("SafeCoverRemove")),
                  QStringList(FailureLine(NAMES.at(number))));
    VerifyCleared();
}

void TestTrustedDevices::otherFilesAreKept()
{
    WriteAll(Others() + QStringLiteral("other"), SECRET);
    DialogScript script({Confirm});
    Click();
    QCOMPARE(ExistingFiles(), QStringList(QStringLiteral("other")));
}

void TestTrustedDevices::missingDirectoryKeepsTheCount()
{
    QVERIFY(QDir(Others()).removeRecursively());
    DialogScript script({Confirm});
    Click();
    QVERIFY(script.IsComplete());
    VerifyUnchanged();
    const QString missing = QStringLiteral("dir:%1 not exist!").arg(Others());
    const QString failure = QStringLiteral("RemoveFile DIR_OPERATOR.GetOthersDir failed");
    COMPARE_LISTS(log->Messages(), QStringList({CLEAR_LINE, missing, failure}));
    QVERIFY(log->Contains(ERROR, UTILS, missing));
    QVERIFY(log->Contains(ERROR, VELODESK, failure));
    QVERIFY(!QDir(Others()).exists());
    QCOMPARE(VeloMessageBox::GetWindCount(), 0);
}

void TestTrustedDevices::refusalAfterConfirmationChangesNothing()
{
    DialogScript confirmed({Confirm});
    Click();
    QVERIFY(confirmed.IsComplete());
    SettingsFile::Write("[VelodeskServer]\ntrustNum=3\n");
    WriteAll(Others() + NAMES.first(), SECRET);
    page->ShowSetView();
    log->Clear();
    const QByteArray before = SettingsFile::Content();
    DialogScript refused({[](QWidget* box) {
        box->close();
    }});
    Click();
    VerifyUnchanged();
    QCOMPARE(SettingsFile::Content(), before);
    QCOMPARE(ExistingFiles(), QStringList(NAMES.first()));
    COMPARE_LISTS(log->Messages(), QStringList(CLEAR_LINE));
}

void TestTrustedDevices::castSignalsAreHandledWhileTheQuestionIsOpen()
{
    const auto text = [this] {
        return Find<QPushButton>(*page, "PreScreenBtn")->text();
    };
    DialogScript script({[&text](QWidget* box) {
        emit Singleton<AppManager>::GetInstance()->AppEvent(AppManager::TANDRA_APP,
                                                            AppManager::APP_EVENT_RUNNING);
        QCOMPARE(text(), QStringLiteral("结束投屏"));
        Confirm(box);
    }});
    Click();
    VerifyCleared();
    QCOMPARE(text(), QStringLiteral("结束投屏"));
}

void TestTrustedDevices::clearButtonIsGreyAfterwards()
{
    QPalette white;
    white.setColor(QPalette::Window, Qt::white);
    page->setPalette(white);
    page->setAutoFillBackground(true);
    const QWidget* clear = Find(*page, "clear");
    const auto fill = [this, clear] {
        return QColor(
            page->grab(QRect(clear->mapTo(page.get(), QPoint(12, 6)), QSize(1, 1))).toImage().pixel(0, 0));
    };
    QCOMPARE(fill(), QColor(Qt::white));
    DialogScript script({Confirm});
    Click();
    // The colour is 4 % of black on the white page.
    QVERIFY2(qAbs(fill().red() - 245) <= 1, qPrintable(fill().name()));
    // A disabled button shows no question.
    log->Clear();
    Click();
    COMPARE_LISTS(log->Messages(), QStringList());
}

SANDBOXED_QTEST_MAIN(TestTrustedDevices)
#include "TestTrustedDevices.moc"
