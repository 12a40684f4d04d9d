#include <QCursor>
#include <QEnterEvent>
#include <QPushButton>
#include <QScrollBar>
#include <QStackedWidget>
#include <QTest>
#include <QWindow>
#include <memory>

#include "SettingsFile.h"
#include "multiscreen/MultiScreen.h"
#include "support/CapturedLog.h"
#include "support/ProgramMain.h"
#include "support/Widgets.h"

namespace {
const QString HELP_TEXT_STYLE = QStringLiteral(
    "QPushButton {color: #1F1F1F;}QPushButton:hover {color: #2B6FF2;}QPushButton:pressed {color: #2B6FF2;}");
const QString HOVER_STYLE = QStringLiteral("color: #2B6FF2;");
constexpr int MENU = 1;

/// The two entries of the menu.
struct Entry
{
    QByteArray icon;
    QByteArray iconLabel;
    QByteArray text;
    QByteArray frame;
    QByteArray back;
    int index;
};

const Entry GUIDE{"NewHandBtn", "NewHandIcon", "NewHandTextBtn", "NewHandFrame", "NewHandReturnBtn", 2};
const Entry PROBLEMS{"CommonProblemBtn",   "ProblemIcon",      "CommonProTextBtn",
                     "CommonProblemFrame", "ProblemReturnBtn", 3};
} // namespace

Q_DECLARE_METATYPE(Entry)

class TestHelpPages : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void helpButtonShowsTheMenuAndReturnLeavesIt();
    void iconAndTextOpenTheSamePage_data();
    void iconAndTextOpenTheSamePage();
    void returnButtonShowsTheMenu_data();
    void returnButtonShowsTheMenu();
    void viewIsInItsFrame_data();
    void viewIsInItsFrame();
    void oneViewMovesBetweenTheFrames();
    void viewStaysInItsFrameAfterTheReturn();
    void textIsLoadedAgainAtTheTop_data();
    void textIsLoadedAgainAtTheTop();
    void loadingTwiceShowsTheTextOnce();
    void missingDocumentLeavesTheViewEmpty();
    void hoveringTheIconColoursTheText_data();
    void hoveringTheIconColoursTheText();
    void hoveringTheTextUsesItsOwnStyle_data();
    void hoveringTheTextUsesItsOwnStyle();
    void otherEventsDoNotChangeTheText_data();
    void otherEventsDoNotChangeTheText();
    void settingTheButtonsAgainResetsTheText();

private:
    static void AddEntries();
    void Click(const QByteArray& name);
    /// Clicks at the widget's position in the window, so that the topmost widget gets the click.
    void ClickOn(const QByteArray& name);
    SerProEdit* View(const QByteArray& frame)
    {
        return Find(*page, frame.constData())->findChild<SerProEdit*>();
    }
    int Index() { return Find<QStackedWidget>(*page, "ScreenWidget")->currentIndex(); }
    QString TextStyle(const Entry& entry) { return Find(*page, entry.text.constData())->styleSheet(); }

    std::unique_ptr<CapturedLog> log;
    std::unique_ptr<MultiScreen> page;
};

void TestHelpPages::init()
{
    SettingsFile::Write(QByteArray());
    log = std::make_unique<CapturedLog>();
    page = std::make_unique<MultiScreen>(nullptr);
    page->show();
    QVERIFY(QTest::qWaitForWindowExposed(page.get()));
    page->ClickHelpBtn();
    log->Clear();
}

void TestHelpPages::cleanup()
{
    page.reset();
    log.reset();
}

void TestHelpPages::AddEntries()
{
    QTest::addColumn<Entry>("entry");
    QTest::newRow("guide") << GUIDE;
    QTest::newRow("problems") << PROBLEMS;
}

void TestHelpPages::Click(const QByteArray& name)
{
    QTest::mouseClick(Find(*page, name.constData()), Qt::LeftButton);
}

void TestHelpPages::ClickOn(const QByteArray& name)
{
    const QWidget* widget = Find(*page, name.constData());
    QTest::mouseClick(page->windowHandle(), Qt::LeftButton, Qt::NoModifier,
                      widget->mapTo(page.get(), widget->rect().center()));
}

void TestHelpPages::helpButtonShowsTheMenuAndReturnLeavesIt()
{
    page->BackToMainScreen();
    QCOMPARE(Index(), 0);
    page->ClickHelpBtn();
    QCOMPARE(Index(), MENU);
    Click("ReturnBtn");
    QCOMPARE(Index(), 0);
}

void TestHelpPages::iconAndTextOpenTheSamePage_data()
{
    AddEntries();
}

