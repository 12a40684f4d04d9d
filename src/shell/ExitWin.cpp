#include "shell/ExitWin.h"

#include "platform/Log.h"
#include "shell/DialogStyle.h"
#include "shell/Shadow.h"
#include "shell/VeloWin.h"
#include "ui_ExitWin.h"

namespace {
constexpr char MODULE_TAG[] = "VELODESK";
constexpr QPoint LAST_DRAG_POINT(299, 31);
} // namespace

ExitWin::ExitWin(QWidget* parent) : CardWindow<QWidget>(parent), ui(std::make_unique<Ui_ExitWin>())
{
    ui->setupUi(this);
    SetCard(ui->shadowLayout, ui->widget_bg, LAST_DRAG_POINT);
    ui->cancelBtn->setFocusPolicy(Qt::NoFocus);
    ui->closeBtn->setFocusPolicy(Qt::NoFocus);
    ui->exitBtn->setFocusPolicy(Qt::NoFocus);
    setAutoFillBackground(false);
    setWindowModality(Qt::WindowModal);
    UpdateLayout();

    const QRect area = parent == nullptr ? AvailableArea() : parent->geometry();
    if (Shadow::useShadow) {
        ApplyShadowLook(area);
    } else {
        ApplyPlainLook(area);
    }

    setWindowFlags(Qt::Tool | Qt::FramelessWindowHint | Qt::WindowSystemMenuHint);
    InitConnect();
    setAttribute(Qt::WA_MouseTracking, true);
    setProperty("useStyleWindowManager", false);
}

ExitWin::~ExitWin() = default;

void ExitWin::UpdateLayout()
{
    setAttribute(Qt::WA_DontShowOnScreen, true);
    show();
    hide();
    setAttribute(Qt::WA_DontShowOnScreen, false);
}

void ExitWin::SetAdjustShadow(const QRect& area)
{
    Shadow::AddShadowEffect(this, ui->widget_bg);
    const QRect cardRect = ui->widget_bg->geometry();
    const QPoint corner = CentredCorner(area, cardRect.bottomRight() - cardRect.topLeft());
    Shadow::ShadowWinPlace(this, ui->shadowLayout, ui->widget_bg, QRect(corner, cardRect.size()));
}

void ExitWin::CancelExitWin()
{
    if (ui->cancelBtn->isChecked()) {
        hide();
        LOG_DEBUG("Velodesk exit window is cancled.");
    }
}

void ExitWin::CloseExitWin()
{
    hide();
    LOG_DEBUG("Velodesk exit window is closed.");
}

void ExitWin::QuitExitWin()
{
    // The button is checkable and exclusive, so the click has already checked it.
    if (ui->exitBtn->isChecked()) {
        LOG_DEBUG("Velodesk exit window emit exit signal.");
        emit CloseVeloApp();
    }
}

void ExitWin::InitConnect() const
{
    connect(ui->cancelBtn, &QPushButton::clicked, this, &ExitWin::CancelExitWin);
    connect(ui->closeBtn, &QPushButton::clicked, this, &ExitWin::CloseExitWin);
    connect(ui->exitBtn, &QPushButton::clicked, this, &ExitWin::QuitExitWin);
    connect(this, &ExitWin::CloseVeloApp, dynamic_cast<VeloWin*>(parent()), &VeloWin::ExitVeloWin);
}

void ExitWin::ApplyShadowLook(const QRect& area)
{
    setAttribute(Qt::WA_TranslucentBackground, true);
    SetAdjustShadow(area);
    ui->widget_bg->setStyleSheet(DialogStyle::CARD);
    ui->closeBtn->setStyleSheet(DialogStyle::CLOSE_BTN_SHADOW);
}

void ExitWin::ApplyPlainLook(const QRect& area)
{
    SetLayout(area);
    ui->closeBtn->setStyleSheet(DialogStyle::CLOSE_BTN);
    SetFrameColor();
}

#include "moc_ExitWin.cpp"
