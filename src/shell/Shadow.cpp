#include "shell/Shadow.h"

#include <QBoxLayout>
#include <QColor>
#include <QGuiApplication>
#include <QRegion>
#include <QScreen>
#include <QWidget>
#include <new>
#include <string>

#include "config/Constant.h"
#include "platform/Log.h"
#include "platform/Utils.h"
#include "shell/CardShadow.h"

namespace {
constexpr char MODULE_TAG[] = "TANDRA_UI";

const QColor SHADOW_COLOR(0, 0, 0, 51);
/// Part of the constants of this module, but no function reads this file.
[[maybe_unused]] constexpr char GPU_INFO_PATH[] = "/proc/gpuinfo_0";
constexpr qreal BLUR_RADIUS = 20.0;
constexpr qreal OFFSET_X = 0.0;
constexpr qreal OFFSET_Y = 2.0;
constexpr int SHADOW_MARGIN = 20;

constexpr char DISTRIBUTION_COMMAND[] = "head /etc/lsb-release | grep -i uos";
constexpr char COMPOSITOR_COMMAND[] = "dbus-send --session --dest=org.kde.KWin --print-reply"
                                      "             /Compositor org.freedesktop.DBus.Properties.Get "
                                      "string:org.kde.kwin.Compositing string:active"
                                      "             | grep -i variant | awk '{print $3}'";

QRect WithShadow(const QRect& cardRect)
{
    return cardRect.adjusted(-SHADOW_MARGIN, -SHADOW_MARGIN, SHADOW_MARGIN, SHADOW_MARGIN);
}

/// Moves the card into `area` and cuts the shadow off at the right and bottom edges of `area`.
void Clamp(QWidget* window, QBoxLayout* layout, QRect rect, const QRect& area, bool fixedSize)
{
    Shadow::CheckRect(rect, area);
    // At the left and top, the shadow is cut off at the edge of the screen (0), not at that of the area. It
    // extends below a panel there.
    const QRect windowRect(QPoint(qMax(rect.left() - SHADOW_MARGIN, 0), qMax(rect.top() - SHADOW_MARGIN, 0)),
                           QPoint(qMin(rect.right() + SHADOW_MARGIN, area.right()),
                                  qMin(rect.bottom() + SHADOW_MARGIN, area.bottom())));
    layout->setContentsMargins(rect.left() - windowRect.left(), rect.top() - windowRect.top(),
                               windowRect.right() - rect.right(), windowRect.bottom() - rect.bottom());
    Shadow::AdjustWindow(window, window->geometry(), windowRect, fixedSize);
}
} // namespace

// Reads DATA_DIR first, because that creates the per-user directories, which must exist before the first
// command runs.
bool Shadow::useShadow = (GetConstant(Velodesk::DATA_DIR), Shadow::IsShadowEffectEnable());

bool Shadow::IsShadowEffectEnable()
{
    if (Brevora::Utils::ExecutePopenAndReturn(DISTRIBUTION_COMMAND).empty()) {
        return true;
    }
    const std::string active = Brevora::Utils::ExecutePopenAndReturn(COMPOSITOR_COMMAND);
    LOG_INFO("check KWinSpecialEffect , %s", active.c_str());
    if (active == "false") {
        LOG_INFO("WinSpecialEffect is not open");
        return false;
    }
    return true;
}

int Shadow::AddShadowEffect(QWidget* parent, QWidget* target)
{
    if (parent == nullptr || target == nullptr) {
        return 1;
    }
    auto* effect = static_cast<QGraphicsDropShadowEffect*>(target->graphicsEffect());
    if (effect == nullptr) {
        effect = new (std::nothrow) CardShadow(target, parent);
        if (effect == nullptr) {
            return 2;
        }
        target->setGraphicsEffect(effect);
    }
    effect->setOffset(OFFSET_X, OFFSET_Y);
    effect->setColor(SHADOW_COLOR);
    effect->setBlurRadius(BLUR_RADIUS);
    return 0;
}

void Shadow::AdjustWindow(QWidget* window, const QRect& oldRect, const QRect& newRect, bool fixedSize)
{
    if (window == nullptr || oldRect == newRect) {
        return;
    }
    if (oldRect.size() == newRect.size()) {
        window->move(newRect.topLeft());
    } else if (fixedSize) {
        window->setFixedSize(newRect.size());
        window->move(newRect.topLeft());
    } else {
        window->setGeometry(newRect);
    }
}

void Shadow::CheckRect(QRect& rect, const QRect& bounds)
{
    if (rect.right() - rect.left() > bounds.right() - bounds.left() ||
        rect.bottom() - rect.top() > bounds.bottom() - bounds.top()) {
        return;
    }
    rect.moveLeft(qMax(rect.left(), bounds.left()));
    rect.moveTop(qMax(rect.top(), bounds.top()));
    rect.moveRight(qMin(rect.right(), bounds.right()));
    rect.moveBottom(qMin(rect.bottom(), bounds.bottom()));
}

int Shadow::ShadowWinAdjust(QWidget* window, QBoxLayout* layout, QWidget* card, QRect rect, bool fixedSize)
{
    if (window == nullptr || layout == nullptr || card == nullptr) {
        return 1;
    }
    const QRect oldRect = window->geometry();
    if (card->graphicsEffect() == nullptr) {
        AdjustWindow(window, oldRect, rect, fixedSize);
        return 0;
    }
    const QRect area = QGuiApplication::primaryScreen()->availableGeometry();
    if (!fixedSize && !area.contains(oldRect)) {
        // A window outside the area is not clamped and keeps its margins. Once it is inside again, the next
        // move clamps it.
        AdjustWindow(window, oldRect, WithShadow(rect), false);
        return 0;
    }
    Clamp(window, layout, rect, area, fixedSize);
    return 0;
}

int Shadow::ShadowWinPlace(QWidget* window, QBoxLayout* layout, QWidget* card, const QRect& rect)
{
    if (window == nullptr || layout == nullptr || card == nullptr) {
        return 1;
    }
    if (card->graphicsEffect() == nullptr) {
        AdjustWindow(window, window->geometry(), rect, false);
        return 0;
    }
    const QRect area = QGuiApplication::primaryScreen()->availableGeometry();
    if (rect.width() <= area.width() && rect.height() <= area.height()) {
        Clamp(window, layout, rect, area, false);
    } else {
        layout->setContentsMargins(SHADOW_MARGIN, SHADOW_MARGIN, SHADOW_MARGIN, SHADOW_MARGIN);
        AdjustWindow(window, window->geometry(), WithShadow(rect), false);
    }
    return 0;
}

int Shadow::ShadowWinMove(QWidget* window, QBoxLayout* layout, QWidget* card, const QPoint& topLeft,
                          bool fixedSize)
{
    if (card == nullptr) {
        return 1;
    }
    return ShadowWinAdjust(window, layout, card, QRect(topLeft, card->size()), fixedSize);
}

void Shadow::ShadowWinMask(QWidget* window, QWidget* card, QPoint globalPos)
{
    if (window == nullptr || card == nullptr) {
        return;
    }
    const QPoint pos = window->mapFromGlobal(globalPos);
    const QRect whole(QPoint(0, 0), window->size());
    QRegion mask(whole);
    if (whole.contains(pos) && !card->geometry().contains(pos)) {
        mask -= QRegion(pos.x(), pos.y(), 1, 1);
    }
    window->setMask(mask);
}
