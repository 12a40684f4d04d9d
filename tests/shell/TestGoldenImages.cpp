#include <QDir>
#include <QLibraryInfo>
#include <QPainter>
#include <QPainterPath>
#include <QSet>
#include <QVersionNumber>
#include <QtTest>

#include "WindowImages.h"
#include "support/ImageComparison.h"
#include "support/ProgramMain.h"

namespace {
const QString GOLDEN = QStringLiteral(VELODESK_SOURCE_DIR "/tests/shell/golden/");
/// The Qt version that created the golden images. Newer versions create equal images. The libraries of older
/// releases hint letters differently, therefore the comparison has a tolerance for them.
const QVersionNumber CREATED_WITH(5, 15, 8);
} // namespace

class TestGoldenImages : public QObject
{
    Q_OBJECT

private slots:
    void windowsEqualTheirGoldenImages_data();
    void windowsEqualTheirGoldenImages();
    void everyGoldenImageBelongsToAWindow();
    void comparisonDetectsAMovedWidget();
    void comparisonDetectsAnotherColour();
    void comparisonDetectsAMissingLine();
    void comparisonAcceptsAnotherRasteriser();
    void comparisonForAnotherReleaseDetectsMissingParts();

private:
    static QImage Golden(const QString& name) { return QImage(GOLDEN + name + QStringLiteral(".png")); }
};

void TestGoldenImages::windowsEqualTheirGoldenImages_data()
{
    QTest::addColumn<bool>("shadow");
    QTest::newRow("shadow") << true;
    QTest::newRow("plain") << false;
}

void TestGoldenImages::windowsEqualTheirGoldenImages()
{
    QFETCH(bool, shadow);
    const Allowance& allowance = QLibraryInfo::version() < CREATED_WITH ? OTHER_RELEASE : OTHER_RASTERISER;
    QStringList different;
    for (const WindowImage& image : TakeWindowImages(shadow)) {
        if (!image.golden) {
            continue;
        }
        const QRect difference = FindDifference(image.image, Golden(image.name), allowance);
        if (!difference.isEmpty()) {
            // Save it in the folder of the test for inspection.
            image.image.save(QCoreApplication::applicationDirPath() + QLatin1Char('/') + image.name +
                             QStringLiteral(".png"));
            different += QStringLiteral("%1 at %2,%3 %4x%5")
                             .arg(image.name)
                             .arg(difference.x())
                             .arg(difference.y())
                             .arg(difference.width())
                             .arg(difference.height());
        }
    }
    QVERIFY2(different.isEmpty(),
             qPrintable(different.join(QStringLiteral("; ")) +
                        QStringLiteral(" - if the change is intended: scripts/images accept")));
}

void TestGoldenImages::everyGoldenImageBelongsToAWindow()
{
    QStringList expected;
    for (const bool shadow : {true, false}) {
        for (const WindowImage& image : TakeWindowImages(shadow)) {
            if (image.golden) {
                expected += image.name + QStringLiteral(".png");
            }
        }
    }
    expected.sort();
    QCOMPARE(QDir(GOLDEN).entryList(QDir::Files, QDir::Name | QDir::LocaleAware).toSet(), expected.toSet());
}

void TestGoldenImages::comparisonDetectsAMovedWidget()
{
    const QImage before = Golden(QStringLiteral("main-idle-shadow"));
    // Move the pencil, the smallest widget of the page, two pixels to the right.
    QImage after = before;
    const QRect pencil(600, 424, 24, 24);
    QPainter painter(&after);
    painter.setCompositionMode(QPainter::CompositionMode_Source);
    painter.drawImage(pencil.translated(2, 0), before, pencil);
    painter.end();
    QVERIFY(before.copy(pencil) != after.copy(pencil));
    QVERIFY(!FindDifference(before, after).isEmpty());
}

void TestGoldenImages::comparisonDetectsAnotherColour()
{
    const QImage before = Golden(QStringLiteral("main-idle-shadow"));
    QImage after = before;
    for (int y = 0; y < after.height(); ++y) {
        for (int x = 0; x < after.width(); ++x) {
            if (after.pixel(x, y) == qRgb(0x2B, 0x6F, 0xF2)) {
                after.setPixel(x, y, qRgb(0x3E, 0x80, 0xFF));
            }
        }
    }
    QVERIFY(!FindDifference(before, after).isEmpty());
}

void TestGoldenImages::comparisonDetectsAMissingLine()
{
    const QImage before = Golden(QStringLiteral("settings-shadow"));
    const QRgb divider = qRgb(0xF0, 0xF0, 0xF0);
    const int middle = before.width() / 2;
    int y = 0;
    while (y < before.height() && before.pixel(middle, y) != divider) {
        ++y;
    }
    QVERIFY(y < before.height());
    // Remove one of the divider's two rows.
    QImage after = before;
    for (int x = 0; x < after.width(); ++x) {
        if (after.pixel(x, y) == divider) {
            after.setPixel(x, y, qRgb(0xFF, 0xFF, 0xFF));
        }
    }
    QVERIFY(!FindDifference(before, after).isEmpty());
}

void TestGoldenImages::comparisonForAnotherReleaseDetectsMissingParts()
{
    const QImage before = Golden(QStringLiteral("main-idle-shadow"));
    const QRect pencil(600, 424, 24, 24);
    QImage without = before;
    QImage moved = before;
    for (QImage* after : {&without, &moved}) {
        QPainter(after).fillRect(pencil, before.pixelColor(pencil.topLeft()));
    }
    QPainter(&moved).drawImage(pencil.translated(8, 0), before, pencil);
    QVERIFY(FindDifference(before, before, OTHER_RELEASE).isEmpty());
    QVERIFY(!FindDifference(before, without, OTHER_RELEASE).isEmpty());
    QVERIFY(!FindDifference(before, moved, OTHER_RELEASE).isEmpty());
}

void TestGoldenImages::comparisonAcceptsAnotherRasteriser()
{
    const QString text = QStringLiteral("多屏协同 极速投屏，无缝连接 PC设备名称 Tandra");
    QFont font(QStringLiteral("Noto Sans CJK SC"));
    font.setPixelSize(14);
    font.setHintingPreference(QFont::PreferNoHinting);
    // Draw first with the font engine, then as outlines filled by the painter.
    QImage glyphs(560, 40, QImage::Format_ARGB32);
    glyphs.fill(Qt::white);
    QImage outlines = glyphs;
    QPainter glyphPainter(&glyphs);
    glyphPainter.setFont(font);
    QPainterPath path;
    QPointF pos(8, 25);
    for (const QChar letter : text) {
        glyphPainter.drawText(pos, QString(letter));
        path.addText(pos, font, QString(letter));
        pos += QPointF(15, 0);
    }
    QPainter outlinePainter(&outlines);
    outlinePainter.setRenderHint(QPainter::Antialiasing);
    outlinePainter.fillPath(path, Qt::black);
    QVERIFY(glyphs != outlines);
    QVERIFY(FindDifference(glyphs, outlines).isEmpty());
}

PROGRAM_TEST_MAIN(TestGoldenImages)
#include "TestGoldenImages.moc"
