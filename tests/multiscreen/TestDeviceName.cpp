#include <QApplication>
#include <QClipboard>
#include <QFile>
#include <QFocusEvent>
#include <QInputMethodEvent>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <QValidator>
#include <QWindow>
#include <functional>
#include <memory>

#include "SettingsFile.h"
#include "multiscreen/MultiScreen.h"
#include "support/CapturedLog.h"
#include "support/ProgramMain.h"
#include "support/Sandbox.h"
#include "support/Widgets.h"

namespace {
constexpr int ROW_WIDTH = 416;
constexpr int LABEL_WIDTH = 82;
constexpr int PENCIL_WIDTH = 16;
constexpr QPoint BACKGROUND(40, 420);

QString ChangeLine(const QString& from, const QString& to)
{
    return QStringLiteral("PC device name changed! oldName: %1; newName: %2").arg(from, to);
}

void StoreName(const QByteArray& name)
{
    SettingsFile::Write("[Tandra]\ndevicename=" + name + "\n");
}

/// Records the reason of a focus event.
class FocusWatch : public QObject
{
public:
    explicit FocusWatch(QWidget& widget) { widget.installEventFilter(this); }
    bool eventFilter(QObject*, QEvent* event) override
    {
        if (event->type() == QEvent::FocusIn) {
            reason = static_cast<QFocusEvent*>(event)->reason();
        }
        return false;
    }

    Qt::FocusReason reason = Qt::NoFocusReason;
};
} // namespace

class TestDeviceName : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void storedNameIsShown_data();
    void storedNameIsShown();
    void missingNameIsStoredAtTheStart();
    void everyStartStoresTheName();
    void unreadableSettingsLeaveTheDefaultOnThePage();
    void otherSettingsAreKept();
    void newNameIsShownAtTheNextStart();
    void pencilOpensTheField();
    void invalidCharactersAreRejectedWhileTyping_data();
    void invalidCharactersAreRejectedWhileTyping();
    void invalidCommittedTextIsRejectedAsAWhole_data();
    void invalidCommittedTextIsRejectedAsAWhole();
    void longNameIsCutImmediately_data();
    void longNameIsCutImmediately();
    void cutRemovesTheEndAtAnyCursorPosition();
    void pastedTextIsCut();
    void fieldHasTheWidthOfTheTypedText();
    void emptiedFieldShowsThePreviousName();
    void rowIsCentred_data();
    void rowIsCentred();
    void pencilPositionIsAtMost320();
    void endOfAnEditStoresTheName_data();
    void endOfAnEditStoresTheName();
    void unchangedNameIsStoredWithoutALogLine_data();
    void unchangedNameIsStoredWithoutALogLine();
    void emptyNameRestoresThePreviousName_data();
    void emptyNameRestoresThePreviousName();
    void changeWithoutAnEditIsNotLogged();
    void pressOutsideOfAClosedFieldStoresNothing();
    void rejectedTextIsNotStored();
    void editIsNotInterruptedByTheCastState_data();
    void editIsNotInterruptedByTheCastState();
    void unwritableSettingsLeaveTheNewNameOnThePage();
    void destructionOfThePageDropsAnEdit();

private:
    QLineEdit& Field() { return *Find<QLineEdit>(*page, "ComputerNameEdit"); }
    QPushButton& Pencil() { return *Find<QPushButton>(*page, "NameEditBtn"); }
    void Start();
    void Open() { QTest::mouseClick(&Pencil(), Qt::LeftButton); }
    void Return() { QTest::keyClick(&Field(), Qt::Key_Return); }
    /// Opens the field, empties it and enters another text as an input method does.
    void Rewrite(const QString& text);
    void Commit(const QString& text);
    int Width(const QString& text) const { return page->fontMetrics().horizontalAdvance(text) + 7; }
    void CompareClosed(const QString& name);
    void AddWaysToEndTheEdit();

    std::unique_ptr<CapturedLog> log;
    std::unique_ptr<MultiScreen> page;
    std::unique_ptr<QWidget> otherWindow;
};

Q_DECLARE_METATYPE(std::function<void()>)

void TestDeviceName::init()
{
    StoreName("Old");
    log = std::make_unique<CapturedLog>();
    Start();
}

