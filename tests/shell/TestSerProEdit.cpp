#include <QDesktopServices>
#include <QMouseEvent>
#include <QScrollBar>
#include <QTemporaryDir>
#include <QTest>
#include <memory>

#include "shell/SerProEdit.h"
#include "support/CapturedLog.h"
#include "support/Widgets.h"

namespace {
/// Replaces the desktop's browser.
class Browser : public QObject
{
    Q_OBJECT

public:
    Browser()
    {
        QDesktopServices::setUrlHandler(QStringLiteral("http"), this, "Open");
        QDesktopServices::setUrlHandler(QStringLiteral("https"), this, "Open");
    }
    ~Browser() override
    {
        QDesktopServices::unsetUrlHandler(QStringLiteral("http"));
        QDesktopServices::unsetUrlHandler(QStringLiteral("https"));
    }

    QStringList opened;

public slots:
    void Open(const QUrl& url) { opened.append(url.toString()); }
};

const QString ADDRESS = QStringLiteral("https://example.com/app");
} // namespace

class TestSerProEdit : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void linkHasNoUnderline();
    void textWithoutAddressIsNotChanged();
    void addressesAreFound_data();
    void addressesAreFound();
    void processedTextIsAppendedToTheView();
    void clickInsideTheSpanOpens_data();
    void clickInsideTheSpanOpens();
    void clickUsesTheAnchorOfTheSelection();
    void overlappingSpansBothOpen();
    void spansAreKeptWhenTheDocumentChanges();
    void headingIsKeptByTheLoad();
    void loadShowsTheTop();
    void documentIsCutAtItsFirstZeroByte();
    void missingDocumentDoesNotChangeTheView();
    void viewsOfTheSameDocumentAreEqual();
    void viewIsReadOnlyAndStyled();
    void releaseCallsThePressHandler();

private:
    QString Write(const QByteArray& content);
    void ClickAt(int position);

    std::unique_ptr<CapturedLog> log;
    std::unique_ptr<QTemporaryDir> directory;
    std::unique_ptr<Browser> browser;
    std::unique_ptr<SerProEdit> view;
};

void TestSerProEdit::init()
{
    log = std::make_unique<CapturedLog>();
    directory = std::make_unique<QTemporaryDir>();
    browser = std::make_unique<Browser>();
    view = std::make_unique<SerProEdit>(nullptr);
    view->resize(400, 200);
}

void TestSerProEdit::cleanup()
{
    view.reset();
    browser.reset();
    directory.reset();
    log.reset();
}

QString TestSerProEdit::Write(const QByteArray& content)
{
    const QString path = directory->filePath(QStringLiteral("document.html"));
    QFile file(path);
    file.open(QIODevice::WriteOnly);
    file.write(content);
    return path;
}

void TestSerProEdit::ClickAt(int position)
{
    QTextCursor cursor = view->textCursor();
    cursor.setPosition(position);
    view->setTextCursor(cursor);
    SendMouse(*view->viewport(), QEvent::MouseButtonRelease, view->cursorRect().center());
}

void TestSerProEdit::linkHasNoUnderline()
{
    QCOMPARE(view->GetLinkUrl(QStringLiteral("x")),
             QStringLiteral("<a href='x'><span style='text-decoration:none'>x</span></a>"));
}

void TestSerProEdit::textWithoutAddressIsNotChanged()
{
    const QString text = QStringLiteral("<p>http:/none ftp://none.example 协议</p>");
    QCOMPARE(view->ProcessHtmlLinkUrl(text), text);
    QCOMPARE(view->toPlainText(), QString());
}

void TestSerProEdit::addressesAreFound_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("result");
    const auto link = [](const QString& url) {
        return SerProEdit(nullptr).GetLinkUrl(url);
    };
    QTest::newRow("alone") << ADDRESS << link(ADDRESS);
    QTest::newRow("full stop at the end")
        << QStringLiteral("see http://a.b/c.")
        << QStringLiteral("see ") + link(QStringLiteral("http://a.b/c")) + QStringLiteral(".");
    QTest::newRow("two") << QStringLiteral("1 http://a.b 2 https://c.d/e?f=g,h 3")
                         << QStringLiteral("1 ") + link(QStringLiteral("http://a.b")) +
                                QStringLiteral(" 2 ") + link(QStringLiteral("https://c.d/e?f=g,h")) +
                                QStringLiteral(" 3");
    QTest::newRow("in an attribute") << QStringLiteral("<img src='http://a.b/c'>")
                                     << QStringLiteral("<img src='") + link(QStringLiteral("http://a.b/c")) +
                                            QStringLiteral("'>");
    QTest::newRow("Chinese character ends the address")
        << QStringLiteral("http://a.b/c下载")
        << link(QStringLiteral("http://a.b/c")) + QStringLiteral("下载");
    QTest::newRow("scheme in capitals is no address")
        << QStringLiteral("HTTP://a.b") << QStringLiteral("HTTP://a.b");
    QTest::newRow("too short") << QStringLiteral("http://a") << QStringLiteral("http://a");
}

