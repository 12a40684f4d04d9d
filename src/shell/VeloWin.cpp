#include "shell/VeloWin.h"

#include <QApplication>
#include <QCloseEvent>
#include <QFont>
#include <QLabel>
#include <QListWidgetItem>
#include <QSessionManager>
#include <new>

#include "platform/Log.h"
#include "shell/ExitWin.h"
#include "shell/Shadow.h"
#include "supervision/AppManager.h"
#include "ui_PopUpMenu.h"
#include "ui_VeloWin.h"

namespace {
constexpr char MODULE_TAG[] = "VELODESK";

constexpr int LAST_DRAG_X = 895;
constexpr int NO_ROW = -1;
constexpr int MAIN_PAGE = 0;
constexpr QSize ROW_SIZE(168, 36);
constexpr QSize ROW_ICON_SIZE(20, 20);
constexpr int ROW_TEXT_PIXEL_SIZE = 14;
constexpr qreal ROW_LETTER_SPACING = 1.0;

/// The margin in pixels around the card of the menu, for its shadow. The form has margins of 1 pixel, so
/// width and height of the menu grow by MENU_GROWTH.
constexpr int MENU_MARGIN = 20;
constexpr int MENU_GROWTH = 2 * (MENU_MARGIN - 1);

const QString LIST_STYLE = QStringLiteral(R"(QListWidget{
background-color:transparent;
color:rgba(31,31,31,1);
outline:0px;
}
QListWidget::item{
background-color:rgba(239,245,255,1);
}
QListWidget::item:hover{
background-color:rgba(215,229,255,1);
}
QListWidget::item:selected{
background-color:rgba(206,224,255,1);
})");
const QString ROW_TEXT_STYLE = QStringLiteral("color:rgba(31,31,31,1);");

const QString CARD_SHADOW_STYLE = QStringLiteral(R"(#widget_bg{
background-color:white;
border-radius:20px;
})");
const QString CARD_PLAIN_STYLE = QStringLiteral(R"(#widget_bg{
background-color:white;
border-radius:0px;
})");
const QString COLUMN_SHADOW_STYLE = QStringLiteral(R"(#menuFrame{
background-color:rgba(231,239,252,1);
border:none;
border-radius:0px;
border-top-left-radius:20px;
border-bottom-left-radius:20px;
})");
const QString COLUMN_PLAIN_STYLE = QStringLiteral(R"(#menuFrame{
background-color:rgba(231,239,252,1);
border:none;
border-radius:0px;
})");
const QString CLOSE_BTN_SHADOW_STYLE = QStringLiteral(R"(#exitBtn{
border-radius:0px;
border-top-right-radius:20px;
border-image:url(:/velo/exitNormalShadow);
}
#exitBtn:hover{
border-image:url(:/velo/exitHoverShadow);
}
#exitBtn:pressed{
border-image:url(:/velo/exitClickShadow);
})");
const QString CLOSE_BTN_PLAIN_STYLE = QStringLiteral(R"(#exitBtn{
border-image:url(:/velo/exitNormal);
}
#exitBtn:hover{
border-image:url(:/velo/exitHover);
}
#exitBtn:pressed{
border-image:url(:/velo/exitClick);
})");

const QString MENU_CARD_STYLE = QStringLiteral("#widget_bg{border-radius:8px;}");
const QString MENU_TOP_CORNERS =
    QStringLiteral("QPushButton{border-top-left-radius:8px;border-top-right-radius:8px;"
                   "border-bottom-left-radius:0px;border-bottom-right-radius:0px;}");
const QString MENU_BOTTOM_CORNERS =
    QStringLiteral("QPushButton{border-bottom-left-radius:8px;border-bottom-right-radius:8px;"
                   "border-top-left-radius:0px;border-top-right-radius:0px;}");
} // namespace

