#include "PhoneImage.h"

#include <QLinearGradient>
#include <QPainter>

namespace {
/// The size of the drawing before the painter scales it.
constexpr QRectF BODY(0, 0, 90, 180);
constexpr QRectF SCREEN(5, 12, 80, 156);
constexpr QRectF SPEAKER(35, 5, 20, 3);
constexpr QRectF HOME_BAR(30, 172, 30, 3);
constexpr QRectF FIRST_ICON(13, 22, 16, 16);
constexpr int ICON_STEP = 24;
constexpr int ICON_COLUMNS = 3;
constexpr int ICON_ROWS = 3;
constexpr qreal BODY_RADIUS = 12;
constexpr qreal SCREEN_RADIUS = 4;
} // namespace

PhoneImage::PhoneImage(QWidget* parent) : QWidget(parent) {}

void PhoneImage::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const qreal scale = height() / BODY.height();
    painter.translate((width() - BODY.width() * scale) / 2, 0);
    painter.scale(scale, scale);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(0x2A, 0x2E, 0x38));
    painter.drawRoundedRect(BODY, BODY_RADIUS, BODY_RADIUS);
    QLinearGradient sky(SCREEN.topLeft(), SCREEN.bottomRight());
    sky.setColorAt(0, QColor(0x6F, 0xA4, 0xFF));
    sky.setColorAt(1, QColor(0x2B, 0x6F, 0xF2));
    painter.setBrush(sky);
    painter.drawRoundedRect(SCREEN, SCREEN_RADIUS, SCREEN_RADIUS);
    painter.setBrush(QColor(0x8A, 0x90, 0xA0));
    painter.drawRoundedRect(SPEAKER, SPEAKER.height() / 2, SPEAKER.height() / 2);
    painter.drawRoundedRect(HOME_BAR, HOME_BAR.height() / 2, HOME_BAR.height() / 2);
    painter.setBrush(QColor(0xFF, 0xFF, 0xFF, 0xC8));
    for (int icon = 0; icon < ICON_COLUMNS * ICON_ROWS; ++icon) {
        const QPoint step(icon % ICON_COLUMNS * ICON_STEP, icon / ICON_COLUMNS * ICON_STEP);
        painter.drawRoundedRect(FIRST_ICON.translated(step), SCREEN_RADIUS, SCREEN_RADIUS);
    }
}
