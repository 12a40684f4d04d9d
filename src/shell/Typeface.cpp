#include "shell/Typeface.h"

#include <QApplication>
#include <QFont>
#include <QFontInfo>
#include <QFontMetrics>
#include <QStringList>
#include <clocale>

namespace {
const QString FAMILY = QStringLiteral("Noto Sans CJK SC");
/// No family has this name: left alone, the locale decides what comes out.
const QString POSTSCRIPT_NAME = QStringLiteral("NotoSansCJKsc-Regular");
/// 9 points at 96 dots per inch.
constexpr int PIXEL_SIZE = 12;

/// The same design under its other names, then what Chinese desktops have. After these the desktop decides.
QStringList NextBest()
{
    return {QStringLiteral("Source Han Sans SC"),  QStringLiteral("Source Han Sans CN"),
            QStringLiteral("Noto Sans SC"),        QStringLiteral("Noto Sans CJK TC"),
            QStringLiteral("WenQuanYi Micro Hei"), QStringLiteral("WenQuanYi Zen Hei"),
            QStringLiteral("Droid Sans Fallback")};
}

/// The shaper takes the language from the locale of its first text, and keeps it. In Chinese this typeface
/// has other digits among Latin letters than in any other language; here they are the same for everybody.
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