void TestDeviceName::cleanup()
{
    otherWindow.reset();
    page.reset();
    log.reset();
    QFile::setPermissions(SettingsFile::Path(), QFile::ReadOwner | QFile::WriteOwner);
}

void TestDeviceName::Start()
{
    log->Clear();
    page = std::make_unique<MultiScreen>(nullptr);
    page->show();
    QVERIFY(QTest::qWaitForWindowActive(page.get()));
}

void TestDeviceName::Rewrite(const QString& text)
{
    Open();
    QTest::keyClick(&Field(), Qt::Key_A, Qt::ControlModifier);
    QTest::keyClick(&Field(), Qt::Key_Backspace);
    Commit(text);
}

void TestDeviceName::Commit(const QString& text)
{
    QInputMethodEvent event;
    event.setCommitString(text);
    QCoreApplication::sendEvent(&Field(), &event);
}

void TestDeviceName::CompareClosed(const QString& name)
{
    QCOMPARE(Field().text(), name);
    QVERIFY(!Field().isEnabled());
    QVERIFY(!Field().hasFocus());
    QVERIFY(Pencil().isVisible());
    QCOMPARE(QString::fromUtf8(SettingsFile::DeviceName()), name);
}

void TestDeviceName::storedNameIsShown_data()
{
    QTest::addColumn<QByteArray>("stored");
    QTest::addColumn<QString>("name");
    const auto row = [](const char* name, const char* stored, const char* shown) {
        QTest::newRow(name) << QByteArray(stored) << QString::fromUtf8(shown);
    };
    row("plain", "My_PC-1", "My_PC-1");
    row("empty", "", "Tandra");
    row("blank inside", "My PC", "Tandra");
    row("dot", "my.pc", "Tandra");
    row("long dash of the help text", "my—pc", "Tandra");
    row("first and last of the range", "一龥", "一龥");
    row("before the range", "䷿", "Tandra");
    row("after the range", "龦", "Tandra");
    row("not UTF-8", "PC\xff", "Tandra");
    row("five Chinese", "维乐电脑一", "维乐电脑一");
    row("six Chinese", "维乐电脑一二", "维乐电脑一");
    row("fifteen Latin", "abcdefghijklmno", "abcdefghijklmno");
    row("sixteen Latin", "abcdefghijklmnop", "abcdefghijklmno");
    row("two Chinese and nine Latin", "维乐abcdefghi", "维乐abcdefghi");
    row("three Chinese and seven Latin", "维乐机abcdefg", "维乐机abcdef");
    row("eleven Latin and two Chinese", "abcdefghijk维乐", "abcdefghijk维");
    row("invalid only after the fifteenth", "abcdefghijklmno !", "abcdefghijklmno");
    row("invalid at the fifteenth", "abcdefghijklmn o", "Tandra");
}

void TestDeviceName::storedNameIsShown()
{
    QFETCH(QByteArray, stored);
    QFETCH(QString, name);
    StoreName(stored);
    Start();
    CompareClosed(name);
    COMPARE_LISTS(log->Messages().filter(QStringLiteral("device name")), QStringList());
}

void TestDeviceName::missingNameIsStoredAtTheStart()
{
    SettingsFile::Write(QByteArray());
    Start();
    CompareClosed(QStringLiteral("Tandra"));
}

void TestDeviceName::everyStartStoresTheName()
{
    SettingsFile::Write("; lost at the next write\n[Tandra]\ndevicename=Old\nfileStorePath=/x\n");
    Start();
    QCOMPARE(SettingsFile::DeviceName(), QByteArray("Old"));
    QCOMPARE(log->Messages().filter(QStringLiteral("ready to save")).size(), 1);
}

void TestDeviceName::unreadableSettingsLeaveTheDefaultOnThePage()
{
    const QByteArray blankLine = "[Tandra]\ndevicename=Other\n\n";
    SettingsFile::Write(blankLine);
    Start();
    QCOMPARE(Field().text(), QStringLiteral("Tandra"));
    QCOMPARE(SettingsFile::Content(), blankLine);
}