VeloWin::VeloWin(QWidget* parent)
    : CardWindow<QWidget>(parent), ui(std::make_unique<Ui_VeloWin>()), multiScreen(nullptr), aboutWin(this)
{
    ui->setupUi(this);
    SetCard(ui->shadowLayout, ui->widget_bg, QPoint(LAST_DRAG_X, ui->topFrame->height() - 1));
    StyleCard();
    ui->minBtn->setFocusPolicy(Qt::NoFocus);
    ui->exitBtn->setFocusPolicy(Qt::NoFocus);
    InitUi();
    InitConnect();
    InitDefaultAppUi(MAIN_PAGE);
    setAutoFillBackground(false);
    setWindowFlags(Qt::Window | Qt::FramelessWindowHint | Qt::WindowSystemMenuHint);
    setAttribute(Qt::WA_MouseTracking, true);

    const QRect area = AvailableArea();
    if (Shadow::useShadow) {
        ApplyShadowLook(area);
    } else {
        ApplyPlainLook(area);
    }

    multiScreen.SetHelpPageBtn();
    setWindowModality(Qt::WindowModal);
    popUpMenu.installEventFilter(this);
    setProperty("useStyleWindowManager", false);
    InitPopMenu();
}

VeloWin::~VeloWin() = default;

void VeloWin::SetAppObj(QApplication& app)
{
    application = &app;
    connect(application, &QGuiApplication::commitDataRequest, this, &VeloWin::SessionMng);
}

void VeloWin::AddAppListItem(QString icon, QString text)
{
    // The pointer deletes the row with its children if a later allocation fails.
    std::unique_ptr<QWidget> container(new (std::nothrow) QWidget(ui->appList));
    if (container == nullptr) {
        LOG_ERROR("Item container is nullptr.");
        return;
    }
    container->setObjectName(QStringLiteral("appRow"));
    container->setAccessibleName(text);
    auto* iconLabel = new (std::nothrow) QLabel(container.get());
    if (iconLabel == nullptr) {
        LOG_ERROR("Item label is nullptr.");
        return;
    }
    iconLabel->setPixmap(QPixmap(icon));
    iconLabel->resize(ROW_ICON_SIZE);

    auto* textLabel = new (std::nothrow) QLabel(container.get());
    if (textLabel == nullptr) {
        LOG_ERROR("Item text is nullptr.");
        return;
    }
    textLabel->setTextFormat(Qt::PlainText);
    textLabel->setText(text);
    QFont font;
    font.setFamily(QStringLiteral("NotoSansCJKsc-Regular"));
    // This is the PostScript name, not a family. setFamilies() has priority over it, and font merging is off,
    // because Qt would otherwise sort all installed fonts four times.
    font.setFamilies({QStringLiteral("Noto Sans CJK SC")});
    font.setStyleStrategy(QFont::NoFontMerging);
    font.setPixelSize(ROW_TEXT_PIXEL_SIZE);
    font.setLetterSpacing(QFont::AbsoluteSpacing, ROW_LETTER_SPACING);
    textLabel->setFont(font);
    textLabel->setStyleSheet(ROW_TEXT_STYLE);

    auto* layout = new (std::nothrow) QGridLayout(container.get());
    if (layout == nullptr) {
        LOG_ERROR("Item layout is nullptr.");
        return;
    }
    layout->addWidget(iconLabel, 0, 0);
    layout->addWidget(textLabel, 0, 1);
    SetItemLayoutMargins(*layout);

    auto* item = new (std::nothrow) QListWidgetItem(ui->appList);
    if (item == nullptr) {
        LOG_ERROR("Item is nullptr.");
        return;
    }
    item->setData(Qt::SizeHintRole, ROW_SIZE);
    ui->appList->setItemWidget(item, container.release());
}

void VeloWin::SetItemLayoutMargins(QGridLayout& layout)
{
    layout.setContentsMargins(16, 0, 64, 0);
}

void VeloWin::InitDefaultAppUi(int index) const
{
    ui->appList->setCurrentRow(index);
}

