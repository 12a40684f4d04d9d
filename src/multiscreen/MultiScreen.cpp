#include "multiscreen/MultiScreen.h"

#include <QEvent>
#include <QFileDialog>
#include <QFontMetrics>
#include <QRegExp>
#include <QRegExpValidator>
#include <QStandardPaths>
#include <new>
#include <unistd.h>

#include "config/Configure.h"
#include "config/Constant.h"
#include "multiscreen/WhiteBackground.h"
#include "platform/DirOperator.h"
#include "platform/Log.h"
#include "platform/RandomCode.h"
#include "shell/Typeface.h"
#include "shell/VeloMessageBox.h"
#include "ui_MultiScreen.h"

namespace {
constexpr char MODULE_TAG[] = "VELODESK";

enum View
{
    CAST_VIEW = 0,
    HELP_MENU_VIEW = 1,
    GUIDE_VIEW = 2,
    PROBLEMS_VIEW = 3,
    SETTINGS_VIEW = 4,
};

const QString START_TEXT = QStringLiteral("开始投屏");
const QString STOP_TEXT = QStringLiteral("结束投屏");
const QString START_BTN_STYLE = QStringLiteral(R"(QPushButton {
color: #FFFFFF;
border: 0px solid  #2B6FF2;
font: 14px Noto Sans CJK SC;
border-radius: 16px;background-color: #2B6FF2;
}

QPushButton:hover {background-color: #3E80FF;}QPushButton:pressed {background-color: #1953C4;})");
const QString STOP_BTN_STYLE = QStringLiteral(R"( QPushButton {
color: #2B6FF2;
border: 2px solid  #2B6FF2;
font: 14px Noto Sans CJK SC;
border-radius: 16px;background-color: #FFFFFF;
}

QPushButton:hover {color: #3E80FF; background-color: #FFFFFF;}QPushButton:pressed {color: #1953C4; background-color: #FFFFFF;})");
const QString IDLE_IMAGE_STYLE = QStringLiteral("border-image: url(:/velo/prescreen)");
const QString CASTING_IMAGE_STYLE = QStringLiteral("border-image: url(:/velo/prescreensucess)");

const QString PAGE_STYLE = QStringLiteral("border:transparent");
const QString LINE_STYLE = QStringLiteral("border-top: 2px solid #F0F0F0;");
const QString NAME_STYLE = QStringLiteral("color: #000000;\nbackground-color: rgba(0, 0, 0, 0);");
const QString HELP_FRAME_STYLE = QStringLiteral("background-color: rgb(249, 249, 249); border:transparent;");
const QString HELP_TEXT_STYLE = QStringLiteral(
    "QPushButton {color: #1F1F1F;}QPushButton:hover {color: #2B6FF2;}QPushButton:pressed {color: #2B6FF2;}");
const QString HELP_TEXT_HOVER_STYLE = QStringLiteral("color: #2B6FF2;");
const QString TRANSPARENT_BTN_STYLE = QStringLiteral("background-color:transparent;border-width:0px;");

constexpr double LETTER_SPACING = 0.7;
constexpr double NO_SPACING = 0.0;
/// The letter spacing in pixels of the page's font, which is only used to calculate the width of the name
/// field. It is larger than the spacing of the field's own font: the field needs space at both ends. With
/// this value, even the widest name, fifteen "m", ends before the pencil button.
constexpr double NAME_ROOM_SPACING = 1.5;
constexpr int HEADING_PIXEL_SIZE = 32;
constexpr int SUBHEADING_PIXEL_SIZE = 16;
constexpr int TEXT_PIXEL_SIZE = 14;
constexpr int SMALL_PIXEL_SIZE = 12;

const QString NAME_PATTERN = QStringLiteral("[a-zA-Z0-9一-龥_-]*");
constexpr int NAME_LIMIT = 15;
constexpr int NAME_WIDTH_EXTRA = 7;
constexpr int NAME_Y = 1;
constexpr int PENCIL_Y = 3;
constexpr int PENCIL_EDITING_X = 400;
constexpr int PENCIL_LAST_X = 320;

constexpr QPoint HELP_VIEW_POS(21, 21);
constexpr QSize HELP_VIEW_SIZE(583, 347);

const QString DEVICE_COUNT_TEXT = QStringLiteral("当前信任设备台数：%1");
const QString OK_TEXT = QStringLiteral("确定");

constexpr char TRUST_FILE_1[] = "cd59de12d29aa1b8c695576f73fed493";
constexpr char TRUST_FILE_2[] = "b527a39b0674942c13c451bc81ea6792";
constexpr char TRUST_FILE_3[] = "2e5e9c1f131587ab665a2f38ec73e412";

/// Shows `box` with the message `text` and one button, "确定", and returns when it is closed.
void ShowMessage(VeloMessageBox& box, const QString& text)
{
    box.SetMessageText(text);
    box.SetBtnText(OK_TEXT, QString());
    box.exec();
}

void EraseTrustFile(const std::string& directory, const char* name)
{
    if (Brevora::RandomCode::SafeCoverRemove(directory + name) != 0) {
        LOG_WARNING("SafeCoverRemove %s failed", name);
    }
}
} // namespace

MultiScreen::MultiScreen(QWidget* parent)
    : QWidget(parent), ui(std::make_unique<Ui_MultiScreen>()), helpView(nullptr)
{
    ui->setupUi(this);
    // A status report changes these three widgets. Their white backgrounds make the change faster.
    for (QWidget* changed : {static_cast<QWidget*>(ui->StatusFrame), static_cast<QWidget*>(ui->PreScreenBtn),
                             static_cast<QWidget*>(ui->ScreenLabel)}) {
        new WhiteBackground(changed, this);
    }
    fontFamily = QStringLiteral("Noto Sans CJK SC");
    for (QPushButton* button :
         {ui->PreScreenBtn, ui->NameEditBtn, ui->ReturnBtn, ui->NewHandBtn, ui->NewHandReturnBtn,
          ui->CommonProblemBtn, ui->ProblemReturnBtn, ui->NewHandTextBtn, ui->CommonProTextBtn}) {
        button->setFocusPolicy(Qt::NoFocus);
    }
    currentName = QStringLiteral("Tandra");
    InitScreenPage();
    SetHelpPageBtn();
    InitScreenConnection();
    SavePathOrDesktop();
    setProperty("useStyleWindowManager", false);
}

MultiScreen::~MultiScreen()
{
    // A field in edit mode loses the focus during destruction, when this object is no longer a MultiScreen.
    disconnect(ui->ComputerNameEdit, nullptr, this, nullptr);
}

void MultiScreen::SetPreScreenStatus(bool casting)
{
    // Each widget is repainted immediately. Otherwise, because of the shadow effect, Qt would repaint the
    // bounding rectangle of all three.
    ui->PreScreenBtn->setText(casting ? STOP_TEXT : START_TEXT);
    ui->PreScreenBtn->setStyleSheet(casting ? STOP_BTN_STYLE : START_BTN_STYLE);
    ui->PreScreenBtn->repaint();
    ui->ScreenLabel->setText(casting ? QStringLiteral("投屏中") : QStringLiteral("未投屏"));
    ui->ScreenLabel->repaint();
    ui->StatusFrame->setStyleSheet(casting ? CASTING_IMAGE_STYLE : IDLE_IMAGE_STYLE);
    ui->StatusFrame->repaint();
}

void MultiScreen::ClickPreScreenBtn()
{
    const auto* button = qobject_cast<QPushButton*>(sender());
    if (button != nullptr && button->text() == STOP_TEXT) {
        LOG_INFO("Click stop app button.");
        Singleton<AppManager>::GetInstance()->StopApp(AppManager::TANDRA_APP, false);
        return;
    }
    LOG_INFO("Click start app button.");
    const std::string engine = GetConstant(Velodesk::ENGINE_PATH);
    if (access(engine.c_str(), X_OK) == 0) {
        Singleton<AppManager>::GetInstance()->StartApp(AppManager::TANDRA_APP);
        return;
    }
    if (VeloMessageBox::GetWindCount() != 0) {
        return;
    }
    LOG_ERROR("Tandra file corrupted.");
    VeloMessageBox box(this);
    box.SetWarning();
    ShowMessage(box, QStringLiteral("可执行文件损坏，无法使用多屏协同\n请卸载重装"));
}

void MultiScreen::ProcessStarted(AppManager::AppType type) const
{
    if (type == AppManager::TANDRA_APP) {
        LOG_INFO("App started.");
    }
}

void MultiScreen::ProcessFinished(AppManager::AppType type, int exitCode)
{
    LOG_INFO("Process finished, id %d.", exitCode);
    if (type == AppManager::TANDRA_APP) {
        SetPreScreenStatus(false);
    }
}

void MultiScreen::ProcessAppError(AppManager::AppType type, QProcess::ProcessError err)
{
    if (err == QProcess::FailedToStart) {
        LOG_ERROR("Tandra startup failed.");
    }
    if (type == AppManager::TANDRA_APP) {
        SetPreScreenStatus(false);
    }
}

void MultiScreen::ProcessEvent(AppManager::AppType type, AppManager::AppEventType event)
{
    if (type != AppManager::TANDRA_APP) {
        return;
    }
    if (event == AppManager::APP_EVENT_RUNNING) {
        SetPreScreenStatus(true);
    } else if (event == AppManager::APP_EVENT_STOPPED) {
        SetPreScreenStatus(false);
    }
}

void MultiScreen::ClickNameEditBtn()
{
    ui->ComputerNameEdit->setEnabled(true);
    ui->ComputerNameEdit->setFocus(Qt::OtherFocusReason);
    ui->NameEditBtn->hide();
    nameEditing = true;
    ui->NameEditBtn->move(PENCIL_EDITING_X, PENCIL_Y);
}

void MultiScreen::ComputerNameTextEdited(const QString& text)
{
    // The limit counts bytes: remove characters one by one until the name fits.
    QString name = text;
    for (int limit = NAME_LIMIT; name.toLocal8Bit().length() > NAME_LIMIT; --limit) {
        name = text.left(limit);
        ui->ComputerNameEdit->setText(name);
    }
    // The width is that of the typed text, even if the name was cut. The next edit corrects the width.
    ui->ComputerNameEdit->resize(NameWidth(text), ui->ComputerNameEdit->height());
    if (text.isEmpty()) {
        ui->ComputerNameEdit->setPlaceholderText(currentName);
        ui->ComputerNameEdit->resize(NameWidth(currentName), ui->ComputerNameEdit->height());
    }
}

void MultiScreen::ComputerNameEditEditingFinished()
{
    QString name = ui->ComputerNameEdit->text();
    if (name.isEmpty()) {
        name = currentName;
    }
    if (nameEditing && name != currentName) {
        LOG_INFO("PC device name changed! oldName: %s; newName: %s", currentName.toLocal8Bit().constData(),
                 name.toLocal8Bit().constData());
    }
    nameEditing = false;
    currentName = name;
    ui->ComputerNameEdit->setText(name);

    const int width = NameWidth(name);
    const int labelWidth = ui->NameEditLabel->width();
    const int x = (ui->frame->width() - width - labelWidth - ui->NameEditBtn->width()) / 2;
    ui->NameEditLabel->move(x, NAME_Y);
    ui->ComputerNameEdit->move(x + labelWidth, NAME_Y);
    ui->NameEditBtn->move(qMin(x + labelWidth + width, PENCIL_LAST_X), PENCIL_Y);

    ui->ComputerNameEdit->clearFocus();
    ui->ComputerNameEdit->setEnabled(false);
    ui->NameEditBtn->show();
    Singleton<Configure>::GetInstance()->SetPCDeviceName(ui->ComputerNameEdit->text().toStdString());
}

void MultiScreen::ShowSetView()
{
    const unsigned int count = Singleton<Configure>::GetInstance()->GetTrustDeviceNum();
    ui->numDevice->setText(DEVICE_COUNT_TEXT.arg(count));
    ui->clear->setEnabled(count != 0);
    ui->savePath->setText(QString::fromLocal8Bit(SavePathOrDesktop().c_str()));
    ui->ScreenWidget->setCurrentIndex(SETTINGS_VIEW);
}

void MultiScreen::ChangePath()
{
    QString start = ui->savePath->text();
    for (;;) {
        const QString folder = QFileDialog::getExistingDirectory(nullptr, QStringLiteral("选择文件夹"), start,
                                                                 QFileDialog::ShowDirsOnly);
        if (folder.isEmpty()) {
            LOG_ERROR("ChangePath: no directory choose");
            return;
        }
        const QString fault = FolderFault(folder);
        if (fault.isEmpty()) {
            const QByteArray path = folder.toLocal8Bit();
            LOG_INFO("save file path:%s, success", path.constData());
            ui->savePath->setText(folder);
            Singleton<Configure>::GetInstance()->SetSavePath(path.toStdString());
            return;
        }
        start = folder;
        VeloMessageBox box(this);
        ShowMessage(box, fault);
    }
}

bool MultiScreen::PathHasLink(QString path)
{
    while (!path.isEmpty() && path != QLatin1String("/")) {
        const QByteArray local = path.toLocal8Bit();
        if (DIR_OPERATOR.IsPathLink(local.toStdString())) {
            LOG_ERROR("ChangePath: directory %s link", local.constData());
            return true;
        }
        path = path.left(path.lastIndexOf(QLatin1Char('/')));
    }
    return false;
}

void MultiScreen::ClearTrustDevices()
{
    LOG_INFO("ClearTrustDevices.");
    VeloMessageBox box(this);
    box.SetMessageText(QStringLiteral("清除全部信任设备后，\n下次投屏时需要手机重新确认连接"));
    box.SetBtnText(QStringLiteral("取消"), OK_TEXT);
    connect(&box, &VeloMessageBox::SignalRightBtnClick, this, &MultiScreen::TrustOK);
    trustConfirmed = false;
    box.exec();
    if (!trustConfirmed) {
        return;
    }
    const std::string directory = DIR_OPERATOR.GetOthersDir();
    if (directory.empty()) {
        LOG_ERROR("RemoveFile DIR_OPERATOR.GetOthersDir failed");
        return;
    }
    LOG_INFO("RemoveFile filePath:%s", (directory + TRUST_FILE_1).c_str());
    EraseTrustFile(directory, TRUST_FILE_1);
    EraseTrustFile(directory, TRUST_FILE_2);
    EraseTrustFile(directory, TRUST_FILE_3);
    // The number is set to 0 even if a file could not be erased.
    ui->numDevice->setText(DEVICE_COUNT_TEXT.arg(0));
    ui->clear->setEnabled(false);
    Singleton<Configure>::GetInstance()->ClearTrustDevices();
}

void MultiScreen::TrustOK()
{
    trustConfirmed = true;
}

void MultiScreen::InitHtmlContent(QWidget* frame, QString resource)
{
    helpView.clear();
    helpView.setParent(frame);
    helpView.move(HELP_VIEW_POS);
    helpView.setFixedSize(HELP_VIEW_SIZE);
    helpView.InitUi(resource);
}

void MultiScreen::ClickHelpBtn() const
{
    ClickProblemReturnBtn();
}

void MultiScreen::ClickNewHandReturnBtn() const
{
    ClickProblemReturnBtn();
}

void MultiScreen::ClickProblemReturnBtn() const
{
    ui->ScreenWidget->setCurrentIndex(HELP_MENU_VIEW);
}

void MultiScreen::BackToMainScreen() const
{
    ui->ScreenWidget->setCurrentIndex(CAST_VIEW);
}

void MultiScreen::ClickNewHandBtn()
{
    ClickNewHandTextBtn();
}

void MultiScreen::ClickNewHandTextBtn()
{
    helpView.setAccessibleName(ui->NewHandLabel->text());
    InitHtmlContent(ui->NewHandFrame, QStringLiteral(":/velo/beginnerGuide"));
    ui->ScreenWidget->setCurrentIndex(GUIDE_VIEW);
}

void MultiScreen::ClickCommonProTextBtn()
{
    ClickCommonProblemBtn();
}

void MultiScreen::ClickCommonProblemBtn()
{
    helpView.setAccessibleName(ui->CommonProblemLabel->text());
    InitHtmlContent(ui->CommonProblemFrame, QStringLiteral(":/velo/freQuestions"));
    ui->ScreenWidget->setCurrentIndex(PROBLEMS_VIEW);
}

void MultiScreen::SetHelpPageBtn()
{
    for (QPushButton* text : {ui->NewHandTextBtn, ui->CommonProTextBtn}) {
        text->setFont(FontStyle(fontFamily, SUBHEADING_PIXEL_SIZE, QFont::Bold, NO_SPACING));
        text->setStyleSheet(HELP_TEXT_STYLE);
    }
    for (QPushButton* icon : {ui->NewHandBtn, ui->CommonProblemBtn}) {
        icon->setStyleSheet(TRANSPARENT_BTN_STYLE);
        icon->setAttribute(Qt::WA_Hover, true);
        icon->installEventFilter(this);
    }
}

bool MultiScreen::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == this && event->type() == QEvent::MouseButtonPress && ui->ComputerNameEdit->hasFocus()) {
        ComputerNameEditEditingFinished();
    }
    if (watched == ui->NewHandBtn || watched == ui->CommonProblemBtn) {
        QPushButton* text = watched == ui->NewHandBtn ? ui->NewHandTextBtn : ui->CommonProTextBtn;
        if (event->type() == QEvent::Enter) {
            text->setStyleSheet(HELP_TEXT_HOVER_STYLE);
        } else if (event->type() == QEvent::Leave) {
            text->setStyleSheet(HELP_TEXT_STYLE);
        }
    }
    return QObject::eventFilter(watched, event);
}