void TestDeviceName::otherSettingsAreKept()
{
    SettingsFile::Write("[VelodeskServer]\nstatement=true\ntrustNum=3\n[Tandra]\nfileStorePath=/x\n");
    Start();
    QCOMPARE(SettingsFile::DeviceName(), QByteArray("Tandra"));
    QCOMPARE(SettingsFile::SavePath(), QByteArray("/x"));
    QCOMPARE(SettingsFile::TrustNum(), QByteArray("3"));
    QCOMPARE(SettingsFile::Value("VelodeskServer", "statement"), QByteArray("true"));
}

void TestDeviceName::newNameIsShownAtTheNextStart()
{
    Rewrite(QStringLiteral("维乐"));
    Return();
    Start();
    CompareClosed(QStringLiteral("维乐"));
}

void TestDeviceName::pencilOpensTheField()
{
    const FocusWatch watch(Field());
    Open();
    QVERIFY(Field().isEnabled());
    QVERIFY(Field().hasFocus());
    QCOMPARE(watch.reason, Qt::OtherFocusReason);
    QVERIFY(!Pencil().isVisible());
    QCOMPARE(Pencil().pos(), QPoint(400, 3));
    QCOMPARE(Field().text(), QStringLiteral("Old"));
    QCOMPARE(Field().validator()->parent(), &Field());
}

void TestDeviceName::invalidCharactersAreRejectedWhileTyping_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("text");
    QTest::newRow("letters and digits") << QStringLiteral("azAZ09") << QStringLiteral("azAZ09");
    QTest::newRow("underscore and hyphen") << QStringLiteral("a_b-c") << QStringLiteral("a_b-c");
    QTest::newRow("blanks") << QStringLiteral(" a b ") << QStringLiteral("ab");
    QTest::newRow("punctuation") << QStringLiteral("!a@b#c$d%e^f&g*(") << QStringLiteral("abcdefg");
    QTest::newRow("adjacent ASCII characters") << QStringLiteral("`a{@A[/0:") << QStringLiteral("aA0");
}

void TestDeviceName::invalidCharactersAreRejectedWhileTyping()
{
    QFETCH(QString, typed);
    QFETCH(QString, text);
    Rewrite(QString());
    QTest::keyClicks(&Field(), typed);
    QCOMPARE(Field().text(), text);
    Return();
    CompareClosed(text);
}

void TestDeviceName::invalidCommittedTextIsRejectedAsAWhole_data()
{
    QTest::addColumn<QString>("committed");
    QTest::addColumn<QString>("text");
    QTest::newRow("Chinese") << QStringLiteral("电脑") << QStringLiteral("维电脑");
    QTest::newRow("edges of the range") << QStringLiteral("一龥") << QStringLiteral("维一龥");
    QTest::newRow("below the range") << QStringLiteral("一䷿") << QStringLiteral("维");
    QTest::newRow("above the range") << QStringLiteral("一龦") << QStringLiteral("维");
    QTest::newRow("Chinese comma") << QStringLiteral("电，脑") << QStringLiteral("维");
    QTest::newRow("full-width letter") << QStringLiteral("Ａ") << QStringLiteral("维");
    QTest::newRow("accent") << QStringLiteral("é") << QStringLiteral("维");
    QTest::newRow("long dash") << QStringLiteral("—") << QStringLiteral("维");
    QTest::newRow("emoji") << QStringLiteral("😀") << QStringLiteral("维");
}

void TestDeviceName::invalidCommittedTextIsRejectedAsAWhole()
{
    QFETCH(QString, committed);
    QFETCH(QString, text);
    Rewrite(QStringLiteral("维"));
    Commit(committed);
    QCOMPARE(Field().text(), text);
}

