#include <QImage>
#include <QPainter>
#include <QTemporaryDir>
#include <QTest>

#include "multiscreen/WhiteBackground.h"

namespace {
constexpr QRect FRAME_RECT(20, 30, 61, 40);
constexpr Qt::GlobalColor PAGE_COLOR = Qt::yellow;

/// A widget with or without a background colour that counts its paint events.
class Layer : public QWidget
{
public:
    explicit Layer(QWidget* parent, const QBrush& brush = Qt::NoBrush) : QWidget(parent), background(brush) {}
    int paints = 0;

protected:
    void paintEvent(QPaintEvent*) override
    {
        ++paints;
        QPainter(this).fillRect(rect(), background);
    }

private:
    const QBrush background;
};

/// A page with a frame, inside a window or as a window itself.
struct Scene
{
    explicit Scene(bool hasWhiteBackground, bool isWindow = false, Qt::GlobalColor color = PAGE_COLOR)
        : window(nullptr), page(isWindow ? nullptr : &window, color)
    {
        for (QWidget* widget : {static_cast<QWidget*>(&window), static_cast<QWidget*>(&page)}) {
            widget->resize(200, 100);
        }
        frame = new Layer(&page);
        frame->setGeometry(FRAME_RECT);
        // As in the form, the style paints the background of the frame.
        frame->setAttribute(Qt::WA_StyledBackground);
        if (hasWhiteBackground) {
            new WhiteBackground(frame, &page);
        }
        (isWindow ? page : window).show();
    }
    QImage Image() { return page.grab().toImage(); }
    QColor Pixel()
    {
        const QImage image = Image();
        return image.pixelColor(FRAME_RECT.center() * image.devicePixelRatio());
    }

    Layer window;
    Layer page;
    Layer* frame;
};
} // namespace

/// CTest runs this test with the scale factors 1 and 1.5.
class TestWhiteBackground : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void backgroundIsWhiteOnAPageOfTheWindow();
    void pageThatIsAWindowKeepsItsBackground();
    void changeDoesNotRepaintTheWidgetsBelow();
    void widgetHasTheAppearanceOfItsStyle_data();
    void widgetHasTheAppearanceOfItsStyle();

private:
    QTemporaryDir directory;
    QString image;
};

void TestWhiteBackground::initTestCase()
{
    // The colour is semi-transparent, so it would be darker if it were painted twice.
    QImage half(30, 20, QImage::Format_ARGB32);
    half.fill(QColor(0, 0, 255, 128));
    half.setPixelColor(3, 2, Qt::red);
    image = directory.filePath(QStringLiteral("half.png"));
    QVERIFY(half.save(image));
}

void TestWhiteBackground::backgroundIsWhiteOnAPageOfTheWindow()
{
    Scene without(false);
    QCOMPARE(without.Pixel(), QColor(PAGE_COLOR));
    Scene with(true);
    QCOMPARE(with.Pixel(), QColor(Qt::white));
    // The whole area of the frame is white, and nothing else changes.
    QImage expected = without.Image();
    QPainter(&expected).fillRect(FRAME_RECT, Qt::white);
    QVERIFY(with.Image() == expected);
}

void TestWhiteBackground::pageThatIsAWindowKeepsItsBackground()
{
    Scene scene(true, true);
    QCOMPARE(scene.Pixel(), QColor(PAGE_COLOR));
    QVERIFY(!scene.frame->testAttribute(Qt::WA_OpaquePaintEvent));
}

void TestWhiteBackground::changeDoesNotRepaintTheWidgetsBelow()
{
    Scene scene(true);
    QVERIFY(QTest::qWaitForWindowExposed(&scene.window));
    // Setting a style sheet resets the widget's background attributes.
    for (const char* style : {"", "background-color:blue", "border:2px solid red"}) {
        scene.frame->setStyleSheet(QLatin1String(style));
        QVERIFY(scene.frame->testAttribute(Qt::WA_OpaquePaintEvent));
        scene.window.repaint();
        QCoreApplication::processEvents();
        const int paints = scene.page.paints;
        QVERIFY(paints > 0);
        scene.frame->repaint();
        QCOMPARE(scene.page.paints, paints);
    }
    // Other events are not handled.
    scene.frame->setAttribute(Qt::WA_OpaquePaintEvent, false);
    static int warnings;
    warnings = 0;
    const QtMessageHandler before =
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) { ++warnings; });
    QEvent other(QEvent::User);
    QCoreApplication::sendEvent(scene.frame, &other);
    qInstallMessageHandler(before);
    QVERIFY(!scene.frame->testAttribute(Qt::WA_OpaquePaintEvent));
    // Qt prints a warning if a widget paints outside a paint event.
    QCOMPARE(warnings, 0);
}

void TestWhiteBackground::widgetHasTheAppearanceOfItsStyle_data()
{
    QTest::addColumn<bool>("isWindow");
    QTest::newRow("on a page of the window") << false;
    QTest::newRow("on a page that is a window") << true;
}

void TestWhiteBackground::widgetHasTheAppearanceOfItsStyle()
{
    QFETCH(bool, isWindow);
    // WhiteBackground treats a page inside a window as white. A page that is a window keeps its own
    // background.
    const Qt::GlobalColor color = isWindow ? PAGE_COLOR : Qt::white;
    Scene reference(false, isWindow, color);
    Scene tested(true, isWindow, color);
    const QString first = QStringLiteral("border-image: url(%1)").arg(image);
    const QString second = QStringLiteral("border-image: url(%1); border-width:4px").arg(image);
    for (const QString& style : {first, second, first}) {
        reference.frame->setStyleSheet(style);
        tested.frame->setStyleSheet(style);
        QVERIFY(tested.Image() == reference.Image());
        QVERIFY(tested.Pixel() != QColor(PAGE_COLOR) && tested.Pixel() != QColor(Qt::white));
    }
    reference.frame->resize(90, 50);
    tested.frame->resize(90, 50);
    QVERIFY(tested.Image() == reference.Image());
}

QTEST_MAIN(TestWhiteBackground)
#include "TestWhiteBackground.moc"