void VeloWin::ShowCurAppUi(int index)
{
    LOG_DEBUG("Velodesk current app index: %d.", index);
    if (index == NO_ROW) {
        return;
    }
    ui->appStack->setCurrentIndex(index);
    currentApp = index;
    aboutWin.BackToAboutWin();
    multiScreen.BackToMainScreen();
}

void VeloWin::ShowExitWin()
{
    if (!RenewExitWin()) {
        return;
    }
    LOG_INFO("Velodesk show exit window.");
    ShowExitWinCentred();
}

void VeloWin::ShowAboutWin()
{
    LOG_INFO("Velodesk show about page.");
    ui->appList->setCurrentRow(NO_ROW);
    ui->appStack->setCurrentIndex(ui->appStack->count() - 1);
    multiScreen.BackToMainScreen();
}

void VeloWin::CloseAboutWin() const
{
    LOG_INFO("Velodesk back to app index: %d.", currentApp);
    ui->appList->setCurrentRow(currentApp);
}

void VeloWin::ExitVeloWin() const
{
    Singleton<AppManager>::GetInstance()->StopAll();
    QCoreApplication::quit();
    if (exitHook) {
        exitHook();
    }
    LOG_INFO("Velodesk exit.");
}

void VeloWin::SessionMng(QSessionManager& sessionManager)
{
    LOG_INFO("Get session manager.");
    sessionManager.release();
    sessionEnding = true;
}

void VeloWin::ShowMenu()
{
    const QPoint button = ui->topFrame->mapToGlobal(ui->menu->pos());
    const QRect buttonRect = ui->menu->geometry();
    const QRect menuRect = popUpMenu.geometry();
    const int x =
        (buttonRect.right() - buttonRect.left()) - (menuRect.right() - menuRect.left()) + button.x();
    const int y = buttonRect.bottom() - buttonRect.top() + button.y();
    if (Shadow::useShadow) {
        popUpMenu.move(x + MENU_MARGIN, y + 1 - MENU_MARGIN);
    } else {
        popUpMenu.move(x, y + 1);
    }
    popUpMenu.show();
}

void VeloWin::ShowSetWin()
{
    LOG_INFO("Velodesk show set page.");
    ui->appList->setCurrentRow(NO_ROW);
    ui->appStack->setCurrentIndex(MAIN_PAGE);
    multiScreen.ShowSetView();
}

void VeloWin::ShowMain()
{
    ui->appStack->setCurrentIndex(MAIN_PAGE);
}

bool VeloWin::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == &popUpMenu && event->type() == QEvent::FocusOut) {
        popUpMenu.hide();
    }
    if (watched == &popUpMenu && event->type() == QEvent::Hide &&
        !ui->menu->rect().contains(ui->menu->mapFromGlobal(QCursor::pos()))) {
        // While a pop-up is open, Qt drops leave events, so the hover state of the menu's button would not
        // end.
        ui->menu->setAttribute(Qt::WA_UnderMouse, false);
        ui->menu->update();
    }
    return CardWindow<QWidget>::eventFilter(watched, event);
}

void VeloWin::mousePressEvent(QMouseEvent* event)
{
    cardRect = QRect(QPoint(0, 0), ui->widget_bg->size());
    CardWindow<QWidget>::mousePressEvent(event);
}

void VeloWin::closeEvent(QCloseEvent* event)
{
    if (!RenewExitWin()) {
        return;
    }
    if (!sessionEnding) {
        event->ignore();
    }
    // The question is also shown at the end of the session, while the window closes.
    ShowExitWinCentred();
    LOG_INFO("Velodesk closeEvent show exit window.");
}

void VeloWin::MoveCard(const QPoint& topLeft)
{
    Shadow::ShadowWinAdjust(this, ui->shadowLayout, ui->widget_bg, QRect(topLeft, cardRect.size()), false);
}

void VeloWin::InitUi()
{
    ui->appStack->addWidget(&multiScreen);
    ui->appStack->addWidget(&aboutWin);
    AddAppListItem(QStringLiteral(":/velo/tandra"), QStringLiteral("多屏协同"));
    ui->appList->setStyleSheet(LIST_STYLE);
    ui->appList->setFocusPolicy(Qt::NoFocus);
}