QFont MultiScreen::FontStyle(QString family, int pixelSize, int weight, double spacing) const
{
    return Typeface::Spaced(family, pixelSize, weight, spacing);
}

void MultiScreen::InitScreenPage()
{
    ui->ScreenWidget->setCurrentIndex(CAST_VIEW);
    setStyleSheet(PAGE_STYLE);
    SetPreScreenStatus(false);
    InitFonts();
    ui->line->setStyleSheet(LINE_STYLE);
    InitInputBoxPara();
    ui->NewHandFrame->setStyleSheet(HELP_FRAME_STYLE);
    ui->CommonProblemFrame->setStyleSheet(HELP_FRAME_STYLE);
}

void MultiScreen::InitFonts()
{
    // This font is only used to calculate the width of the name field. The widgets on the page do not inherit
    // it, because the page has a style sheet.
    setFont(FontStyle(fontFamily, SMALL_PIXEL_SIZE, QFont::Normal, NAME_ROOM_SPACING));
    for (QLabel* heading :
         {ui->ScreenTitle, ui->TitleLabel, ui->NewHandLabel, ui->CommonProblemLabel, ui->setTitle}) {
        heading->setFont(FontStyle(fontFamily, HEADING_PIXEL_SIZE, QFont::Bold, LETTER_SPACING));
    }
    for (QLabel* subheading : {ui->ScreenLabel, ui->saveFilePath, ui->labelDevide}) {
        subheading->setFont(FontStyle(fontFamily, SUBHEADING_PIXEL_SIZE, QFont::Bold, NO_SPACING));
    }
    for (QLabel* text : {ui->savePath, ui->numDevice}) {
        text->setFont(FontStyle(fontFamily, TEXT_PIXEL_SIZE, QFont::Normal, NO_SPACING));
    }
    for (QPushButton* button : {ui->change, ui->clear}) {
        button->setFont(FontStyle(fontFamily, SMALL_PIXEL_SIZE, QFont::Normal, LETTER_SPACING));
    }
}

