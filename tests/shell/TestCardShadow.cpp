#include <QBackingStore>
#include <QGraphicsDropShadowEffect>
#include <QImage>
#include <QPainter>
#include <QTest>
#include <functional>

#include "shell/Shadow.h"

namespace {
constexpr QSize CARD(300, 168);
const QString ROUND = QStringLiteral("#card{background-color:white;border-radius:20px;}");
const QString SQUARE = QStringLiteral("#card{background-color:white;}");

/// Returns the current content of the window's backing store. QWidget::grab() would paint on another surface.
QImage Surface(const QWidget& window)
{
    return static_cast<QImage*>(window.backingStore()->paintDevice())->copy();
}

/// Repaints the whole window and returns the content of its backing store.
QImage OnScreen(QWidget& window)
{
    if (!QTest::qWaitForWindowExposed(&window)) {
        qFatal("the window is not shown");
    }
    window.repaint();
    return Surface(window);
}

/// A translucent window with a card that has our shadow.
struct CardOnWindow
{
    CardOnWindow()
    {
        window.setAttribute(Qt::WA_TranslucentBackground);
        window.resize(CARD + QSize(40, 40));
        card.setObjectName(QStringLiteral("card"));
        card.setAttribute(Qt::WA_StyledBackground);
        card.setGeometry(QRect(QPoint(20, 20), CARD));
        card.setStyleSheet(ROUND);
        Shadow::AddShadowEffect(&window, &card);
    }

    QWidget window;
    QWidget card{&window};
};

/// A widget that counts its paint events.
class PaintedArea : public QWidget
{
public:
    PaintedArea(QWidget* parent, const QRect& place) : QWidget(parent) { setGeometry(place); }
    int count = 0;

protected:
    void paintEvent(QPaintEvent*) override { ++count; }
};

using CardChange = std::function<void(QWidget* window, QWidget* card)>;

/// Returns the image of a translucent window with a card of that size and style, margins of 20 pixels and a
/// child widget. `change` is applied to the card after it was painted once.
QImage Paint(const QSize& size, const QString& style, const CardChange& addEffect,
             const CardChange& change = nullptr)
{
    QWidget window;
    window.setAttribute(Qt::WA_TranslucentBackground);
    window.resize(size + QSize(40, 40));
    auto* card = new QWidget(&window);
    card->setObjectName(QStringLiteral("card"));
    card->setAttribute(Qt::WA_StyledBackground);
    card->setGeometry(QRect(QPoint(20, 20), size));
    card->setStyleSheet(style);
    auto* child = new QWidget(card);
    child->setGeometry(style.isEmpty() ? card->rect() : QRect(30, 30, 40, 20));
    child->setAutoFillBackground(true);
    addEffect(&window, card);
    window.show();
    if (change) {
        OnScreen(window);
        change(&window, card);
    }
    return OnScreen(window);
}

void AddOurs(QWidget* window, QWidget* card)
{
    Shadow::AddShadowEffect(window, card);
}

void AddQts(QWidget* window, QWidget* card)
{
    auto* effect = new QGraphicsDropShadowEffect(window);
    effect->setOffset(0.0, 2.0);
    effect->setColor(QColor(0, 0, 0, 51));
    effect->setBlurRadius(20.0);
    card->setGraphicsEffect(effect);
}

/// Returns the first difference of the alpha channels that is larger than 1 (of 255), or an empty text.
QString Difference(const QImage& ours, const QImage& qts)
{
    for (int y = 0; y < qts.height(); ++y) {
        for (int x = 0; x < qts.width(); ++x) {
            const int difference = qAbs(qAlpha(ours.pixel(x, y)) - qAlpha(qts.pixel(x, y)));
            if (difference > 1) {
                return QStringLiteral("%1 at %2, %3").arg(difference).arg(x).arg(y);
            }
        }
    }
    return {};
}

} // namespace

class TestCardShadow : public QObject
{
    Q_OBJECT

private slots:
    void shadowEqualsThatOfQtsEffect_data();
    void shadowEqualsThatOfQtsEffect();
    void shadowFollowsItsCard_data();
    void shadowFollowsItsCard();
    void changeOnTheCardRepaintsOnlyThatArea();
    void changesAroundACornerDoNotChangeItsShadow();
    void renderedCardEqualsTheShownCard();
};

