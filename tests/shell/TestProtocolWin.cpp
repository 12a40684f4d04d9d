#include <QLabel>
#include <QMouseEvent>
#include <QPushButton>
#include <QTest>
#include <memory>

#include "config/Configure.h"
#include "shell/ProtocolWin.h"
#include "support/CapturedLog.h"
#include "support/Widgets.h"

namespace {
const QString GREY_BEGIN = QStringLiteral(
    " QPushButton {\ncolor: #DFDFDF;\nborder: 0px solid  #DFDFDF;\nfont: 14px Noto Sans CJK SC;\n"
    "border-radius: 16px;background-color: #C5C5C5;\n}\n\nQPushButton:hover {background-color: #C5C5C5;}"
    "QPushButton:pressed {background-color: #C5C5C5;}");
const QString BLUE_BEGIN = QStringLiteral(
    " QPushButton {\ncolor: #FFFFFF;\nborder: 0px solid  #2B6FF2;\nfont: 14px Noto Sans CJK SC;\n"
    "border-radius: 16px;background-color: #2B6FF2;\n}\n\nQPushButton:hover {background-color: #3E80FF;}"
    "QPushButton:pressed {background-color: #1953C4;}");
} // namespace

class TestProtocolWin : public QObject
{
    Q_OBJECT

private slots:
    void init() { window = std::make_unique<ProtocolWin>(nullptr); }
    void cleanup() { window.reset(); }

    void widgetsHaveTheirProperties();
    void appearanceDependsOnShadow_data();
    void appearanceDependsOnShadow();
    void startsUnticked();
    void tickIsToggledByTheBoxAndByTheText_data();
    void tickIsToggledByTheBoxAndByTheText();
    void minimisingKeepsTheTick();
    void beginStoresTheAgreementAndCloses();
    void beginClosesWhenTheSettingsCannotBeWritten();
    void exitCallsTheHookAndThenCloses();
    void exitWithoutAHookCloses();
    void closeByTheWindowManagerDoesNotCallTheHook();
    void dragAreaIncludesItsCorners_data();
    void dragAreaIncludesItsCorners();

private:
    void VerifyTicked(bool ticked);
    QPushButton* Button(const char* name) { return Find<QPushButton>(*window, name); }

    std::unique_ptr<ProtocolWin> window;
};

void TestProtocolWin::VerifyTicked(bool ticked)
{
    QCOMPARE(Button("BeginBtn")->isEnabled(), ticked);
    QCOMPARE(Button("BeginBtn")->styleSheet(), ticked ? BLUE_BEGIN : GREY_BEGIN);
    QCOMPARE(
        Button("AgreeBtn")->styleSheet(),
        ticked ? QStringLiteral("border-image: url(:/velo/agreeicon);")
               : QStringLiteral(
                     "border: 1px solid rgba(0, 0, 0, 0.38);border-radius: 3px; color:rgba(0, 0, 0, 0.38)"));
    QCOMPARE(Button("AgreeLabel")->styleSheet(),
             ticked ? QStringLiteral("color: #2B6FF2;") : QStringLiteral("color: rgba(0, 0, 0, 0.38);"));
}

void TestProtocolWin::widgetsHaveTheirProperties()
{
    QCOMPARE(static_cast<int>(window->windowFlags()) & 0xFFFF, 10241);
    QCOMPARE(window->windowModality(), Qt::WindowModal);
    QCOMPARE(window->windowTitle(), QStringLiteral("维乐助手"));
    QVERIFY(window->hasMouseTracking());
    QVERIFY(!window->autoFillBackground());
    QCOMPARE(window->property("useStyleWindowManager"), QVariant(false));
    const QMap<QByteArray, QRect> geometry{
        {"TopFrame", QRect(168, 0, 728, 44)},    {"MinBtn", QRect(616, 0, 56, 44)},
        {"CloseBtn", QRect(672, 0, 56, 44)},     {"ICon", QRect(16, 16, 32, 32)},
        {"TitleLabel", QRect(348, 44, 200, 32)}, {"ContentFrame", QRect(92, 92, 712, 280)},
        {"AgreeBtn", QRect(92, 393, 12, 12)},    {"AgreeLabel", QRect(112, 390, 91, 18)},
        {"HorLine", QRect(92, 416, 712, 3)},     {"BeginBtn", QRect(392, 440, 112, 32)}};
    for (auto at = geometry.cbegin(); at != geometry.cend(); ++at) {
        QCOMPARE(Find(*window, at.key().constData())->geometry(), at.value());
    }
    QCOMPARE(Button("BeginBtn")->text(), QStringLiteral("开始"));
    QCOMPARE(Button("AgreeLabel")->text(), QStringLiteral("我同意以上条款"));
    QCOMPARE(Find<QLabel>(*window, "TitleLabel")->text(), QStringLiteral("欢迎使用维乐助手"));
    QCOMPARE(Find(*window, "TitleLabel")->font().pixelSize(), 24);
    QCOMPARE(Find(*window, "TitleLabel")->font().weight(), 63);
    QCOMPARE(Button("AgreeLabel")->font().pixelSize(), 12);
    QCOMPARE(Button("AgreeLabel")->font().weight(), 63);
    for (const char* name : {"TitleLabel", "AgreeLabel"}) {
        QCOMPARE(Find(*window, name)->font().family(), QStringLiteral("Noto Sans CJK SC"));
        QCOMPARE(Find(*window, name)->font().letterSpacing(), 1.0);
    }
    for (const char* name : {"AgreeBtn", "BeginBtn", "MinBtn", "CloseBtn", "AgreeLabel"}) {
        QCOMPARE(Find(*window, name)->focusPolicy(), Qt::NoFocus);
    }
    const auto* view = window->findChild<SerProEdit*>();
    QCOMPARE(view->geometry(), QRect(12, 10, 694, 269));
    QCOMPARE(view->parentWidget(), Find(*window, "ContentFrame"));
    QVERIFY(view->toPlainText().size() > 1000);
    // The text beside the tick is above all other widgets.
    window->show();
    QCOMPARE(Find(*window, "widget_bg")->childAt(150, 399), static_cast<QWidget*>(Button("AgreeLabel")));
}

