#include <QImage>
#include <QPainter>
#include <QTemporaryDir>
#include <QTest>

#include "multiscreen/WhiteBackground.h"

namespace {
constexpr QRect PLACE(20, 30, 61, 40);
constexpr Qt::GlobalColor PAGE_COLOR = Qt::yellow;

/// A widget with or without a background colour that counts its paint events.
class Layer : public QWidget
{
public:
    explicit Layer(QWidget* parent, const QBrush& brush = Qt::NoBrush) : QWidget(parent), ground(brush) {}
    int paints = 0;

protected:
    void paintEvent(QPaintEvent*) override
    {
        ++paints;
        QPainter(this).fillRect(rect(), ground);
    }

private:
    const QBrush ground;
};

/// A page with a frame, inside a window or as a window itself.
struct Scene
{
    explicit Scene(bool hasGround, bool isWindow = false, Qt::GlobalColor color = PAGE_COLOR)
        : window(nullptr), page(isWindow ? nullptr : &window, color)
    {
        for (QWidget* widget : {static_cast<QWidget*>(&window), static_cast<QWidget*>(&page)}) {
            widget->resize(200, 100);
        }
        frame = new Layer(&page);
        frame->setGeometry(PLACE);
        // As for the form's frames: the style paints the background.
        frame->setAttribute(Qt::WA_StyledBackground);
        if (hasGround) {
            new WhiteBackground(frame, &page);
        }
        (isWindow ? page : window).show();
    }
    QImage Picture() { return page.grab().toImage(); }
    QColor Pixel()
    {
        const QImage picture = Picture();
        return picture.pixelColor(PLACE.center() * picture.devicePixelRatio());
    }

    Layer window;
    Layer page;
    Layer* frame;
};
} // namespace

/// CTest runs it twice: at a scale factor of 1, and with a larger one.
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
    // The colour is semi-transparent: painted twice it would be darker.
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
    QImage expected = without.Picture();
    QPainter(&expected).fillRect(PLACE, Qt::white);
    QVERIFY(with.Picture() == expected);
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
    // The background of a page inside a window counts as white; a page that is a window keeps its own.
    const Qt::GlobalColor color = isWindow ? PAGE_COLOR : Qt::white;
    Scene plain(false, isWindow, color);
    Scene fast(true, isWindow, color);
    const QString first = QStringLiteral("border-image: url(%1)").arg(image);
    const QString second = QStringLiteral("border-image: url(%1); border-width:4px").arg(image);
    for (const QString& style : {first, second, first}) {
        plain.frame->setStyleSheet(style);
        fast.frame->setStyleSheet(style);
        QVERIFY(fast.Picture() == plain.Picture());
        QVERIFY(fast.Pixel() != QColor(PAGE_COLOR) && fast.Pixel() != QColor(Qt::white));
    }
    plain.frame->resize(90, 50);
    fast.frame->resize(90, 50);
    QVERIFY(fast.Picture() == plain.Picture());
}

QTEST_MAIN(TestWhiteBackground)
#include "TestWhiteBackground.moc"
