#include "shell/Typeface.h"

#include <QApplication>
#include <QFont>
#include <QFontInfo>
#include <QFontMetrics>
#include <QStringList>
#include <clocale>

namespace {
const QString FAMILY = QStringLiteral("Noto Sans CJK SC");
/// No family has this name, so without a substitute the selected font depends on the locale.
const QString POSTSCRIPT_NAME = QStringLiteral("NotoSansCJKsc-Regular");
/// 9 points at 96 dots per inch.
constexpr int PIXEL_SIZE = 12;

/// Other names of the same typeface, then fonts of Chinese desktops. If none is installed, fontconfig
/// decides.
QStringList NextBest()
{
    return {QStringLiteral("Source Han Sans SC"),  QStringLiteral("Source Han Sans CN"),
            QStringLiteral("Noto Sans SC"),        QStringLiteral("Noto Sans CJK TC"),
            QStringLiteral("WenQuanYi Micro Hei"), QStringLiteral("WenQuanYi Zen Hei"),
            QStringLiteral("Droid Sans Fallback")};
}

/// Uses the text shaper for the first time in the "C" locale, because it then stores the language of the
/// locale. In Chinese, this typeface has other digits beside Latin letters. This way the pixels are the same
/// in every locale.
void ShapeInNoLanguage(const QFont& font)
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
    QStringList faces{FAMILY};
    if (QFontInfo(font).family() != FAMILY) {
        faces += NextBest();
        QFont::insertSubstitutions(FAMILY, NextBest());
    }
    QFont::insertSubstitutions(POSTSCRIPT_NAME, faces);
    QApplication::setFont(font);
    ShapeInNoLanguage(font);
}