void TestHelpPages::iconAndTextOpenTheSamePage()
{
    QFETCH(Entry, entry);
    QString shown;
    for (const QByteArray& name : {entry.icon, entry.text, entry.iconLabel}) {
        page->ClickHelpBtn();
        ClickOn(name);
        QCOMPARE(Index(), entry.index);
        SerProEdit* view = View(entry.frame);
        QVERIFY(view != nullptr && view->isVisible());
        QVERIFY(shown.isEmpty() || view->toPlainText() == shown);
        shown = view->toPlainText();
        QVERIFY(!shown.isEmpty());
    }
    COMPARE_LISTS(log->Messages(), QStringList());
}

void TestHelpPages::returnButtonShowsTheMenu_data()
{
    AddEntries();
}

void TestHelpPages::returnButtonShowsTheMenu()
{
    QFETCH(Entry, entry);
    Click(entry.text);
    QCOMPARE(Index(), entry.index);
    ClickOn(entry.back);
    QCOMPARE(Index(), MENU);
}

void TestHelpPages::viewIsInItsFrame_data()
{
    AddEntries();
}

void TestHelpPages::viewIsInItsFrame()
{
    QFETCH(Entry, entry);
    Click(entry.text);
    const SerProEdit* view = View(entry.frame);
    QCOMPARE(view->geometry(), QRect(21, 21, 583, 347));
    QCOMPARE(view->minimumSize(), QSize(583, 347));
    QCOMPARE(view->maximumSize(), QSize(583, 347));
    QVERIFY(view->isReadOnly());
    QCOMPARE(view->styleSheet(), QStringLiteral("background-color:rgba(249,249,249,1)"));
}

void TestHelpPages::oneViewMovesBetweenTheFrames()
{
    QVERIFY(View(GUIDE.frame) == nullptr && View(PROBLEMS.frame) == nullptr);
    Click(GUIDE.text);
    SerProEdit* view = View(GUIDE.frame);
    const QString guide = view->toPlainText();
    QVERIFY(guide.contains(QStringLiteral("信任此设备，下次快捷连接")));
    Click(GUIDE.back);
    Click(PROBLEMS.text);
    QCOMPARE(View(PROBLEMS.frame), view);
    QVERIFY(View(GUIDE.frame) == nullptr);
    QVERIFY(Find(*page, "NewHandFrame")->findChildren<QWidget*>().isEmpty());
    QVERIFY(view->isVisible());
    const QString problems = view->toPlainText();
    QVERIFY(problems.contains(QStringLiteral("暂不兼容您的网卡，使用中可能出现兼容性问题")));
    QVERIFY(!problems.contains(guide));
    Click(PROBLEMS.back);
    Click(GUIDE.icon);
    QCOMPARE(View(GUIDE.frame), view);
    QVERIFY(View(PROBLEMS.frame) == nullptr);
    QCOMPARE(view->toPlainText(), guide);
}

void TestHelpPages::viewStaysInItsFrameAfterTheReturn()
{
    Click(GUIDE.text);
    SerProEdit* view = View(GUIDE.frame);
    const QString guide = view->toPlainText();
    Click(GUIDE.back);
    QCOMPARE(View(GUIDE.frame), view);
    QCOMPARE(view->toPlainText(), guide);
    QVERIFY(!view->isVisible());
}

void TestHelpPages::textIsLoadedAgainAtTheTop_data()
{
    AddEntries();
}

void TestHelpPages::textIsLoadedAgainAtTheTop()
{
    QFETCH(Entry, entry);
    Click(entry.text);
    QScrollBar* bar = View(entry.frame)->verticalScrollBar();
    QTRY_VERIFY(bar->maximum() > 0);
    QCOMPARE(bar->value(), 0);
    // The view shows the top at each line height.
    for (int pixelSize = 8; pixelSize < 24; ++pixelSize) {
        QFont font = page->font();
        font.setPixelSize(pixelSize);
        page->setFont(font);
        bar->setValue(bar->maximum());
        Click(entry.back);
        QCOMPARE(bar->value(), bar->maximum());
        Click(entry.icon);
        QCOMPARE(bar->value(), 0);
        QCoreApplication::processEvents();
        QCOMPARE(bar->value(), 0);
    }
}

void TestHelpPages::loadingTwiceShowsTheTextOnce()
{
    Click(GUIDE.text);
    const QString once = View(GUIDE.frame)->toPlainText();
    View(GUIDE.frame)->append(QStringLiteral("not of the document"));
    Click(GUIDE.text);
    QCOMPARE(View(GUIDE.frame)->toPlainText(), once);
}

void TestHelpPages::missingDocumentLeavesTheViewEmpty()
{
    Click(GUIDE.text);
    page->InitHtmlContent(Find(*page, "CommonProblemFrame"), QStringLiteral(":/velo/missing"));
    QCOMPARE(View(PROBLEMS.frame)->toPlainText(), QString());
    COMPARE_LISTS(log->Messages(), QStringList(QStringLiteral("File :/velo/missing open failed.")));
}

