#pragma once

#include <QPoint>
#include <QRect>
#include <QRgb>

/// Positions on the windows, for clicks and for checks of pixels.
namespace Places {
// On the card of the big windows.
constexpr QPoint AGREE_TICK(98, 399);
constexpr QPoint AGREE_TEXT(150, 399);
constexpr QPoint BEGIN_EDGE(410, 456);
constexpr QPoint BEGIN_BUTTON(448, 456);
constexpr QPoint MENU_BUTTON(756, 22);
constexpr QPoint MINIMISE_BUTTON(812, 22);
constexpr QPoint CLOSE_BUTTON(868, 22);
constexpr QPoint TITLE_BAR(400, 10);
constexpr QPoint APP_ROW(84, 130);

// On the page.
constexpr QPoint CAST_BUTTON(616, 36);
constexpr QPoint BACK_BUTTON(76, 36);
constexpr QPoint EMPTY_AREA(650, 300);
constexpr QRect HELP_ICON(196, 188, 49, 48);
constexpr QRect PROBLEMS_ICON(488, 188, 50, 49);
constexpr QRect HELP_TEXT(188, 257, 64, 24);
constexpr QRect PROBLEMS_TEXT(480, 257, 64, 24);
/// An area of the page that is empty in the help menu and contains text in a document.
constexpr QRect DOCUMENT(60, 300, 100, 130);
constexpr QPoint CHANGE_BUTTON(631, 104);
constexpr QPoint CLEAR_BUTTON(631, 202);
constexpr QRect ABOUT_LINK(334, 294, 60, 20);

// On a small card.
constexpr QPoint LEFT_BUTTON(101, 132);
constexpr QPoint RIGHT_BUTTON(199, 132);
constexpr QPoint ONLY_BUTTON(150, 132);
constexpr QPoint SMALL_CLOSE_BUTTON(277, 16);

constexpr QRgb WHITE = qRgb(0xFF, 0xFF, 0xFF);
constexpr QRgb BLUE = qRgb(0x2B, 0x6F, 0xF2);
constexpr QRgb GREY_BUTTON = qRgb(0xC5, 0xC5, 0xC5);
constexpr QRgb ICON_BACKGROUND = qRgb(0xE7, 0xEF, 0xFC);
constexpr QRgb DOCUMENT_BACKGROUND = qRgb(0xF9, 0xF9, 0xF9);
} // namespace Places
