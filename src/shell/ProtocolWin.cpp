#include "shell/ProtocolWin.h"

#include <QAccessible>

#include "config/Configure.h"
#include "shell/Shadow.h"
#include "shell/Typeface.h"
#include "ui_ProtocolWin.h"

namespace {
constexpr QPoint LAST_DRAG_POINT(895, 43);
constexpr QPoint VIEW_POS(12, 10);
constexpr QSize VIEW_SIZE(694, 269);

const QString FONT_FAMILY = QStringLiteral("Noto Sans CJK SC");
constexpr int TITLE_PIXEL_SIZE = 24;
constexpr int AGREE_PIXEL_SIZE = 12;
constexpr int DEMI_BOLD = 63;
constexpr qreal LETTER_SPACING = 1.0;

const QString BEGIN_BTN_DISABLED_STYLE = QStringLiteral(R"( QPushButton {
color: #DFDFDF;
border: 0px solid  #DFDFDF;
font: 14px Noto Sans CJK SC;
border-radius: 16px;background-color: #C5C5C5;
}

QPushButton:hover {background-color: #C5C5C5;}QPushButton:pressed {background-color: #C5C5C5;})");
const QString BEGIN_BTN_ENABLED_STYLE = QStringLiteral(R"( QPushButton {
color: #FFFFFF;
border: 0px solid  #2B6FF2;
font: 14px Noto Sans CJK SC;
border-radius: 16px;background-color: #2B6FF2;
}

QPushButton:hover {background-color: #3E80FF;}QPushButton:pressed {background-color: #1953C4;})");
const QString TICK_OFF_STYLE =
    QStringLiteral("border: 1px solid rgba(0, 0, 0, 0.38);border-radius: 3px; color:rgba(0, 0, 0, 0.38)");
const QString TICK_ON_STYLE = QStringLiteral("border-image: url(:/velo/agreeicon);");
const QString AGREE_LABEL_OFF_STYLE = QStringLiteral("color: rgba(0, 0, 0, 0.38);");
const QString AGREE_LABEL_ON_STYLE = QStringLiteral("color: #2B6FF2;");

const QString CARD_SHADOW_STYLE = QStringLiteral("border-radius:20px;background-color:#F9F9F9;");
const QString CARD_PLAIN_STYLE = QStringLiteral("border-radius:0px;background-color:#F9F9F9;");
const QString CLOSE_BTN_SHADOW_STYLE = QStringLiteral(R"(QPushButton{
border-radius:0px;
border-top-right-radius:20px;
border-image:url(:/velo/exitNormalShadow);
}
QPushButton:hover{
border-image:url(:/velo/exitHoverShadow);
}
QPushButton:pressed{
border-image:url(:/velo/exitClickShadow);
})");
const QString CLOSE_BTN_STYLE = QStringLiteral(R"(QPushButton{
border-radius:0px;
border-image:url(:/velo/exitNormal);
}
QPushButton:hover{
border-image:url(:/velo/exitHover);
}
QPushButton:pressed{
border-image:url(:/velo/exitClick);
})");
} // namespace

ProtocolWin::ProtocolWin(QWidget* parent)
    : CardWindow<QWidget>(parent), ui(std::make_unique<Ui_ProtocolWin>()), serProEdit(nullptr)
{
    ui->setupUi(this);
    SetCard(ui->shadowLayout, ui->widget_bg, LAST_DRAG_POINT);
    StyleCard();
    ui->AgreeBtn->setFocusPolicy(Qt::NoFocus);
    ui->BeginBtn->setFocusPolicy(Qt::NoFocus);
    ui->MinBtn->setFocusPolicy(Qt::NoFocus);
    ui->CloseBtn->setFocusPolicy(Qt::NoFocus);
    setAutoFillBackground(false);
    setWindowModality(Qt::WindowModal);
    InitProtocolDialogPage();
    InitProtocolDialogConnection();

    const QRect area = AvailableArea();
    if (Shadow::useShadow) {
        ApplyShadowLook(area);
    } else {
        ApplyPlainLook(area);
    }

    setWindowFlags(Qt::Window | Qt::FramelessWindowHint | Qt::WindowSystemMenuHint);
    setAttribute(Qt::WA_MouseTracking, true);
    setProperty("useStyleWindowManager", false);
}