void VeloWin::InitConnect() const
{
    connect(ui->appList, &QListWidget::currentRowChanged, this, &VeloWin::ShowCurAppUi);
    connect(ui->minBtn, &QPushButton::clicked, this, &QWidget::showMinimized);
    connect(ui->exitBtn, &QPushButton::clicked, this, &VeloWin::ShowExitWin);
    connect(ui->menu, &QPushButton::clicked, this, &VeloWin::ShowMenu);
}

void VeloWin::InitPopMenu()
{
    menuUi = std::make_unique<Ui_PopUpMenu>();
    menuUi->setupUi(&popUpMenu);
    popUpMenu.setWindowFlags(Qt::Popup | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint);
    if (Shadow::useShadow) {
        ApplyMenuShadowLook();
    }
    connect(menuUi->about, &QPushButton::clicked, this, &VeloWin::ShowAboutWin);
    connect(menuUi->about, &QPushButton::clicked, &popUpMenu, &QWidget::hide);
    connect(menuUi->help, &QPushButton::clicked, &multiScreen, &MultiScreen::ClickHelpBtn);
    connect(menuUi->help, &QPushButton::clicked, this, &VeloWin::ShowMain);
    connect(menuUi->help, &QPushButton::clicked, &popUpMenu, &QWidget::hide);
    connect(menuUi->set, &QPushButton::clicked, this, &VeloWin::ShowSetWin);
    connect(menuUi->set, &QPushButton::clicked, &popUpMenu, &QWidget::hide);
}

void VeloWin::StyleCard()
{
    const bool shadow = Shadow::useShadow;
    ui->widget_bg->setStyleSheet(shadow ? CARD_SHADOW_STYLE : CARD_PLAIN_STYLE);
    ui->menuFrame->setStyleSheet(shadow ? COLUMN_SHADOW_STYLE : COLUMN_PLAIN_STYLE);
    ui->exitBtn->setStyleSheet(shadow ? CLOSE_BTN_SHADOW_STYLE : CLOSE_BTN_PLAIN_STYLE);
}

void VeloWin::ApplyShadowLook(const QRect& area)
{
    setAttribute(Qt::WA_TranslucentBackground, true);
    SetAdjustShadow(area);
    ui->justCover->hide();
    ui->justCover2->hide();
}

void VeloWin::ApplyPlainLook(const QRect& area)
{
    SetLayout(area);
    ui->justCover->show();
    ui->justCover2->show();
    SetFrameColor();
}

void VeloWin::ApplyMenuShadowLook()
{
    popUpMenu.setAttribute(Qt::WA_TranslucentBackground, true);
    menuUi->widget_bg->setStyleSheet(MENU_CARD_STYLE);
    menuUi->help->setStyleSheet(menuUi->help->styleSheet() + MENU_TOP_CORNERS);
    menuUi->about->setStyleSheet(menuUi->about->styleSheet() + MENU_BOTTOM_CORNERS);
    Shadow::AddShadowEffect(&popUpMenu, menuUi->widget_bg);
    menuUi->horizontalLayout->setContentsMargins(MENU_MARGIN, MENU_MARGIN, MENU_MARGIN, MENU_MARGIN);
    popUpMenu.setFixedSize(popUpMenu.width() + MENU_GROWTH, popUpMenu.height() + MENU_GROWTH);
}

bool VeloWin::RenewExitWin()
{
    auto* fresh = new (std::nothrow) ExitWin(this);
    if (fresh == nullptr) {
        LOG_ERROR("ExitWin is nullptr.");
        return false;
    }
    exitWin.reset(fresh);
    return true;
}

void VeloWin::ShowExitWinCentred()
{
    const QRect rect = exitWin->geometry();
    exitWin->move(CentredCorner(geometry(), rect.bottomRight() - rect.topLeft()));
    exitWin->show();
}

#include "moc_VeloWin.cpp"