void TestSerProEdit::addressesAreFound()
{
    QFETCH(QString, text);
    QFETCH(QString, result);
    QCOMPARE(view->ProcessHtmlLinkUrl(text), result);
}

void TestSerProEdit::processedTextIsAppendedToTheView()
{
    view->ProcessHtmlLinkUrl(QStringLiteral("<p>12345</p>") + ADDRESS);
    // Two paragraphs: the text, and the link after the paragraph break.
    QCOMPARE(view->toPlainText(), QStringLiteral("12345\n") + ADDRESS);
}

void TestSerProEdit::clickInsideTheSpanOpens_data()
{
    QTest::addColumn<int>("position");
    QTest::addColumn<int>("count");
    const int end = 6 + ADDRESS.length();
    QTest::newRow("first") << 5 << 0;
    QTest::newRow("after the first") << 6 << 1;
    QTest::newRow("before the last") << end - 1 << 1;
    QTest::newRow("last") << end << 0;
    QTest::newRow("outside") << 2 << 0;
}

void TestSerProEdit::clickInsideTheSpanOpens()
{
    QFETCH(int, position);
    QFETCH(int, count);
    view->ProcessHtmlLinkUrl(QStringLiteral("<p>12345</p>") + ADDRESS);
    ClickAt(position);
    QCOMPARE(browser->opened.size(), count);
    if (count == 1) {
        QCOMPARE(browser->opened.first(), ADDRESS);
    }
}

void TestSerProEdit::clickUsesTheAnchorOfTheSelection()
{
    view->ProcessHtmlLinkUrl(QStringLiteral("<p>12345</p>") + ADDRESS);
    QTextCursor cursor = view->textCursor();
    cursor.setPosition(8);
    cursor.setPosition(1, QTextCursor::KeepAnchor);
    view->setTextCursor(cursor);
    SendMouse(*view->viewport(), QEvent::MouseButtonRelease, QPoint(1, 1));
    QCOMPARE(browser->opened.size(), 1);
    cursor.setPosition(1);
    cursor.setPosition(8, QTextCursor::KeepAnchor);
    view->setTextCursor(cursor);
    SendMouse(*view->viewport(), QEvent::MouseButtonRelease, QPoint(1, 1));
    QCOMPARE(browser->opened.size(), 1);
}

void TestSerProEdit::overlappingSpansBothOpen()
{
    view->ProcessHtmlLinkUrl(QStringLiteral("<p>12345</p>") + ADDRESS);
    view->clear();
    view->ProcessHtmlLinkUrl(QStringLiteral("<p>12345</p>https://other.example/longer/than/the/first"));
    ClickAt(8);
    QCOMPARE(browser->opened,
             QStringList({ADDRESS, QStringLiteral("https://other.example/longer/than/the/first")}));
}

void TestSerProEdit::spansAreKeptWhenTheDocumentChanges()
{
    const QString path = Write("<html><body><p>12345 https://example.com/app</p></body></html>");
    for (int i = 0; i < 2; ++i) {
        view->clear();
        view->InitUi(path);
    }
    ClickAt(12);
    QCOMPARE(browser->opened.size(), 2);
    view->clear();
    view->InitUi(Write("<html><body><p>A document with no address in it at all</p></body></html>"));
    ClickAt(12);
    QCOMPARE(browser->opened.size(), 4);
}

void TestSerProEdit::headingIsKeptByTheLoad()
{
    view->append(QStringLiteral("Heading"));
    view->InitUi(Write("<html><body><p>Text with https://example.com/app in it</p></body></html>"));
    QVERIFY2(view->toPlainText().startsWith(QStringLiteral("Heading")), qPrintable(view->toPlainText()));
    QCOMPARE(view->toPlainText().count(QStringLiteral("https://example.com/app")), 1);
    QVERIFY(view->toPlainText().contains(QStringLiteral("Text with")));
}