void MultiScreen::InitInputBoxPara()
{
    installEventFilter(this);
    ui->NameEditLabel->setAlignment(Qt::AlignRight);
    ui->NameEditLabel->setStyleSheet(NAME_STYLE);
    ui->NameEditLabel->setFont(FontStyle(fontFamily, SMALL_PIXEL_SIZE, QFont::Normal, LETTER_SPACING));
    ui->NameEditLabel->setEnabled(false);

    const auto* validator =
        new (std::nothrow) QRegExpValidator(QRegExp(NAME_PATTERN, Qt::CaseSensitive), ui->ComputerNameEdit);
    if (validator == nullptr) {
        LOG_ERROR("Validator is nullptr.");
        return;
    }
    ui->ComputerNameEdit->setValidator(validator);
    ui->ComputerNameEdit->setAlignment(Qt::AlignLeft);
    ui->ComputerNameEdit->setStyleSheet(NAME_STYLE);
    ui->ComputerNameEdit->setFont(FontStyle(fontFamily, SMALL_PIXEL_SIZE, QFont::Normal, LETTER_SPACING));
    LoadDeviceName();
}

void MultiScreen::LoadDeviceName()
{
    QString name =
        QString::fromStdString(Singleton<Configure>::GetInstance()->GetPCDeviceName()).left(NAME_LIMIT);
    if (!QRegExp(NAME_PATTERN, Qt::CaseSensitive).exactMatch(name)) {
        name = currentName;
    }
    ui->ComputerNameEdit->setText(name);
    ComputerNameTextEdited(name);
    ComputerNameEditEditingFinished();
}

