#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QStackedWidget>
#include <QTemporaryDir>
#include <QTest>
#include <memory>
#include <sys/stat.h>
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
const QString INFO = QStringLiteral("INFO");
const QString ERROR = QStringLiteral("ERROR");
const QString NOTHING_CHOSEN = QStringLiteral("ChangePath: no directory choose");
const QString NOT_FOUND = QStringLiteral("选择文件夹不存在，请重新选择");
const QString NO_PERMISSION = QStringLiteral("选择文件夹权限不对，请重新选择");
const QString SHORTCUT = QStringLiteral("选择文件夹包含快捷方式，请重新选择");
const QString UNSUPPORTED = QStringLiteral("选择文件夹名称包含不支持的字符，请重新选择");

constexpr mode_t ALL_PERMISSIONS = 0700;

QString AcceptedLine(const QString& path)
{
    return QStringLiteral("save file path:%1, success").arg(path);
}

void Store(const QByteArray& path)
{
    SettingsFile::Write("[Tandra]\nfileStorePath=" + path + "\n");
}

/// Chooses `folder` in the dialog by typing its path.
void Choose(QWidget* dialog, const QString& folder)
{
    dialog->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"))->setText(folder);
    static_cast<QDialog*>(dialog)->accept();
}

void Cancel(QWidget* dialog)
{
    static_cast<QDialog*>(dialog)->reject();
}

void CompareBox(QWidget* dialog, const QWidget* page, const QString& text)
{
    const auto* box = qobject_cast<VeloMessageBox*>(dialog);
    QVERIFY(box != nullptr);
    QCOMPARE(box->parentWidget(), page);
    QCOMPARE(Find<QLabel>(*box, "textMsgWarn")->text(), text);
    QCOMPARE(Find<QLabel>(*box, "textMsg")->text(), QString());
    QVERIFY(!Find(*box, "warnIcon")->isVisible());
    QVERIFY(!Find(*box, "btnLeft")->isVisible());
    QCOMPARE(Find<QPushButton>(*box, "btnRight")->text(), QStringLiteral("确定"));
}

void Confirm(QWidget* dialog)
{
    QTest::mouseClick(Find(*dialog, "btnRight"), Qt::LeftButton);
}
} // namespace

class TestSettingsView : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void countIsShown_data();
    void countIsShown();
    void viewIsTheFifthPage();
    void showingTheViewReadsTheFileAgain();
    void storedPathIsShown_data();
    void storedPathIsShown();
    void pathThatIsNotUtf8IsKeptInTheFile();
    void missingPathBecomesTheDesktop_data();
    void missingPathBecomesTheDesktop();
    void disabledClearButtonIsGrey();
    void dialogHasItsProperties();
    void chosenFolderIsStored_data();
    void chosenFolderIsStored();
    void cancelChangesNothing_data();
    void cancelChangesNothing();
    void vanishedFolderIsRejected();
    void folderWithoutPermissionsIsRejected_data();
    void folderWithoutPermissionsIsRejected();
    void folderReachedThroughALinkIsRejected_data();
    void folderReachedThroughALinkIsRejected();
    void folderWithUnsupportedCharacterIsRejected_data();
    void folderWithUnsupportedCharacterIsRejected();
    void permissionsAreCheckedBeforeLinks();
    void dialogIsShownAgainUntilACancel();
    void dialogIsShownAgainAfterTheCloseButtonOfTheRejection();
    void castSignalsAreHandledWhileADialogIsOpen();
    void unwritableSettingsShowThePathWithoutStoringIt();
    void pathHasLink_data();
    void pathHasLink();