void TestCardShadow::shadowEqualsThatOfQtsEffect_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<QString>("style");
    QTest::newRow("large, round") << QSize(896, 504) << ROUND;
    QTest::newRow("small, round") << QSize(120, 97)
                                  << QStringLiteral("#card{background-color:white;border-radius:8px;}");
    QTest::newRow("below 96 pixels, round") << QSize(90, 84) << ROUND;
    QTest::newRow("square") << QSize(300, 168) << SQUARE;
    QTest::newRow("filled by its child") << QSize(300, 168) << QString();
}

void TestCardShadow::shadowEqualsThatOfQtsEffect()
{
    QFETCH(QSize, size);
    QFETCH(QString, style);
    const QImage ours = Paint(size, style, AddOurs);
    const QImage qts = Paint(size, style, AddQts);
    QVERIFY(qAlpha(qts.pixel(size.width() / 2, 10)) != 0);
    QCOMPARE(Difference(ours, qts), QString());
}

void TestCardShadow::shadowFollowsItsCard_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<QString>("style");
    QTest::newRow("another style") << CARD << SQUARE;
    QTest::newRow("smaller") << QSize(90, 84) << ROUND;
    QTest::newRow("smaller, another style") << QSize(90, 84) << SQUARE;
    QTest::newRow("no style sheet") << CARD << QString();
}

void TestCardShadow::shadowFollowsItsCard()
{
    QFETCH(QSize, size);
    QFETCH(QString, style);
    const auto change = [&size, &style](QWidget*, QWidget* card) {
        card->resize(size);
        card->setStyleSheet(style);
    };
    const QImage ours = Paint(CARD, ROUND, AddOurs, change);
    const QImage qts = Paint(CARD, ROUND, AddQts, change);
    QCOMPARE(Difference(ours, qts), QString());
    QVERIFY(!Difference(ours, Paint(CARD, ROUND, AddQts)).isEmpty());
}

void TestCardShadow::changeOnTheCardRepaintsOnlyThatArea()
{
    CardOnWindow probe;
    PaintedArea changed(&probe.card, QRect(100, 60, 20, 20));
    // The distance is smaller than the shadow's width.
    PaintedArea beside(&probe.card, QRect(125, 60, 20, 20));
    probe.window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&probe.window));
    QTRY_VERIFY(beside.count > 0);
    QCoreApplication::processEvents();
    const int before = beside.count;
    const int beforeChange = changed.count;
    changed.update();
    QTRY_VERIFY(changed.count > beforeChange);
    QCOMPARE(beside.count, before);
}

void TestCardShadow::changesAroundACornerDoNotChangeItsShadow()
{
    CardOnWindow probe;
    // Qt clears only these two areas, but paints everything between them.
    PaintedArea below(&probe.card, QRect(0, 60, 20, 20));
    PaintedArea beside(&probe.card, QRect(60, 0, 20, 20));
    probe.window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&probe.window));
    QTRY_VERIFY(below.count > 0);
    QCoreApplication::processEvents();
    const QPoint corner = probe.card.mapTo(&probe.window, QPoint(1, 1));
    const QImage before = OnScreen(probe.window);
    QVERIFY(before.pixel(corner) != before.pixel(before.rect().center()));
    for (int i = 0; i < 3; ++i) {
        const int count = below.count;
        below.update();
        beside.update();
        QTRY_VERIFY(below.count > count);
    }
    QVERIFY(Surface(probe.window) == before);
}

void TestCardShadow::renderedCardEqualsTheShownCard()
{
    CardOnWindow probe;
    probe.window.show();
    const QImage expected = OnScreen(probe.window);
    QImage rendered(expected.size(), QImage::Format_ARGB32_Premultiplied);
    rendered.fill(Qt::transparent);
    QPainter painter(&rendered);
    probe.window.render(&painter, QPoint(), QRegion(), QWidget::DrawChildren);
    painter.end();
    QCOMPARE(Difference(rendered, expected), QString());
}

QTEST_MAIN(TestCardShadow)
#include "TestCardShadow.moc"