void MultiScreen::InitScreenConnection() const
{
    connect(ui->PreScreenBtn, &QPushButton::clicked, this, &MultiScreen::ClickPreScreenBtn);
    connect(ui->NameEditBtn, &QPushButton::clicked, this, &MultiScreen::ClickNameEditBtn);
    connect(ui->ComputerNameEdit, &QLineEdit::textEdited, this, &MultiScreen::ComputerNameTextEdited);
    connect(ui->ComputerNameEdit, &QLineEdit::editingFinished, this,
            &MultiScreen::ComputerNameEditEditingFinished);
    connect(ui->ReturnBtn, &QPushButton::clicked, this, &MultiScreen::BackToMainScreen);
    connect(ui->NewHandBtn, &QPushButton::clicked, this, &MultiScreen::ClickNewHandBtn);
    connect(ui->NewHandReturnBtn, &QPushButton::clicked, this, &MultiScreen::ClickNewHandReturnBtn);
    connect(ui->CommonProblemBtn, &QPushButton::clicked, this, &MultiScreen::ClickCommonProblemBtn);
    connect(ui->ProblemReturnBtn, &QPushButton::clicked, this, &MultiScreen::ClickProblemReturnBtn);
    connect(ui->NewHandTextBtn, &QPushButton::clicked, this, &MultiScreen::ClickNewHandTextBtn);
    connect(ui->CommonProTextBtn, &QPushButton::clicked, this, &MultiScreen::ClickCommonProTextBtn);
    connect(ui->clear, &QPushButton::clicked, this, &MultiScreen::ClearTrustDevices);
    connect(ui->setBack, &QPushButton::clicked, this, &MultiScreen::BackToMainScreen);
    connect(ui->change, &QPushButton::clicked, this, &MultiScreen::ChangePath);

    const AppManager* manager = Singleton<AppManager>::GetInstance();
    connect(manager, &AppManager::AppFinished, this, &MultiScreen::ProcessFinished);
    connect(manager, &AppManager::AppStarted, this, &MultiScreen::ProcessStarted);
    connect(manager, &AppManager::AppError, this, &MultiScreen::ProcessAppError);
    connect(manager, &AppManager::AppEvent, this, &MultiScreen::ProcessEvent);
}