private:
    QString SavePath() { return Find<QLabel>(*page, "savePath")->text(); }
    void ClickChange() { QTest::mouseClick(Find(*page, "change"), Qt::LeftButton); }
    QString CreateFolder(const QString& relative) const;
    void Link(const QString& target, const QString& relative) const;
    /// Chooses `path` with `choose`. Verifies the rejection with `text` and the log line `line`, that the
    /// dialog opens at `path` again, and that the stored path is unchanged.
    void VerifyRejection(const std::function<void(QWidget*)>& choose, const QString& path,
                         const QString& text, const QString& line);

    std::unique_ptr<CapturedLog> log;
    std::unique_ptr<QTemporaryDir> folder;
    std::unique_ptr<MultiScreen> page;
};

void TestSettingsView::initTestCase()
{
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    qunsetenv("XDG_CONFIG_HOME");
}

void TestSettingsView::init()
{
    folder = std::make_unique<QTemporaryDir>();
    Store(folder->path().toLocal8Bit());
    log = std::make_unique<CapturedLog>();
    page = std::make_unique<MultiScreen>(nullptr);
    page->show();
    page->ShowSetView();
    log->Clear();
}

void TestSettingsView::cleanup()
{
    QFile::setPermissions(SettingsFile::Path(), QFile::ReadOwner | QFile::WriteOwner);
    QFile::remove(QDir::home().filePath(QStringLiteral(".config/user-dirs.dirs")));
    page.reset();
    log.reset();
    folder.reset();
}

QString TestSettingsView::CreateFolder(const QString& relative) const
{
    QDir(folder->path()).mkpath(relative);
    return folder->filePath(relative);
}

void TestSettingsView::Link(const QString& target, const QString& relative) const
{
    QCOMPARE(symlink(target.toLocal8Bit().constData(), folder->filePath(relative).toLocal8Bit().constData()),
             0);
}

void TestSettingsView::countIsShown_data()
{
    QTest::addColumn<QByteArray>("stored");
    QTest::addColumn<QString>("shown");
    QTest::newRow("none") << QByteArray() << QStringLiteral("0");
    QTest::newRow("zero") << QByteArray("0") << QStringLiteral("0");
    QTest::newRow("one") << QByteArray("1") << QStringLiteral("1");
    QTest::newRow("many") << QByteArray("1234") << QStringLiteral("1234");
    QTest::newRow("largest") << QByteArray("2147483647") << QStringLiteral("2147483647");
    QTest::newRow("negative") << QByteArray("-3") << QStringLiteral("0");
    QTest::newRow("no number") << QByteArray("x") << QStringLiteral("0");
}

void TestSettingsView::countIsShown()
{
    QFETCH(QByteArray, stored);
    QFETCH(QString, shown);
    SettingsFile::Write(stored.isEmpty() ? QByteArray("[VelodeskServer]\nstatement=true\n")
                                         : "[VelodeskServer]\ntrustNum=" + stored + "\n");
    page->ShowSetView();
    QCOMPARE(Find<QLabel>(*page, "numDevice")->text(), QStringLiteral("当前信任设备台数：") + shown);
    QCOMPARE(Find(*page, "clear")->isEnabled(), shown != QStringLiteral("0"));
}

void TestSettingsView::viewIsTheFifthPage()
{
    const auto* stack = Find<QStackedWidget>(*page, "ScreenWidget");
    page->BackToMainScreen();
    QCOMPARE(stack->currentIndex(), 0);
    page->ShowSetView();
    QCOMPARE(stack->currentIndex(), 4);
    QTest::mouseClick(Find(*page, "setBack"), Qt::LeftButton);
    QCOMPARE(stack->currentIndex(), 0);
}

void TestSettingsView::showingTheViewReadsTheFileAgain()
{
    SettingsFile::Write("[Tandra]\nfileStorePath=/first\n[VelodeskServer]\ntrustNum=2\n");
    page->ShowSetView();
    QCOMPARE(SavePath(), QStringLiteral("/first"));
    SettingsFile::Write("[Tandra]\nfileStorePath=/second\n[VelodeskServer]\ntrustNum=0\n");
    QCOMPARE(SavePath(), QStringLiteral("/first"));
    page->ShowSetView();
    QCOMPARE(SavePath(), QStringLiteral("/second"));
    QVERIFY(!Find(*page, "clear")->isEnabled());
    SettingsFile::Write("[Tandra]\nfileStorePath=/second\n[VelodeskServer]\ntrustNum=1\n");
    page->ShowSetView();
    QVERIFY(Find(*page, "clear")->isEnabled());
}