void TestDeviceName::longNameIsCutImmediately_data()
{
    QTest::addColumn<QString>("before");
    QTest::addColumn<QString>("committed");
    QTest::addColumn<QString>("text");
    const auto row = [](const char* name, const char* before, const char* committed, const char* text) {
        QTest::newRow(name) << QString::fromUtf8(before) << QString::fromUtf8(committed)
                            << QString::fromUtf8(text);
    };
    row("fifteenth Latin letter", "abcdefghijklmn", "o", "abcdefghijklmno");
    row("sixteenth Latin letter", "abcdefghijklmno", "p", "abcdefghijklmno");
    row("fifth Chinese", "维乐电脑", "一", "维乐电脑一");
    row("sixth Chinese", "维乐电脑一", "二", "维乐电脑一");
    row("five Chinese, then Latin", "维乐电脑一", "a", "维乐电脑一");
    row("four Chinese and three Latin", "维乐电脑", "abc", "维乐电脑abc");
    row("four Chinese and four Latin", "维乐电脑abc", "d", "维乐电脑abc");
    row("four Chinese, two Latin, Chinese", "维乐电脑ab", "一", "维乐电脑ab");
    row("two Chinese and nine Latin", "维乐", "abcdefghi", "维乐abcdefghi");
    row("two Chinese and ten Latin", "维乐abcdefghi", "j", "维乐abcdefghi");
    row("many in one commit", "", "一二三四五六七八九十一二三四五六七", "一二三四五");
    row("mixed in one commit", "", "a一b二c三d四e五f", "a一b二c三d");
}

void TestDeviceName::longNameIsCutImmediately()
{
    QFETCH(QString, before);
    QFETCH(QString, committed);
    QFETCH(QString, text);
    Rewrite(before);
    QCOMPARE(Field().text(), before);
    Commit(committed);
    QCOMPARE(Field().text(), text);
    Return();
    CompareClosed(text);
}

void TestDeviceName::cutRemovesTheEndAtAnyCursorPosition()
{
    Rewrite(QStringLiteral("abcdefghijklmno"));
    QTest::keyClick(&Field(), Qt::Key_Home);
    QTest::keyClicks(&Field(), QStringLiteral("X"));
    QCOMPARE(Field().text(), QStringLiteral("Xabcdefghijklmn"));
    // setText() moves the cursor to the end.
    QCOMPARE(Field().cursorPosition(), 15);
}

void TestDeviceName::pastedTextIsCut()
{
    Rewrite(QString());
    QApplication::clipboard()->setText(QStringLiteral("abcdefghijklmnopqrstuvwxyz"));
    QTest::keyClick(&Field(), Qt::Key_V, Qt::ControlModifier);
    QCOMPARE(Field().text(), QStringLiteral("abcdefghijklmno"));
    QCOMPARE(Field().maxLength(), 32767);
}

void TestDeviceName::fieldHasTheWidthOfTheTypedText()
{
    Rewrite(QString());
    QString typed;
    for (const QChar letter : QStringLiteral("iWm_W9iiWWiWmWm")) {
        typed += letter;
        QTest::keyClicks(&Field(), QString(letter));
        QCOMPARE(Field().size(), QSize(Width(typed), 20));
    }
    // One more character is cut off, but the width includes it until the next edit.
    QTest::keyClicks(&Field(), QStringLiteral("W"));
    QCOMPARE(Field().text(), typed);
    QCOMPARE(Field().size(), QSize(Width(typed + QStringLiteral("W")), 20));
    QTest::keyClick(&Field(), Qt::Key_Backspace);
    QCOMPARE(Field().size(), QSize(Width(typed.left(14)), 20));
}

void TestDeviceName::emptiedFieldShowsThePreviousName()
{
    Rewrite(QStringLiteral("a"));
    QTest::keyClick(&Field(), Qt::Key_Backspace);
    QCOMPARE(Field().text(), QString());
    QCOMPARE(Field().placeholderText(), QStringLiteral("Old"));
    QCOMPARE(Field().size(), QSize(Width(QStringLiteral("Old")), 20));
}

void TestDeviceName::rowIsCentred_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("pixelSize");
    QTest::newRow("narrow") << QStringLiteral("i") << 12;
    QTest::newRow("Latin") << QStringLiteral("My_PC-1") << 12;
    QTest::newRow("Latin, other font") << QStringLiteral("My_PC-12") << 13;
    QTest::newRow("Chinese") << QStringLiteral("维乐电脑一") << 12;
    // These names are wider than the row. The division rounds towards zero on both sides.
    QTest::newRow("wide") << QStringLiteral("WWWWWWWWWWWWWWW") << 40;
    QTest::newRow("wide, other font") << QStringLiteral("WWWWWWWWWWWWWWi") << 41;
    QTest::newRow("wide, third font") << QStringLiteral("WWWWWWWWWWWWWii") << 43;
}