std::string MultiScreen::SavePathOrDesktop()
{
    auto* configure = Singleton<Configure>::GetInstance();
    std::string path = configure->GetSavePath();
    if (path.empty()) {
        path = QStandardPaths::writableLocation(QStandardPaths::DesktopLocation).toLocal8Bit().toStdString();
        configure->SetSavePath(path);
    }
    return path;
}

QString MultiScreen::FolderFault(const QString& folder)
{
    const QByteArray path = folder.toLocal8Bit();
    if (!DIR_OPERATOR.IsDirExist(path.toStdString())) {
        LOG_ERROR("ChangePath: directory %s not exist", path.constData());
        return QStringLiteral("选择文件夹不存在，请重新选择");
    }
    if (access(path.constData(), R_OK) != 0 || access(path.constData(), W_OK) != 0 ||
        access(path.constData(), X_OK) != 0) {
        LOG_ERROR("ChangePath: directory %s has fault right mode", path.constData());
        return QStringLiteral("选择文件夹权限不对，请重新选择");
    }
    if (PathHasLink(folder)) {
        return QStringLiteral("选择文件夹包含快捷方式，请重新选择");
    }
    const QRegExp unsupported(QStringLiteral("[;\n\r]"));
    if (folder.contains(unsupported)) {
        const QString line = QString(folder).replace(QRegExp(QStringLiteral("[\n\r]")), QStringLiteral(" "));
        LOG_ERROR("ChangePath: directory %s has unsupported character", line.toLocal8Bit().constData());
        return QStringLiteral("选择文件夹名称包含不支持的字符，请重新选择");
    }
    return QString();
}

int MultiScreen::NameWidth(const QString& text) const
{
    return fontMetrics().horizontalAdvance(text) + NAME_WIDTH_EXTRA;
}

#include "moc_MultiScreen.cpp"