void TestSettingsView::storedPathIsShown_data()
{
    QTest::addColumn<QString>("path");
    QTest::newRow("plain") << QStringLiteral("/home/somebody/Desktop");
    QTest::newRow("Chinese") << QStringLiteral("/home/用户/桌面");
    QTest::newRow("blanks") << QStringLiteral("/home/my files/from the phone");
    QTest::newRow("equals sign") << QStringLiteral("/home/a=b");
}

void TestSettingsView::storedPathIsShown()
{
    QFETCH(QString, path);
    Store(path.toUtf8());
    page->ShowSetView();
    QCOMPARE(SavePath(), path);
    QCOMPARE(SettingsFile::SavePath(), path.toUtf8());
    COMPARE_LISTS(log->Messages().filter(QStringLiteral("ready to save")), QStringList());
}

void TestSettingsView::pathThatIsNotUtf8IsKeptInTheFile()
{
    const QByteArray path = "/home/\xd7\xc0\xc3\xe6";
    Store(path);
    page->ShowSetView();
    QCOMPARE(SavePath(), QString::fromLocal8Bit(path));
    DialogScript script({Cancel});
    ClickChange();
    QVERIFY(script.IsComplete());
    QCOMPARE(SettingsFile::SavePath(), path);
}

void TestSettingsView::missingPathBecomesTheDesktop_data()
{
    QTest::addColumn<QByteArray>("configured");
    QTest::addColumn<QString>("desktop");
    QTest::newRow("default") << QByteArray() << QStringLiteral("/Desktop");
    QTest::newRow("configured") << QByteArray("XDG_DESKTOP_DIR=\"$HOME/桌面\"\n") << QStringLiteral("/桌面");
}

void TestSettingsView::missingPathBecomesTheDesktop()
{
    QFETCH(QByteArray, configured);
    QFETCH(QString, desktop);
    const QString path = QDir::homePath() + desktop;
    if (!configured.isEmpty()) {
        QVERIFY(QDir::home().mkpath(QStringLiteral(".config")));
        QFile names(QDir::home().filePath(QStringLiteral(".config/user-dirs.dirs")));
        QVERIFY(names.open(QIODevice::WriteOnly));
        names.write(configured);
    }
    for (const char* content : {"[VelodeskServer]\ntrustNum=1\n", "[Tandra]\nfileStorePath=\n"}) {
        SettingsFile::Write(content);
        page->ShowSetView();
        QCOMPARE(SavePath(), path);
        QCOMPARE(SettingsFile::SavePath(), path.toUtf8());
    }
}

void TestSettingsView::disabledClearButtonIsGrey()
{
    QPalette white;
    white.setColor(QPalette::Window, Qt::white);
    page->setPalette(white);
    page->setAutoFillBackground(true);
    auto* clear = Find<QPushButton>(*page, "clear");
    const auto pixel = [this, clear](const QPoint& pos) {
        return QColor(
            page->grab(QRect(clear->mapTo(page.get(), QPoint()), clear->size())).toImage().pixel(pos));
    };
    const QPoint inside(12, 6);
    const QPoint border(41, 0);
    clear->setEnabled(true);
    QCOMPARE(pixel(inside), QColor(0xFF, 0xFF, 0xFF));
    QCOMPARE(pixel(border), QColor(0xDB, 0xDB, 0xDB));
    clear->setEnabled(false);
    // The colours are 4 % and 20 % of black.
    QVERIFY2(qAbs(pixel(inside).red() - 245) <= 1, qPrintable(pixel(inside).name()));
    QVERIFY2(pixel(border).red() < 210, qPrintable(pixel(border).name()));
}