void TestDeviceName::rowIsCentred()
{
    QFETCH(QString, name);
    QFETCH(int, pixelSize);
    QFont font = page->font();
    font.setPixelSize(pixelSize);
    page->setFont(font);
    Rewrite(name);
    Return();
    CompareClosed(name);
    const int spare = ROW_WIDTH - Width(name) - LABEL_WIDTH - PENCIL_WIDTH;
    const int left = spare / 2;
    QCOMPARE(Find(*page, "NameEditLabel")->geometry(), QRect(left, 1, LABEL_WIDTH, 20));
    QCOMPARE(Field().geometry(), QRect(left + LABEL_WIDTH, 1, Width(name), 20));
    QCOMPARE(Pencil().geometry(),
             QRect(qMin(left + LABEL_WIDTH + Width(name), 320), 3, PENCIL_WIDTH, PENCIL_WIDTH));
    QCOMPARE(spare < 0, pixelSize >= 40);
}

void TestDeviceName::pencilPositionIsAtMost320()
{
    QFont font = page->font();
    font.setPixelSize(20);
    page->setFont(font);
    bool before = false;
    bool after = false;
    for (int count = 1; count <= 15; ++count) {
        const QString name(count, QLatin1Char('W'));
        Rewrite(name);
        Return();
        const int end = Field().geometry().x() + Width(name);
        QCOMPARE(Pencil().x(), end > 320 ? 320 : end);
        before = before || end < 320;
        after = after || end > 320;
    }
    QVERIFY(before && after);
}

void TestDeviceName::AddWaysToEndTheEdit()
{
    QTest::addColumn<std::function<void()>>("end");
    const auto row = [](const char* name, std::function<void()> end) {
        QTest::newRow(name) << end;
    };
    row("Return", [this] { Return(); });
    row("Enter", [this] { QTest::keyClick(&Field(), Qt::Key_Enter); });
    row("focus lost", [this] { Field().clearFocus(); });
    row("another window", [this] {
        otherWindow = std::make_unique<QWidget>();
        otherWindow->show();
        otherWindow->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(otherWindow.get()));
    });
    row("press on the page", [this] { SendMouse(*page, QEvent::MouseButtonPress, BACKGROUND); });
    row("click on the background",
        [this] { QTest::mouseClick(page->windowHandle(), Qt::LeftButton, Qt::NoModifier, BACKGROUND); });
    row("right click on the background",
        [this] { QTest::mouseClick(page->windowHandle(), Qt::RightButton, Qt::NoModifier, BACKGROUND); });
    row("click on the label before it", [this] {
        const QWidget* label = Find(*page, "NameEditLabel");
        QTest::mouseClick(page->windowHandle(), Qt::LeftButton, Qt::NoModifier,
                          label->mapTo(page.get(), label->rect().center()));
    });
    row("click on the status image", [this] {
        QTest::mouseClick(page->windowHandle(), Qt::LeftButton, Qt::NoModifier, QPoint(360, 200));
    });
}

void TestDeviceName::endOfAnEditStoresTheName_data()
{
    AddWaysToEndTheEdit();
}

void TestDeviceName::endOfAnEditStoresTheName()
{
    QFETCH(std::function<void()>, end);
    Rewrite(QStringLiteral("新new"));
    QCOMPARE(SettingsFile::DeviceName(), QByteArray("Old"));
    log->Clear();
    end();
    CompareClosed(QStringLiteral("新new"));
    const QString line = ChangeLine(QStringLiteral("Old"), QStringLiteral("新new"));
    COMPARE_LISTS(log->Messages().filter(QStringLiteral("device name")), QStringList(line));
    QVERIFY(log->Contains(QStringLiteral("INFO"), QStringLiteral("VELODESK"), line));
    // The next edit begins with that name.
    page->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(page.get()));
    Rewrite(QStringLiteral("Next"));
    Return();
    QCOMPARE(log->Messages().filter(QStringLiteral("device name")).last(),
             ChangeLine(QStringLiteral("新new"), QStringLiteral("Next")));
}

void TestDeviceName::unchangedNameIsStoredWithoutALogLine_data()
{
    AddWaysToEndTheEdit();
}