ProtocolWin::~ProtocolWin() = default;

bool ProtocolWin::IsReadStatement()
{
    return statementRead;
}

void ProtocolWin::Exit()
{
    if (exitHook) {
        exitHook();
    }
    close();
}

QFont ProtocolWin::FontStyle(QString family, int pixelSize, int weight) const
{
    return Typeface::Spaced(family, pixelSize, weight, LETTER_SPACING);
}

void ProtocolWin::ClickAgreeBtn()
{
    const bool ticked = !ui->BeginBtn->isEnabled();
    ui->AgreeLabel->setStyleSheet(ticked ? AGREE_LABEL_ON_STYLE : AGREE_LABEL_OFF_STYLE);
    ui->BeginBtn->setStyleSheet(ticked ? BEGIN_BTN_ENABLED_STYLE : BEGIN_BTN_DISABLED_STYLE);
    ui->BeginBtn->setEnabled(ticked);
    ui->AgreeBtn->setStyleSheet(ticked ? TICK_ON_STYLE : TICK_OFF_STYLE);

    QAccessible::State changed;
    changed.checked = true;
    QAccessibleStateChangeEvent event(ui->AgreeBtn, changed);
    QAccessible::updateAccessibility(&event);
}

void ProtocolWin::ClickBeginBtn()
{
    Singleton<Configure>::GetInstance()->SetStatementReadFlag();
    statementRead = true;
    close();
}

void ProtocolWin::InitProtocolDialogPage()
{
    ui->TitleLabel->setFont(FontStyle(FONT_FAMILY, TITLE_PIXEL_SIZE, DEMI_BOLD));
    ui->AgreeLabel->setFont(FontStyle(FONT_FAMILY, AGREE_PIXEL_SIZE, DEMI_BOLD));
    ui->AgreeLabel->setStyleSheet(AGREE_LABEL_OFF_STYLE);
    ui->AgreeBtn->setStyleSheet(TICK_OFF_STYLE);
    ui->BeginBtn->setStyleSheet(BEGIN_BTN_DISABLED_STYLE);
    ui->BeginBtn->setEnabled(false);

    serProEdit.setAccessibleName(QStringLiteral("服务协议"));
    serProEdit.setParent(ui->ContentFrame);
    serProEdit.move(VIEW_POS);
    serProEdit.setFixedSize(VIEW_SIZE);
    serProEdit.InitUi(QStringLiteral(":/velo/serProtocal"));
}

void ProtocolWin::InitProtocolDialogConnection() const
{
    connect(ui->AgreeBtn, &QPushButton::clicked, this, &ProtocolWin::ClickAgreeBtn);
    connect(ui->AgreeLabel, &QPushButton::clicked, this, &ProtocolWin::ClickAgreeBtn);
    connect(ui->BeginBtn, &QPushButton::clicked, this, &ProtocolWin::ClickBeginBtn);
    connect(ui->MinBtn, &QPushButton::clicked, this, &QWidget::showMinimized);
    connect(ui->CloseBtn, &QPushButton::clicked, this, &ProtocolWin::Exit);
}

void ProtocolWin::StyleCard()
{
    const bool shadow = Shadow::useShadow;
    ui->widget_bg->setStyleSheet(shadow ? CARD_SHADOW_STYLE : CARD_PLAIN_STYLE);
    ui->CloseBtn->setStyleSheet(shadow ? CLOSE_BTN_SHADOW_STYLE : CLOSE_BTN_STYLE);
}

void ProtocolWin::ApplyShadowLook(const QRect& area)
{
    setAttribute(Qt::WA_TranslucentBackground, true);
    SetAdjustShadow(area);
}

void ProtocolWin::ApplyPlainLook(const QRect& area)
{
    SetLayout(area);
    SetFrameColor();
}

#include "moc_ProtocolWin.cpp"