void TestSettingsView::dialogHasItsProperties()
{
    const QString shown = CreateFolder(QStringLiteral("收件 箱"));
    Store(shown.toUtf8());
    page->ShowSetView();
    DialogScript script({[&shown](QWidget* widget) {
        const auto* dialog = qobject_cast<QFileDialog*>(widget);
        QVERIFY(dialog != nullptr);
        QCOMPARE(dialog->parentWidget(), nullptr);
        QCOMPARE(dialog->windowTitle(), QStringLiteral("选择文件夹"));
        QCOMPARE(dialog->directory().path(), shown);
        QCOMPARE(dialog->options() & QFileDialog::ShowDirsOnly, QFileDialog::ShowDirsOnly);
        widget->close();
    }});
    ClickChange();
    QVERIFY(script.IsComplete());
}

void TestSettingsView::chosenFolderIsStored_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("plain") << QStringLiteral("phone");
    QTest::newRow("Chinese") << QStringLiteral("手机/文件");
    QTest::newRow("blanks") << QStringLiteral("my phone/my files");
    QTest::newRow("per cent sign") << QStringLiteral("100%s");
}

void TestSettingsView::chosenFolderIsStored()
{
    QFETCH(QString, name);
    const QString chosen = CreateFolder(name);
    DialogScript script({[&chosen](QWidget* dialog) {
        Choose(dialog, chosen);
    }});
    ClickChange();
    QVERIFY(script.IsComplete());
    QCOMPARE(SavePath(), chosen);
    QCOMPARE(SettingsFile::SavePath(), chosen.toLocal8Bit());
    QVERIFY(log->Contains(INFO, VELODESK, AcceptedLine(chosen)));
    COMPARE_LISTS(log->Messages().filter(QStringLiteral("ChangePath")), QStringList());
    QCOMPARE(log->Messages().first(), AcceptedLine(chosen));
}

void TestSettingsView::cancelChangesNothing_data()
{
    QTest::addColumn<int>("way");
    QTest::newRow("Cancel") << 0;
    QTest::newRow("Escape") << 1;
    QTest::newRow("closed") << 2;
}

void TestSettingsView::cancelChangesNothing()
{
    QFETCH(int, way);
    const QByteArray before = SettingsFile::Content();
    DialogScript script({[way](QWidget* dialog) {
        if (way == 0) {
            Cancel(dialog);
        } else if (way == 1) {
            QTest::keyClick(dialog, Qt::Key_Escape);
        } else {
            dialog->close();
        }
    }});
    ClickChange();
    QVERIFY(script.IsComplete());
    COMPARE_LISTS(log->Messages(), QStringList(NOTHING_CHOSEN));
    QVERIFY(log->Contains(ERROR, VELODESK, NOTHING_CHOSEN));
    QCOMPARE(SavePath(), folder->path());
    QCOMPARE(SettingsFile::Content(), before);
}

void TestSettingsView::vanishedFolderIsRejected()
{
    const QString chosen = CreateFolder(QStringLiteral("会 消失"));
    const QString other = CreateFolder(QStringLiteral("other"));
    DialogScript script({[&chosen](QWidget* dialog) {
                             connect(static_cast<QDialog*>(dialog), &QDialog::finished, dialog,
                                     [&chosen] { QVERIFY(QDir().rmdir(chosen)); });
                             Choose(dialog, chosen);
                         },
                         [this, &chosen](QWidget* box) {
                             CompareBox(box, page.get(), NOT_FOUND);
                             QVERIFY(QDir().mkdir(chosen));
                             Confirm(box);
                         },
                         [&chosen, &other](QWidget* dialog) {
                             QCOMPARE(qobject_cast<QFileDialog*>(dialog)->directory().path(), chosen);
                             Choose(dialog, other);
                         }});
    ClickChange();
    QVERIFY(script.IsComplete());
    const QString line = QStringLiteral("ChangePath: directory %1 not exist").arg(chosen);
    QVERIFY(log->Contains(ERROR, VELODESK, line));
    COMPARE_LISTS(log->Messages().mid(0, 2), QStringList({line, AcceptedLine(other)}));
    QCOMPARE(SavePath(), other);
}

