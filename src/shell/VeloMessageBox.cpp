#include "shell/VeloMessageBox.h"

#include <QFont>

#include "shell/DialogStyle.h"
#include "shell/Shadow.h"
#include "ui_VeloMessageBox.h"

namespace {
const QString FONT_FAMILY = QStringLiteral("Noto Sans CJK SC");
constexpr int LETTER_SPACING = 1;
constexpr QPoint LAST_DRAG_POINT(299, 31);
/// The position of the page stack on the card of the main window.
constexpr QPoint PAGE_POS(168, 44);

const QString TITLE_BAR_STYLE = QStringLiteral("border-radius:0px;border-top-left-radius:20px;");

/// Returns the rectangle of the main window's card in global pixels.
QRect MainCardArea(const QWidget& page)
{
    const QPoint topLeft = page.mapToGlobal(-PAGE_POS);
    return {topLeft, topLeft + PAGE_POS + page.rect().bottomRight()};
}
} // namespace

int VeloMessageBox::windCount = 0;

VeloMessageBox::VeloMessageBox(QWidget* parent)
    : CardWindow<QDialog>(parent, Qt::WindowFlags()), ui(std::make_unique<Ui_VeloMessageBox>())
{
    ++windCount;
    ui->setupUi(this);
    SetCard(ui->shadowLayout, ui->widget_bg, LAST_DRAG_POINT);
    setAutoFillBackground(false);
    setAttribute(Qt::WA_MouseTracking, true);
    setWindowFlags(Qt::Tool | Qt::FramelessWindowHint | Qt::WindowSystemMenuHint);
    setWindowModality(Qt::WindowModal);

    const QRect area = parent == nullptr ? AvailableArea() : MainCardArea(*parent);
    if (Shadow::useShadow) {
        ApplyShadowLook(area);
    } else {
        ApplyPlainLook(area);
    }

    ui->btnLeft->setFocusPolicy(Qt::NoFocus);
    ui->btnRight->setFocusPolicy(Qt::NoFocus);
    ui->btnClose->setFocusPolicy(Qt::NoFocus);
    ui->warnIcon->hide();
    SetDefaultTextFont(ui->textMsgWarn, LETTER_SPACING);
    SetDefaultTextFont(ui->textMsg, LETTER_SPACING);
    SetDefaultTextFont(ui->btnLeft, LETTER_SPACING);
    SetDefaultTextFont(ui->btnRight, LETTER_SPACING);
    InitConnection();
    setProperty("useStyleWindowManager", false);
}

VeloMessageBox::~VeloMessageBox()
{
    --windCount;
}

void VeloMessageBox::SetBtnText(const QString& first, const QString& second) const
{
    if (second.isEmpty()) {
        ui->btnLeft->hide();
        ui->btnRight->setText(first);
        return;
    }
    ui->btnLeft->setText(first);
    ui->btnRight->setText(second);
}

void VeloMessageBox::SetRightBtnText(const QString& right, const QString& left) const
{
    ui->btnRight->setText(right);
    if (left.isEmpty()) {
        ui->btnLeft->hide();
    } else {
        ui->btnLeft->setText(left);
    }
}

void VeloMessageBox::SetMessageText(const QString& text) const
{
    const int lineFeed = text.indexOf(QLatin1Char('\n'));
    if (lineFeed == -1) {
        ui->textMsgWarn->setText(text);
        ui->textMsg->setText(QString());
        return;
    }
    ui->textMsgWarn->setText(text.left(lineFeed));
    ui->textMsg->setText(text.mid(lineFeed + 1));
}

void VeloMessageBox::SetWarning()
{
    if (!warningShown) {
        ui->warnIcon->show();
        warningShown = true;
    }
}

int VeloMessageBox::GetWindCount()
{
    return windCount;
}

void VeloMessageBox::SetDefaultTextFont(QWidget* widget, int spacing) const
{
    if (widget == nullptr) {
        return;
    }
    QFont font = widget->font();
    font.setFamily(FONT_FAMILY);
    font.setLetterSpacing(QFont::AbsoluteSpacing, spacing);
    widget->setFont(font);
}

void VeloMessageBox::SlotButtonEvent()
{
    const auto* button = qobject_cast<QPushButton*>(sender());
    if (button == ui->btnLeft) {
        emit SignalLeftBtnClick();
    } else if (button == ui->btnRight) {
        emit SignalRightBtnClick();
    }
    close();
}

void VeloMessageBox::InitConnection() const
{
    connect(ui->btnClose, SIGNAL(clicked()), this, SLOT(close()));
    connect(ui->btnLeft, SIGNAL(clicked()), this, SLOT(SlotButtonEvent()));
    connect(ui->btnRight, SIGNAL(clicked()), this, SLOT(SlotButtonEvent()));
}

void VeloMessageBox::ApplyShadowLook(const QRect& area)
{
    setAttribute(Qt::WA_TranslucentBackground, true);
    SetAdjustShadow(area);
    ui->widgetTitlebar->setStyleSheet(TITLE_BAR_STYLE);
    ui->btnClose->setStyleSheet(DialogStyle::CLOSE_BTN_SHADOW);
    ui->widget_bg->setStyleSheet(DialogStyle::CARD);
}

void VeloMessageBox::ApplyPlainLook(const QRect& area)
{
    SetLayout(area);
    ui->btnClose->setStyleSheet(DialogStyle::CLOSE_BTN);
    SetFrameColor();
}

#include "moc_VeloMessageBox.cpp"
