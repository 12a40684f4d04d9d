#include <QFontInfo>
#include <QFontMetrics>
#include <QRawFont>
#include <QStyle>
#include <QTest>
#include <clocale>

#include "support/ProgramMain.h"

namespace {
const QString FAMILY = QStringLiteral("Noto Sans CJK SC");
const QString POSTSCRIPT_NAME = QStringLiteral("NotoSansCJKsc-Regular");

QFont Pixels(const QString& family, int size)
{
    QFont font(family);
    font.setPixelSize(size);
    return font;
}

bool IsMissing()
{
    return qEnvironmentVariableIsSet("VELODESK_TEST_WITHOUT_TYPEFACE");
}
} // namespace

/// CTest runs this test twice: with all installed fonts, and without the family Noto Sans CJK SC.
class TestTypeface : public QObject
{
    Q_OBJECT

private slots:
    void applicationFontIsNotoSansAtTwelvePixels();
    void postscriptNameSelectsTheFamily();
    void pointSizesAssume96DotsPerInch();
    void desktopSettingsHaveNoEffect();
    void fontsHaveLatinAndChineseLetters();
    void missingFamilyHasSubstitutes();
    void localeIsTheUsersLocale();
};

void TestTypeface::applicationFontIsNotoSansAtTwelvePixels()
{
    QCOMPARE(QApplication::font().family(), FAMILY);
    QCOMPARE(QFontInfo(QApplication::font()).pixelSize(), 12);
    QCOMPARE(QFontInfo(QApplication::font()).family() == FAMILY, !IsMissing());
}

void TestTypeface::postscriptNameSelectsTheFamily()
{
    const QRawFont byFamily = QRawFont::fromFont(Pixels(FAMILY, 14), QFontDatabase::SimplifiedChinese);
    const QRawFont byPostscriptName =
        QRawFont::fromFont(Pixels(POSTSCRIPT_NAME, 14), QFontDatabase::SimplifiedChinese);
    QVERIFY(byFamily.isValid());
    QCOMPARE(byPostscriptName.familyName(), byFamily.familyName());
    QCOMPARE(byPostscriptName.styleName(), byFamily.styleName());
    if (!IsMissing()) {
        QCOMPARE(byPostscriptName.familyName(), FAMILY);
        // Latin letters use the family too.
        const QRawFont latin = QRawFont::fromFont(Pixels(POSTSCRIPT_NAME, 14), QFontDatabase::Latin);
        QCOMPARE(latin.familyName().toLower(), FAMILY.toLower());
    }
}

void TestTypeface::pointSizesAssume96DotsPerInch()
{
    // The X server reports 144 dots per inch.
    QWidget widget;
    QCOMPARE(widget.logicalDpiX(), 96);
    QFont font(FAMILY);
    font.setPointSize(9);
    widget.setFont(font);
    QCOMPARE(QFontInfo(widget.font()).pixelSize(), 12);
}

void TestTypeface::desktopSettingsHaveNoEffect()
{
    QCOMPARE(QApplication::style()->objectName(), QStringLiteral("fusion"));
    QCOMPARE(QApplication::palette().color(QPalette::Text), QColor(Qt::black));
    QCOMPARE(QApplication::font("QMenu"), QApplication::font());
}

void TestTypeface::fontsHaveLatinAndChineseLetters()
{
    // QFontMetrics refers to the font that Qt selects for the family.
    for (const QString& family : {FAMILY, POSTSCRIPT_NAME}) {
        const QFontMetrics metrics(Pixels(family, 14));
        QVERIFY(metrics.inFont(QLatin1Char('A')));
        QVERIFY(metrics.horizontalAdvance(QStringLiteral("多屏协同")) > 0);
    }
}

void TestTypeface::missingFamilyHasSubstitutes()
{
    // Qt stores the names in lower case.
    const QStringList candidates{QStringLiteral("source han sans sc"),  QStringLiteral("source han sans cn"),
                                 QStringLiteral("noto sans sc"),        QStringLiteral("noto sans cjk tc"),
                                 QStringLiteral("wenquanyi micro hei"), QStringLiteral("wenquanyi zen hei"),
                                 QStringLiteral("droid sans fallback")};
    const QStringList substitutes = IsMissing() ? candidates : QStringList();
    QCOMPARE(QFont::substitutes(FAMILY), substitutes);
    QCOMPARE(QFont::substitutes(POSTSCRIPT_NAME), QStringList(FAMILY.toLower()) + substitutes);
}

void TestTypeface::localeIsTheUsersLocale()
{
    QCOMPARE(QByteArray(std::setlocale(LC_CTYPE, nullptr)), qgetenv("LC_ALL"));
}

PROGRAM_TEST_MAIN(TestTypeface)
#include "TestTypeface.moc"