void TestSettingsView::folderWithoutPermissionsIsRejected_data()
{
    QTest::addColumn<int>("mode");
    QTest::newRow("not writable") << 0500;
    QTest::newRow("not readable") << 0300;
    QTest::newRow("not searchable") << 0600;
    QTest::newRow("no permission") << 0;
}

void TestSettingsView::folderWithoutPermissionsIsRejected()
{
    QFETCH(int, mode);
    const QString chosen = CreateFolder(QStringLiteral("手机"));
    SetMode(chosen, static_cast<mode_t>(mode));
    DialogScript script({[&chosen](QWidget* dialog) { Choose(dialog, chosen); },
                         [this](QWidget* box) {
                             CompareBox(box, page.get(), NO_PERMISSION);
                             // Nothing is stored while the box is open.
                             QCOMPARE(SavePath(), folder->path());
                             Confirm(box);
                         },
                         [&chosen](QWidget* dialog) {
                             QCOMPARE(VeloMessageBox::GetWindCount(), 0);
                             QCOMPARE(qobject_cast<QFileDialog*>(dialog)->directory().path(), chosen);
                             Cancel(dialog);
                         }});
    ClickChange();
    SetMode(chosen, ALL_PERMISSIONS);
    QVERIFY(script.IsComplete());
    const QString line = QStringLiteral("ChangePath: directory %1 has fault right mode").arg(chosen);
    QVERIFY(log->Contains(ERROR, VELODESK, line));
    COMPARE_LISTS(log->Messages(), QStringList({line, NOTHING_CHOSEN}));
    QCOMPARE(SavePath(), folder->path());
    QCOMPARE(SettingsFile::SavePath(), folder->path().toLocal8Bit());
}

void TestSettingsView::VerifyRejection(const std::function<void(QWidget*)>& choose, const QString& path,
                                       const QString& text, const QString& line)
{
    DialogScript script({choose,
                         [this, &text](QWidget* box) {
                             CompareBox(box, page.get(), text);
                             Confirm(box);
                         },
                         [&path](QWidget* dialog) {
                             QCOMPARE(qobject_cast<QFileDialog*>(dialog)->directory().path(), path);
                             Cancel(dialog);
                         }});
    ClickChange();
    QVERIFY(script.IsComplete());
    QVERIFY(log->Contains(ERROR, VELODESK, line));
    COMPARE_LISTS(log->Messages(), QStringList({line, NOTHING_CHOSEN}));
    QCOMPARE(SavePath(), folder->path());
    QCOMPARE(SettingsFile::SavePath(), folder->path().toLocal8Bit());
}

void TestSettingsView::folderReachedThroughALinkIsRejected_data()
{
    QTest::addColumn<QString>("chosen");
    QTest::addColumn<QString>("link");
    QTest::newRow("the folder itself") << QStringLiteral("快捷") << QStringLiteral("快捷");
    QTest::newRow("its parent") << QStringLiteral("快捷/a") << QStringLiteral("快捷");
    QTest::newRow("a distant ancestor") << QStringLiteral("快捷/a/b/c") << QStringLiteral("快捷");
    QTest::newRow("the lower of two links")
        << QStringLiteral("快捷/second/b") << QStringLiteral("快捷/second");
}

void TestSettingsView::folderReachedThroughALinkIsRejected()
{
    QFETCH(QString, chosen);
    QFETCH(QString, link);
    CreateFolder(QStringLiteral("real/a/b/c"));
    Link(folder->filePath(QStringLiteral("real")), QStringLiteral("快捷"));
    Link(folder->filePath(QStringLiteral("real/a")), QStringLiteral("real/second"));
    const QString path = folder->filePath(chosen);
    QVERIFY(QDir(path).exists());
    VerifyRejection([&path](QWidget* dialog) { Choose(dialog, path); }, path, SHORTCUT,
                    QStringLiteral("ChangePath: directory %1 link").arg(folder->filePath(link)));
}