void TestHelpPages::hoveringTheIconColoursTheText_data()
{
    AddEntries();
}

void TestHelpPages::hoveringTheIconColoursTheText()
{
    QFETCH(Entry, entry);
    const Entry& other = entry.index == GUIDE.index ? PROBLEMS : GUIDE;
    QWidget* icon = Find(*page, entry.icon.constData());
    QVERIFY(icon->testAttribute(Qt::WA_Hover));
    QCOMPARE(icon->styleSheet(), QStringLiteral("background-color:transparent;border-width:0px;"));
    const auto move = [this](const QPoint& pos) {
        QTest::mouseMove(page->windowHandle(), pos);
    };
    const QPoint inside = icon->mapTo(page.get(), icon->rect().center());
    const QPoint outside(20, 440);
    move(outside);
    for (int round = 0; round < 2; ++round) {
        QTRY_COMPARE(TextStyle(entry), HELP_TEXT_STYLE);
        move(inside);
        QTRY_COMPARE(TextStyle(entry), HOVER_STYLE);
        QCOMPARE(Find(*page, entry.text.constData())->palette().color(QPalette::ButtonText),
                 QColor(0x2B, 0x6F, 0xF2));
        QCOMPARE(TextStyle(other), HELP_TEXT_STYLE);
        move(outside);
    }
    QTRY_COMPARE(TextStyle(entry), HELP_TEXT_STYLE);
    QCOMPARE(Find(*page, entry.text.constData())->palette().color(QPalette::ButtonText),
             QColor(0x1F, 0x1F, 0x1F));
}

void TestHelpPages::hoveringTheTextUsesItsOwnStyle_data()
{
    AddEntries();
}

void TestHelpPages::hoveringTheTextUsesItsOwnStyle()
{
    QFETCH(Entry, entry);
    QWidget* text = Find(*page, entry.text.constData());
    const QImage idle = text->grab().toImage();
    const QPoint centre = text->mapTo(page.get(), text->rect().center());
    QCursor::setPos(page->mapToGlobal(QPoint(20, 440)));
    QCursor::setPos(page->mapToGlobal(centre));
    QTRY_VERIFY(text->underMouse());
    QCOMPARE(TextStyle(entry), HELP_TEXT_STYLE);
    QVERIFY(text->grab().toImage() != idle);
}

void TestHelpPages::otherEventsDoNotChangeTheText_data()
{
    AddEntries();
}

void TestHelpPages::otherEventsDoNotChangeTheText()
{
    QFETCH(Entry, entry);
    QWidget* icon = Find(*page, entry.icon.constData());
    SendMouse(*icon, QEvent::MouseMove, QPoint(5, 5));
    SendMouse(*icon, QEvent::MouseButtonPress, QPoint(5, 5));
    QCOMPARE(TextStyle(entry), HELP_TEXT_STYLE);
    // The event filter passes all events on: a press is still handled as a press.
    QVERIFY(static_cast<QPushButton*>(icon)->isDown());
    QEvent hoverLeave(QEvent::HoverLeave);
    QEvent leave(QEvent::Leave);
    QEnterEvent enter(QPointF(1, 1), QPointF(1, 1), QPointF(1, 1));
    QCoreApplication::sendEvent(icon, &enter);
    QCoreApplication::sendEvent(icon, &hoverLeave);
    QCOMPARE(TextStyle(entry), HOVER_STYLE);
    QCoreApplication::sendEvent(icon, &leave);
    // Entering other widgets has no effect either.
    QCoreApplication::sendEvent(Find(*page, entry.iconLabel.constData()), &enter);
    QCoreApplication::sendEvent(page.get(), &enter);
    QCOMPARE(TextStyle(entry), HELP_TEXT_STYLE);
}

void TestHelpPages::settingTheButtonsAgainResetsTheText()
{
    page->SetHelpPageBtn();
    for (const Entry& entry : {GUIDE, PROBLEMS}) {
        QCOMPARE(TextStyle(entry), HELP_TEXT_STYLE);
        QEnterEvent enter(QPointF(1, 1), QPointF(1, 1), QPointF(1, 1));
        QCoreApplication::sendEvent(Find(*page, entry.icon.constData()), &enter);
        QCOMPARE(TextStyle(entry), HOVER_STYLE);
        page->SetHelpPageBtn();
        QCOMPARE(TextStyle(entry), HELP_TEXT_STYLE);
        page->ClickHelpBtn();
        Click(entry.icon);
        QCOMPARE(Index(), entry.index);
    }
}

PROGRAM_TEST_MAIN(TestHelpPages)
#include "TestHelpPages.moc"
