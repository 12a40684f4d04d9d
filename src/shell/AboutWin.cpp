#include "shell/AboutWin.h"

#include <QScrollBar>

#include "platform/Log.h"
#include "shell/Typeface.h"
#include "shell/VeloWin.h"
#include "ui_AboutWin.h"

namespace {
constexpr char MODULE_TAG[] = "VELODESK";

constexpr int ABOUT_VIEW = 0;
constexpr int AGREEMENT_VIEW = 1;
constexpr QPoint VIEW_POS(20, 17);
constexpr QSize VIEW_SIZE(588, 351);

const QString FONT_FAMILY = QStringLiteral("Noto Sans CJK SC");
constexpr double LETTER_SPACING = 0.7;
constexpr int TITLE_PIXEL_SIZE = 32;
constexpr int NAME_PIXEL_SIZE = 24;
constexpr int TEXT_PIXEL_SIZE = 14;

const QString LABEL_STYLE = QStringLiteral("color:#1F1F1F;");

// The quotes before the font name end the style attribute early. This is intended: the heading would
// otherwise look different.
const QString HEADING = QStringLiteral(
    "<div><p style='float:left;margin-top:0px;margin-bottom:0.3px;font-size:24px;height:30px;\n"
    "font-weight:bold;color:#1F1F1F;letter-spacing:1px;font-family:'Noto Sans CJK SC''>维乐助手</p>\n"
    "<p style='float:left;margin-top:0px;margin-bottom:11px;font-size:14px;\n"
    "height:20px;color:#1F1F1F;letter-spacing:1px;font-family:'Noto Sans CJK SC''>版本1.0</p></div>");
const QString DIVIDER = QStringLiteral("<img style='float:left' src=':/velo/splitter'><br>");
} // namespace

AboutWin::AboutWin(QWidget* parent)
    : QWidget(parent), ui(std::make_unique<Ui_AboutWin>()), serProEdit(nullptr)
{
    ui->setupUi(this);
    ui->abtBackBtn->setFocusPolicy(Qt::NoFocus);
    ui->proBackBtn->setFocusPolicy(Qt::NoFocus);
    ui->proBtn->setFocusPolicy(Qt::NoFocus);
    InitUi();
    InitConnect();
    setProperty("useStyleWindowManager", false);
}

AboutWin::~AboutWin() = default;

QFont AboutWin::FontStyle(QString family, int pixelSize, int weight, double spacing) const
{
    return Typeface::Spaced(family, pixelSize, weight, spacing);
}

void AboutWin::ShowSerProWin()
{
    QTextCursor cursor = serProEdit.textCursor();
    cursor.movePosition(QTextCursor::Start);
    serProEdit.setTextCursor(cursor);
    // Required, because setTextCursor() does not scroll to the top if the cursor is already visible.
    serProEdit.verticalScrollBar()->setValue(serProEdit.verticalScrollBar()->minimum());
    ui->aboutStack->setCurrentIndex(AGREEMENT_VIEW);
    LOG_DEBUG("Velodesk show service protocal page.");
}

void AboutWin::BackToAboutWin() const
{
    ui->aboutStack->setCurrentIndex(ABOUT_VIEW);
    LOG_DEBUG("Velodesk back to about page.");
}

void AboutWin::InitUi()
{
    ui->abtLogo->setAlignment(Qt::AlignHCenter);
    ui->abtName->setAlignment(Qt::AlignHCenter);
    const QRect page = geometry();
    const QRect button = ui->proBtn->geometry();
    ui->proBtn->move(x() + ((page.right() - page.left()) - (button.right() - button.left())) / 2,
                     ui->proBtn->y());

    for (QLabel* label : {ui->abtTitle, ui->proTiltle, ui->abtName, ui->abtVersion}) {
        label->setStyleSheet(LABEL_STYLE);
    }
    ui->abtTitle->setFont(FontStyle(FONT_FAMILY, TITLE_PIXEL_SIZE, QFont::Bold, LETTER_SPACING));
    ui->proTiltle->setFont(FontStyle(FONT_FAMILY, TITLE_PIXEL_SIZE, QFont::Bold, LETTER_SPACING));
    ui->abtName->setFont(FontStyle(FONT_FAMILY, NAME_PIXEL_SIZE, QFont::Bold, LETTER_SPACING));
    ui->abtVersion->setFont(FontStyle(FONT_FAMILY, TEXT_PIXEL_SIZE, QFont::Normal, LETTER_SPACING));
    ui->proBtn->setFont(FontStyle(FONT_FAMILY, TEXT_PIXEL_SIZE, QFont::Normal, LETTER_SPACING));

    serProEdit.setAccessibleName(ui->proTiltle->text());
    serProEdit.setParent(ui->protocal);
    serProEdit.move(VIEW_POS);
    serProEdit.setFixedSize(VIEW_SIZE);
    serProEdit.append(HEADING);
    serProEdit.append(DIVIDER);
    serProEdit.InitUi(QStringLiteral(":/velo/serProtocal"));
}

void AboutWin::InitConnect() const
{
    connect(ui->proBtn, &QPushButton::clicked, this, &AboutWin::ShowSerProWin);
    connect(ui->abtBackBtn, &QPushButton::clicked, dynamic_cast<VeloWin*>(parent()), &VeloWin::CloseAboutWin);
    connect(ui->proBackBtn, &QPushButton::clicked, this, &AboutWin::BackToAboutWin);
}

#include "moc_AboutWin.cpp"
