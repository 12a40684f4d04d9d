#include <QLabel>
#include <QMouseEvent>
#include <QPushButton>
#include <QScrollBar>
#include <QStackedWidget>
#include <QTest>
#include <QTextBlock>
#include <memory>

#include "shell/AboutWin.h"
#include "shell/VeloWin.h"
#include "support/CapturedLog.h"
#include "support/Widgets.h"

class TestAboutWin : public QObject
{
    Q_OBJECT

private slots:
    void init() { window = std::make_unique<VeloWin>(nullptr); }
    void cleanup() { window.reset(); }

    void widgetsHaveTheirProperties();
    void linkIsCentred();
    void startsWithTheAboutView();
    void buttonsSwitchBetweenTheViews();
    void agreementOpensAtItsTop();
    void headingAndDividerPrecedeTheAgreement();
    void buttonsDoNotCrashWithoutParent();

private:
    AboutWin& Page() { return *window->findChild<AboutWin*>(); }
    int View() { return Find<QStackedWidget>(Page(), "aboutStack")->currentIndex(); }
    void Click(const char* name) { QTest::mouseClick(Find(Page(), name), Qt::LeftButton); }

    std::unique_ptr<VeloWin> window;
};

void TestAboutWin::widgetsHaveTheirProperties()
{
    const QMap<QByteArray, QRect> geometry{
        {"aboutStack", QRect(0, 0, 728, 460)}, {"abtBackBtn", QRect(56, 16, 40, 40)},
        {"abtTitle", QRect(104, 16, 66, 40)},  {"abtLogo", QRect(326, 152, 64, 64)},
        {"abtName", QRect(316, 236, 100, 30)}, {"abtVersion", QRect(336, 270, 57, 20)},
        {"proBackBtn", QRect(56, 16, 40, 40)}, {"proTiltle", QRect(104, 16, 132, 40)},
        {"protocal", QRect(56, 72, 616, 368)}};
    for (auto at = geometry.cbegin(); at != geometry.cend(); ++at) {
        QCOMPARE(Find(Page(), at.key().constData())->geometry(), at.value());
    }
    QCOMPARE(Page().windowTitle(), QStringLiteral("Form"));
    QCOMPARE(Find<QLabel>(Page(), "abtVersion")->text(), QStringLiteral("版本1.0"));
    QCOMPARE(Find<QLabel>(Page(), "abtName")->text(), QStringLiteral("维乐助手"));
    QCOMPARE(Find<QLabel>(Page(), "abtTitle")->text(), QStringLiteral("关于"));
    QCOMPARE(Find<QPushButton>(Page(), "proBtn")->text(), QStringLiteral("服务协议"));
    QCOMPARE(Find(Page(), "proBtn")->font().pixelSize(), 14);
    const struct
    {
        const char* name;
        int pixelSize;
        int weight;
    } fonts[] = {{"abtTitle", 32, 75}, {"proTiltle", 32, 75}, {"abtName", 24, 75}, {"abtVersion", 14, 50}};
    for (const auto& font : fonts) {
        const QFont used = Find(Page(), font.name)->font();
        QCOMPARE(used.family(), QStringLiteral("Noto Sans CJK SC"));
        QCOMPARE(used.pixelSize(), font.pixelSize);
        QCOMPARE(used.weight(), font.weight);
        // QFont stores the spacing in 64ths of a pixel.
        QVERIFY(qAbs(used.letterSpacing() - 0.7) < 1.0 / 64);
    }
    for (const char* name : {"abtTitle", "proTiltle", "abtName", "abtVersion"}) {
        QCOMPARE(Find(Page(), name)->styleSheet(), QStringLiteral("color:#1F1F1F;"));
    }
    for (const char* name : {"abtLogo", "abtName"}) {
        QCOMPARE(Find<QLabel>(Page(), name)->alignment(), Qt::AlignHCenter);
    }
    for (const char* name : {"abtBackBtn", "proBackBtn", "proBtn"}) {
        QCOMPARE(Find(Page(), name)->focusPolicy(), Qt::NoFocus);
    }
    QCOMPARE(Page().property("useStyleWindowManager"), QVariant(false));
    QCOMPARE(Find(Page(), "abtBackBtn")->accessibleName(), QStringLiteral("返回"));
    const auto* view = Page().findChild<SerProEdit*>();
    QCOMPARE(view->geometry(), QRect(20, 17, 588, 351));
}

void TestAboutWin::linkIsCentred()
{
    QCOMPARE(Find(Page(), "proBtn")->geometry(), QRect((727 - 59) / 2, 294, 60, 20));
}

void TestAboutWin::startsWithTheAboutView()
{
    QCOMPARE(View(), 0);
    // After construction the agreement is the current view, until the main window resets it.
    const AboutWin alone(nullptr);
    QCOMPARE(Find<QStackedWidget>(alone, "aboutStack")->currentIndex(), 1);
}

void TestAboutWin::buttonsSwitchBetweenTheViews()
{
    window->show();
    window->ShowAboutWin();
    QCOMPARE(Find<QStackedWidget>(*window, "appStack")->currentWidget(), &Page());
    Click("proBtn");
    QCOMPARE(View(), 1);
    Click("proBackBtn");
    QCOMPARE(View(), 0);
    Click("abtBackBtn");
    QCOMPARE(Find<QStackedWidget>(*window, "appStack")->currentIndex(), 0);
}

void TestAboutWin::agreementOpensAtItsTop()
{
    window->show();
    window->ShowAboutWin();
    Click("proBtn");
    auto* view = Page().findChild<SerProEdit*>();
    auto* bar = view->verticalScrollBar();
    bar->setValue(bar->maximum());
    QVERIFY(bar->value() > 100);
    view->moveCursor(QTextCursor::End);
    Click("proBackBtn");
    Click("proBtn");
    QCOMPARE(bar->value(), bar->minimum());
    QCOMPARE(view->textCursor().position(), 0);
    QVERIFY(!view->textCursor().hasSelection());
}

void TestAboutWin::headingAndDividerPrecedeTheAgreement()
{
    const auto* view = Page().findChild<SerProEdit*>();
    const QString text = view->toPlainText();
    // In the plain text, the divider is the replacement character of an image, followed by a line break.
    QVERIFY2(text.startsWith(QStringLiteral("维乐助手\n版本1.0\n\uFFFC\n")), qPrintable(text.left(40)));
    QVERIFY(view->toHtml().contains(QStringLiteral(":/velo/splitter")));
    const struct
    {
        int pixelSize;
        int weight;
    } fonts[] = {{24, QFont::Bold}, {14, QFont::Normal}};
    QTextBlock line = view->document()->firstBlock();
    for (const auto& font : fonts) {
        const QTextCharFormat format = line.begin().fragment().charFormat();
        QCOMPARE(format.font().pixelSize(), font.pixelSize);
        QCOMPARE(format.font().weight(), font.weight);
        QCOMPARE(format.font().letterSpacing(), 1.0);
        QCOMPARE(format.foreground().color(), QColor(0x1F, 0x1F, 0x1F));
        line = line.next();
    }
}

void TestAboutWin::buttonsDoNotCrashWithoutParent()
{
    AboutWin alone(nullptr);
    QTest::mouseClick(Find(alone, "abtBackBtn"), Qt::LeftButton);
    alone.BackToAboutWin();
    QCOMPARE(Find<QStackedWidget>(alone, "aboutStack")->currentIndex(), 0);
}

QTEST_MAIN(TestAboutWin)
#include "TestAboutWin.moc"