void TestSettingsView::folderWithUnsupportedCharacterIsRejected_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("logged");
    QTest::newRow("semicolon") << QStringLiteral("a;b") << QStringLiteral("a;b");
    QTest::newRow("line feed") << QStringLiteral("a\nb") << QStringLiteral("a b");
    QTest::newRow("carriage return") << QStringLiteral("a\rb") << QStringLiteral("a b");
    QTest::newRow("in the parent's name") << QStringLiteral("a\n;b/c") << QStringLiteral("a ;b/c");
}

void TestSettingsView::folderWithUnsupportedCharacterIsRejected()
{
    QFETCH(QString, name);
    QFETCH(QString, logged);
    const QString path = CreateFolder(name);
    // Selects the folder with setDirectory(), because a line edit cannot contain a line feed.
    const auto choose = [&path](QWidget* dialog) {
        qobject_cast<QFileDialog*>(dialog)->setDirectory(path);
        Choose(dialog, QString());
    };
    VerifyRejection(
        choose, path, UNSUPPORTED,
        QStringLiteral("ChangePath: directory %1 has unsupported character").arg(folder->filePath(logged)));
}

void TestSettingsView::permissionsAreCheckedBeforeLinks()
{
    SetMode(CreateFolder(QStringLiteral("real")), 0500);
    Link(folder->filePath(QStringLiteral("real")), QStringLiteral("link"));
    DialogScript script(
        {[this](QWidget* dialog) { Choose(dialog, folder->filePath(QStringLiteral("link"))); },
         [this](QWidget* box) {
             CompareBox(box, page.get(), NO_PERMISSION);
             Confirm(box);
         },
         Cancel});
    ClickChange();
    QVERIFY(script.IsComplete());
    COMPARE_LISTS(log->Messages().filter(QStringLiteral(" link")), QStringList());
}

void TestSettingsView::dialogIsShownAgainUntilACancel()
{
    const QString readOnly = CreateFolder(QStringLiteral("read-only"));
    SetMode(readOnly, 0500);
    Link(folder->path(), QStringLiteral("link"));
    const QString link = folder->filePath(QStringLiteral("link"));
    DialogScript script({[&readOnly](QWidget* dialog) { Choose(dialog, readOnly); }, Confirm,
                         [&link](QWidget* dialog) { Choose(dialog, link); }, Confirm,
                         [&readOnly](QWidget* dialog) { Choose(dialog, readOnly); }, Confirm, Cancel});
    ClickChange();
    QVERIFY(script.IsComplete());
    QCOMPARE(log->Messages().size(), 4);
    QCOMPARE(SavePath(), folder->path());
    QCOMPARE(SettingsFile::SavePath(), folder->path().toLocal8Bit());
}

void TestSettingsView::dialogIsShownAgainAfterTheCloseButtonOfTheRejection()
{
    const QString readOnly = CreateFolder(QStringLiteral("read-only"));
    SetMode(readOnly, 0500);
    DialogScript script({[&readOnly](QWidget* dialog) { Choose(dialog, readOnly); },
                         [](QWidget* box) { QTest::mouseClick(Find(*box, "btnClose"), Qt::LeftButton); },
                         Cancel});
    ClickChange();
    QVERIFY(script.IsComplete());
}

