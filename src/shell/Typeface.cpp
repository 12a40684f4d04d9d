#include "shell/Typeface.h"

#include <QApplication>
#include <QFont>
#include <QFontInfo>
#include <QFontMetrics>
#include <QStringList>
#include <clocale>

namespace {
const QString FAMILY = QStringLiteral("Noto Sans CJK SC");
/// This is not the name of a family. Without a substitution, the font would depend on the locale.
const QString POSTSCRIPT_NAME = QStringLiteral("NotoSansCJKsc-Regular");
/// 9 points at 96 dots per inch.
constexpr int PIXEL_SIZE = 12;

/// The families to use if FAMILY is not installed: other names of the same design, then fonts of Chinese
/// desktops. If none of them is installed, fontconfig selects a font.
QStringList FallbackFamilies()
{
    return {QStringLiteral("Source Han Sans SC"),  QStringLiteral("Source Han Sans CN"),
            QStringLiteral("Noto Sans SC"),        QStringLiteral("Noto Sans CJK TC"),
            QStringLiteral("WenQuanYi Micro Hei"), QStringLiteral("WenQuanYi Zen Hei"),
            QStringLiteral("Droid Sans Fallback")};
}

/// Initialises the text shaper in the "C" locale, so that the pixels are the same in every locale. The shaper
/// reads its language from the locale when it is first used. If the language is Chinese, this font has other
/// digits beside Latin letters.
void InitShaperInCLocale(const QFont& font)
{
    const QByteArray locale = std::setlocale(LC_CTYPE, nullptr);
    std::setlocale(LC_CTYPE, "C");
    QFontMetrics(font).horizontalAdvance(QStringLiteral("1"));
    std::setlocale(LC_CTYPE, locale.constData());
}
} // namespace

QFont Typeface::Spaced(const QString& family, int pixelSize, int weight, double spacing)
{
    QFont font;
    font.setFamily(family);
    font.setPixelSize(pixelSize);
    font.setWeight(weight);
    font.setLetterSpacing(QFont::AbsoluteSpacing, spacing);
    return font;
}

void Typeface::UseEverywhere()
{
    QFont font(FAMILY);
    font.setPixelSize(PIXEL_SIZE);
    QStringList families{FAMILY};
    if (QFontInfo(font).family() != FAMILY) {
        families += FallbackFamilies();
        QFont::insertSubstitutions(FAMILY, FallbackFamilies());
    }
    QFont::insertSubstitutions(POSTSCRIPT_NAME, families);
    QApplication::setFont(font);
    InitShaperInCLocale(font);
}