void TestSerProEdit::loadShowsTheTop()
{
    // The margin is large, so that the cursor is already visible before the view shows the top.
    const QString path = Write("<html><body><p style='margin-top:90px'>first</p>" +
                               QByteArray("<p>line</p>").repeated(200) + "</body></html>");
    QScrollBar* bar = view->verticalScrollBar();
    view->show();
    for (int times = 0; times < 2; ++times) {
        view->InitUi(path);
        QCOMPARE(view->textCursor().position(), 0);
        QCOMPARE(bar->value(), 0);
        QVERIFY(bar->maximum() > 0);
        view->moveCursor(QTextCursor::End);
        QVERIFY(bar->value() > 0);
    }
}

void TestSerProEdit::documentIsCutAtItsFirstZeroByte()
{
    view->InitUi(Write(QByteArray("<p>before</p>\0<p>after</p>", 26)));
    QCOMPARE(view->toPlainText(), QStringLiteral("before"));
}

void TestSerProEdit::missingDocumentDoesNotChangeTheView()
{
    view->append(QStringLiteral("Heading"));
    view->InitUi(QStringLiteral("/nowhere/document"));
    QCOMPARE(view->toPlainText(), QStringLiteral("Heading"));
    QVERIFY(log->Contains(QStringLiteral("INFO"), QStringLiteral("VELODESK"),
                          QStringLiteral("File /nowhere/document open failed.")));
}

void TestSerProEdit::viewsOfTheSameDocumentAreEqual()
{
    const QString path = Write("<p style='font-weight:bold'>one</p><p>two <i>three</i></p>");
    view->InitUi(path);
    // The document is read once for the first two views, and again for the third.
    for (int other = 0; other < 2; ++other) {
        SerProEdit second(nullptr);
        second.InitUi(path);
        QCOMPARE(second.toHtml(), view->toHtml());
        second.clear();
    }
    view->InitUi(Write("<p>four</p>"));
    QVERIFY(view->toPlainText().endsWith(QStringLiteral("four")));
}

void TestSerProEdit::viewIsReadOnlyAndStyled()
{
    view->InitUi(Write("<p>text</p>"));
    QVERIFY(view->isReadOnly());
    QCOMPARE(view->styleSheet(), QStringLiteral("background-color:rgba(249,249,249,1)"));
    const QString arrow =
        QStringLiteral("\nheight:9px;\nwidth:4px;\nbackground:rgba(0,0,0,0%);\nsubcontrol-position:");
    QCOMPARE(
        view->verticalScrollBar()->styleSheet(),
        QStringLiteral("QScrollBar:vertical {\nwidth:4px;\nbackground:rgba(0,0,0,0%);\npadding-top:9px;\n"
                       "padding-bottom:9px;\n}\n"
                       "QScrollBar::handle:vertical, QScrollBar::handle:vertical:hover {\nwidth:4px;\n"
                       "background:rgba(240,240,240,100%);\nborder-radius:2px;\nmin-height:54px;\n}\n"
                       "QScrollBar::add-line:vertical, QScrollBar::add-line:vertical:hover {") +
            arrow +
            QStringLiteral("bottom;\n}\n"
                           "QScrollBar::sub-line:vertical, QScrollBar::sub-line:vertical:hover {") +
            arrow +
            QStringLiteral("top;\n}\n"
                           "QScrollBar::add-page:vertical, QScrollBar::sub-page:vertical {\n"
                           "background:rgba(0,0,0,0%);\nborder-radius:2px;\n}"));
    COMPARE_LISTS(log->Messages(), QStringList());
}

void TestSerProEdit::releaseCallsThePressHandler()
{
    // The base class scrolls while a selection extends beyond the edge. Only its release handler ends this.
    view->setPlainText(QStringLiteral("line\n").repeated(500));
    view->show();
    const QPoint inside(10, 10);
    const QPoint below(10, view->viewport()->height() + 40);
    SendMouse(*view->viewport(), QEvent::MouseButtonPress, inside);
    // The pointer's position controls the scrolling.
    QCursor::setPos(view->viewport()->mapToGlobal(below));
    SendMouse(*view->viewport(), QEvent::MouseMove, below);
    SendMouse(*view->viewport(), QEvent::MouseButtonRelease, inside);
    const int atRelease = view->verticalScrollBar()->value();
    QTRY_VERIFY(view->verticalScrollBar()->value() > atRelease);
}

QTEST_MAIN(TestSerProEdit)
#include "TestSerProEdit.moc"