void TestSettingsView::castSignalsAreHandledWhileADialogIsOpen()
{
    const QString readOnly = CreateFolder(QStringLiteral("read-only"));
    SetMode(readOnly, 0500);
    AppManager* manager = Singleton<AppManager>::GetInstance();
    const auto text = [this] {
        return Find<QPushButton>(*page, "PreScreenBtn")->text();
    };
    DialogScript script({[&](QWidget* dialog) {
                             emit manager->AppEvent(AppManager::TANDRA_APP, AppManager::APP_EVENT_RUNNING);
                             QCOMPARE(text(), QStringLiteral("结束投屏"));
                             Choose(dialog, readOnly);
                         },
                         [&](QWidget* box) {
                             emit manager->AppEvent(AppManager::TANDRA_APP, AppManager::APP_EVENT_STOPPED);
                             QCOMPARE(text(), QStringLiteral("开始投屏"));
                             Confirm(box);
                         },
                         Cancel});
    ClickChange();
    QVERIFY(script.IsComplete());
}

void TestSettingsView::unwritableSettingsShowThePathWithoutStoringIt()
{
    const QString chosen = CreateFolder(QStringLiteral("phone"));
    QVERIFY(QFile::setPermissions(SettingsFile::Path(), QFile::ReadOwner));
    DialogScript script({[&chosen](QWidget* dialog) {
        Choose(dialog, chosen);
    }});
    ClickChange();
    QVERIFY(script.IsComplete());
    QCOMPARE(SavePath(), chosen);
    QVERIFY(log->Contains(INFO, VELODESK, AcceptedLine(chosen)));
    QCOMPARE(SettingsFile::SavePath(), folder->path().toLocal8Bit());
    page->ShowSetView();
    QCOMPARE(SavePath(), folder->path());
}

void TestSettingsView::pathHasLink_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("link");
    const QString none;
    QTest::newRow("root") << QStringLiteral("/") << none;
    QTest::newRow("empty") << QString() << none;
    QTest::newRow("no link") << QStringLiteral("%1/real/a") << none;
    QTest::newRow("missing") << QStringLiteral("%1/missing/a") << none;
    QTest::newRow("link") << QStringLiteral("%1/link") << QStringLiteral("%1/link");
    QTest::newRow("trailing slash") << QStringLiteral("%1/link/") << QStringLiteral("%1/link");
    QTest::newRow("below a link") << QStringLiteral("%1/link/a/b") << QStringLiteral("%1/link");
    QTest::newRow("missing below a link") << QStringLiteral("%1/link/missing") << QStringLiteral("%1/link");
    QTest::newRow("dangling") << QStringLiteral("%1/dangling") << QStringLiteral("%1/dangling");
    QTest::newRow("to a file") << QStringLiteral("%1/file link") << QStringLiteral("%1/file link");
    QTest::newRow("long target") << QStringLiteral("%1/long") << QStringLiteral("%1/long");
    QTest::newRow("Chinese") << QStringLiteral("%1/快捷/a") << QStringLiteral("%1/快捷");
}

void TestSettingsView::pathHasLink()
{
    QFETCH(QString, path);
    QFETCH(QString, link);
    const QString real = CreateFolder(QStringLiteral("real/a/b")).section(QLatin1Char('/'), 0, -3);
    Link(real, QStringLiteral("link"));
    Link(real, QStringLiteral("快捷"));
    Link(QStringLiteral("/nonexistent"), QStringLiteral("dangling"));
    Link(SettingsFile::Path(), QStringLiteral("file link"));
    Link(QString(300, QLatin1Char('x')), QStringLiteral("long"));
    const auto inFolder = [this](const QString& text) {
        return text.contains(QLatin1String("%1")) ? text.arg(folder->path()) : text;
    };
    QCOMPARE(page->PathHasLink(inFolder(path)), !link.isEmpty());
    if (link.isEmpty()) {
        COMPARE_LISTS(log->Messages(), QStringList());
    } else {
        const QString line = QStringLiteral("ChangePath: directory %1 link").arg(inFolder(link));
        COMPARE_LISTS(log->Messages(), QStringList(line));
        QVERIFY(log->Contains(ERROR, VELODESK, line));
    }
}

SANDBOXED_QTEST_MAIN(TestSettingsView)
#include "TestSettingsView.moc"