void TestProtocolWin::appearanceDependsOnShadow_data()
{
    AddBothAppearances();
}

void TestProtocolWin::appearanceDependsOnShadow()
{
    QFETCH(bool, shadow);
    const Appearance appearance(shadow);
    const ProtocolWin other(nullptr);
    QCOMPARE(other.testAttribute(Qt::WA_TranslucentBackground), shadow);
    QCOMPARE(other.size().width() == 898, !shadow);
    QCOMPARE(Find(other, "widget_bg")->styleSheet(),
             shadow ? QStringLiteral("border-radius:20px;background-color:#F9F9F9;")
                    : QStringLiteral("border-radius:0px;background-color:#F9F9F9;"));
    QCOMPARE(Find(other, "CloseBtn")->styleSheet(),
             shadow ? CornerButtonStyle(true, "exitNormalShadow", "exitHoverShadow", "exitClickShadow")
                    : CornerButtonStyle(false, "exitNormal", "exitHover", "exitClick"));
    QCOMPARE(other.palette().color(QPalette::Disabled, QPalette::Window) == QColor(0xE2, 0xE2, 0xE2),
             !shadow);
}

void TestProtocolWin::startsUnticked()
{
    VerifyTicked(false);
    QVERIFY(!window->IsReadStatement());
}

void TestProtocolWin::tickIsToggledByTheBoxAndByTheText_data()
{
    QTest::addColumn<QByteArray>("button");
    QTest::newRow("box") << QByteArray("AgreeBtn");
    QTest::newRow("text") << QByteArray("AgreeLabel");
}

void TestProtocolWin::tickIsToggledByTheBoxAndByTheText()
{
    QFETCH(QByteArray, button);
    QTest::mouseClick(Button(button.constData()), Qt::LeftButton);
    VerifyTicked(true);
    QTest::mouseClick(Button(button.constData()), Qt::LeftButton);
    VerifyTicked(false);
}

void TestProtocolWin::minimisingKeepsTheTick()
{
    window->show();
    QTest::mouseClick(Button("AgreeBtn"), Qt::LeftButton);
    QTest::mouseClick(Button("MinBtn"), Qt::LeftButton);
    QVERIFY(window->isMinimized());
    window->showNormal();
    VerifyTicked(true);
}

void TestProtocolWin::beginStoresTheAgreementAndCloses()
{
    window->show();
    QTest::mouseClick(Button("BeginBtn"), Qt::LeftButton);
    QVERIFY2(window->isVisible(), "the disabled button closes the window");
    QTest::mouseClick(Button("AgreeBtn"), Qt::LeftButton);
    QTest::mouseClick(Button("BeginBtn"), Qt::LeftButton);
    QVERIFY(!window->isVisible());
    QVERIFY(window->IsReadStatement());
    QVERIFY(Singleton<Configure>::GetInstance()->IsStatementRead());
}

void TestProtocolWin::beginClosesWhenTheSettingsCannotBeWritten()
{
    QFile settings(qEnvironmentVariable("HOME") + QStringLiteral("/Velodesk/velodesk.conf"));
    QVERIFY(settings.open(QIODevice::WriteOnly));
    settings.write("\n");
    settings.close();
    window->show();
    window->ClickBeginBtn();
    QVERIFY(window->IsReadStatement());
    QVERIFY(!window->isVisible());
    QVERIFY(!Singleton<Configure>::GetInstance()->IsStatementRead());
}

void TestProtocolWin::exitCallsTheHookAndThenCloses()
{
    bool visibleAtHook = false;
    int calls = 0;
    window->exitHook = [this, &visibleAtHook, &calls] {
        visibleAtHook = window->isVisible();
        ++calls;
    };
    window->show();
    QTest::mouseClick(Button("CloseBtn"), Qt::LeftButton);
    QCOMPARE(calls, 1);
    QVERIFY(visibleAtHook);
    QVERIFY(!window->isVisible());
    QVERIFY(!window->IsReadStatement());
}

void TestProtocolWin::exitWithoutAHookCloses()
{
    window->show();
    window->Exit();
    QVERIFY(!window->isVisible());
}

void TestProtocolWin::closeByTheWindowManagerDoesNotCallTheHook()
{
    int calls = 0;
    window->exitHook = [&calls] {
        ++calls;
    };
    window->show();
    window->close();
    QCOMPARE(calls, 0);
    QVERIFY(!window->isVisible());
}

void TestProtocolWin::dragAreaIncludesItsCorners_data()
{
    AddBothAppearances();
}

void TestProtocolWin::dragAreaIncludesItsCorners()
{
    QFETCH(bool, shadow);
    const Appearance appearance(shadow);
    ProtocolWin other(nullptr);
    other.show();
    QVERIFY(!Drags(other, QPoint(896, 43)));
    QVERIFY(!Drags(other, QPoint(895, 44)));
    QVERIFY(Drags(other, QPoint(895, 43)));
}

QTEST_MAIN(TestProtocolWin)
#include "TestProtocolWin.moc"