void TestDeviceName::unchangedNameIsStoredWithoutALogLine()
{
    QFETCH(std::function<void()>, end);
    Open();
    StoreName("Other");
    log->Clear();
    end();
    CompareClosed(QStringLiteral("Old"));
    COMPARE_LISTS(log->Messages().filter(QStringLiteral("device name")), QStringList());
}

void TestDeviceName::emptyNameRestoresThePreviousName_data()
{
    AddWaysToEndTheEdit();
}

void TestDeviceName::emptyNameRestoresThePreviousName()
{
    QFETCH(std::function<void()>, end);
    Rewrite(QString());
    StoreName("Other");
    log->Clear();
    end();
    CompareClosed(QStringLiteral("Old"));
    COMPARE_LISTS(log->Messages().filter(QStringLiteral("device name")), QStringList());
}

void TestDeviceName::changeWithoutAnEditIsNotLogged()
{
    // A change is logged neither before the first edit nor after one.
    for (const QString& name : {QStringLiteral("Quiet"), QStringLiteral("Silent")}) {
        Field().setText(name);
        page->ComputerNameEditEditingFinished();
        CompareClosed(name);
        COMPARE_LISTS(log->Messages().filter(QStringLiteral("device name")), QStringList());
        Open();
        Return();
    }
}

void TestDeviceName::pressOutsideOfAClosedFieldStoresNothing()
{
    StoreName("Other");
    QTest::mouseClick(page->windowHandle(), Qt::LeftButton, Qt::NoModifier, BACKGROUND);
    QCOMPARE(SettingsFile::DeviceName(), QByteArray("Other"));
    Open();
    SendMouse(*page, QEvent::MouseMove, BACKGROUND);
    SendMouse(*page, QEvent::MouseButtonRelease, BACKGROUND);
    QVERIFY(Field().hasFocus());
    QCOMPARE(SettingsFile::DeviceName(), QByteArray("Other"));
}

void TestDeviceName::rejectedTextIsNotStored()
{
    Rewrite(QStringLiteral("a"));
    QTest::keyClicks(&Field(), QStringLiteral("=;[]"));
    Return();
    QCOMPARE(SettingsFile::DeviceName(), QByteArray("a"));
    CompareClosed(QStringLiteral("a"));
}

void TestDeviceName::editIsNotInterruptedByTheCastState_data()
{
    QTest::addColumn<bool>("casting");
    QTest::newRow("casting") << true;
    QTest::newRow("idle") << false;
}

void TestDeviceName::editIsNotInterruptedByTheCastState()
{
    QFETCH(bool, casting);
    page->SetPreScreenStatus(casting);
    log->Clear();
    Rewrite(QStringLiteral("New"));
    Return();
    CompareClosed(QStringLiteral("New"));
    COMPARE_LISTS(log->Messages().filter(QStringLiteral("app")), QStringList());
    QCOMPARE(Find<QPushButton>(*page, "PreScreenBtn")->text(),
             casting ? QStringLiteral("结束投屏") : QStringLiteral("开始投屏"));
}

void TestDeviceName::unwritableSettingsLeaveTheNewNameOnThePage()
{
    QVERIFY(QFile::setPermissions(SettingsFile::Path(), QFile::ReadOwner));
    Rewrite(QStringLiteral("New"));
    Return();
    QCOMPARE(Field().text(), QStringLiteral("New"));
    QVERIFY(Pencil().isVisible());
    QCOMPARE(SettingsFile::DeviceName(), QByteArray("Old"));
    // The page still uses the new name.
    Rewrite(QString());
    Return();
    QCOMPARE(Field().text(), QStringLiteral("New"));
}

void TestDeviceName::destructionOfThePageDropsAnEdit()
{
    Rewrite(QStringLiteral("New"));
    log->Clear();
    page.reset();
    QCOMPARE(SettingsFile::DeviceName(), QByteArray("Old"));
    COMPARE_LISTS(log->Messages(), QStringList());
}

int main(int argc, char** argv)
{
    EnterSandbox(argc, argv);
    return RunAsProgram<TestDeviceName>(argc, argv);
}

#include "TestDeviceName.moc"
