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

/// CTest runs it twice: with the installed fonts, and with that family missing.
class TestTypeface : public QObject
{
    Q_OBJECT

private slots:
    void applicationFontIsTheFamilyAtTwelvePixels();
    void postscriptNameSelectsTheFamily();
    void pointSizesAssume96DotsPerInch();
    void desktopSettingsHaveNoEffect();
    void fontsHaveLatinAndChineseLetters();
    void missingFamilyHasSubstitutes();
    void localeIsThatOfTheUser();
};

void TestTypeface::applicationFontIsTheFamilyAtTwelvePixels()
{
    QCOMPARE(QApplication::font().family(), FAMILY);
    QCOMPARE(QFontInfo(QApplication::font()).pixelSize(), 12);
    QCOMPARE(QFontInfo(QApplication::font()).family() == FAMILY, !IsMissing());
}

void TestTypeface::postscriptNameSelectsTheFamily()
{
    const QRawFont named = QRawFont::fromFont(Pixels(FAMILY, 14), QFontDatabase::SimplifiedChinese);
    const QRawFont asked = QRawFont::fromFont(Pixels(POSTSCRIPT_NAME, 14), QFontDatabase::SimplifiedChinese);
    QVERIFY(named.isValid());
    QCOMPARE(asked.familyName(), named.familyName());
    QCOMPARE(asked.styleName(), named.styleName());
    if (!IsMissing()) {
        QCOMPARE(asked.familyName(), FAMILY);
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
    // The font that is used has these letters.
    for (const QString& family : {FAMILY, POSTSCRIPT_NAME}) {
        const QFontMetrics metrics(Pixels(family, 14));
        QVERIFY(metrics.inFont(QLatin1Char('A')));
        QVERIFY(metrics.horizontalAdvance(QStringLiteral("多屏协同")) > 0);
    }
}

void TestTypeface::missingFamilyHasSubstitutes()
{
    // Qt stores the names in lower case.
    const QStringList others{QStringLiteral("source han sans sc"),  QStringLiteral("source han sans cn"),
                             QStringLiteral("noto sans sc"),        QStringLiteral("noto sans cjk tc"),
                             QStringLiteral("wenquanyi micro hei"), QStringLiteral("wenquanyi zen hei"),
                             QStringLiteral("droid sans fallback")};
    const QStringList standIns = IsMissing() ? others : QStringList();
    QCOMPARE(QFont::substitutes(FAMILY), standIns);
    QCOMPARE(QFont::substitutes(POSTSCRIPT_NAME), QStringList(FAMILY.toLower()) + standIns);
}

void TestTypeface::localeIsThatOfTheUser()
{
    QCOMPARE(QByteArray(std::setlocale(LC_CTYPE, nullptr)), qgetenv("LC_ALL"));
}

PROGRAM_TEST_MAIN(TestTypeface)
#include "TestTypeface.moc"
