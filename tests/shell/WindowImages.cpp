#include "WindowImages.h"

#include <QAbstractScrollArea>
#include <QApplication>
#include <QDialog>
#include <QDir>
#include <QPushButton>
#include <QScrollBar>
#include <QTest>

#include "config/Configure.h"
#include "config/Constant.h"
#include "config/IniParser.h"
#include "multiscreen/MultiScreen.h"
#include "platform/Singleton.h"
#include "shell/AboutWin.h"
#include "shell/ExitWin.h"
#include "shell/ProtocolWin.h"
#include "shell/SerProEdit.h"
#include "shell/VeloWin.h"
#include "support/ModalActor.h"
#include "support/Widgets.h"

namespace {
constexpr int TRUSTED_PHONES = 3;

class WindowImageTaker
{
public:
    explicit WindowImageTaker(bool shadow) : appearance(shadow), suffix(shadow ? "-shadow" : "-plain") {}

    QList<WindowImage> Take();

private:
    void Add(const char* name, QWidget& window, bool golden = true);
    /// Adds the window in its normal state, then with all buttons hovered, then with all pressed.
    void AddStates(const char* name, QWidget& window);
    void AddPages(const char* name, QWidget& window, SerProEdit& view);
    void TakeAgreement();
    void TakeMainWindow();
    void TakeHelp(VeloWin& window, MultiScreen& page);
    void TakeSettings(VeloWin& window);
    void TakeAbout(VeloWin& window);
    void TakeMenu(VeloWin& window);
    void TakeDialogs(VeloWin& window, MultiScreen& page);
    /// Adds the modal dialog that `openDialog` opens.
    void AddDialog(const char* name, const std::function<void()>& openDialog);

    Appearance appearance;
    QString suffix;
    QList<WindowImage> images;
};

void ProcessPendingEvents()
{
    // Process deferred layout and polishing, so that grab() does not do it.
    QCoreApplication::sendPostedEvents();
    QCoreApplication::processEvents();
}

void Hover(const QList<QPushButton*>& buttons, bool hovered)
{
    for (QPushButton* button : buttons) {
        // The style uses the attribute, and the button uses the position of the pointer.
        button->setAttribute(Qt::WA_UnderMouse, hovered);
        SendMouse(*button, QEvent::MouseMove, button->rect().center(), Qt::NoButton);
        button->update();
    }
}

void PressDown(const QList<QPushButton*>& buttons, bool down)
{
    for (QPushButton* button : buttons) {
        button->setDown(down);
    }
}

void Store(Velodesk::StrConstName section, Velodesk::StrConstName key, const std::string& value)
{
    using Table = Constant<Velodesk::StrConstName, std::string>;
    Brevora::Config::IniParser::GetInstance().SetKeyValue(
        Table::GetConstant(Velodesk::CONF_FILE), Table::GetConstant(section), Table::GetConstant(key), value);
}

void WindowImageTaker::Add(const char* name, QWidget& window, bool golden)
{
    ProcessPendingEvents();
    images.append({QLatin1String(name) + suffix,
                   window.grab().toImage().convertToFormat(QImage::Format_ARGB32), golden});
}

void WindowImageTaker::AddStates(const char* name, QWidget& window)
{
    const auto buttons = window.findChildren<QPushButton*>();
    Add(name, window);
    Hover(buttons, true);
    Add((QByteArray(name) + "-hover").constData(), window);
    PressDown(buttons, true);
    Add((QByteArray(name) + "-pressed").constData(), window);
    PressDown(buttons, false);
    Hover(buttons, false);
}

void WindowImageTaker::AddPages(const char* name, QWidget& window, SerProEdit& view)
{
    QScrollBar* bar = view.verticalScrollBar();
    int page = 1;
    for (int top = 0;; top += bar->pageStep()) {
        bar->setValue(top);
        Add((QByteArray(name) + '-' + QByteArray::number(page)).constData(), window, page == 1);
        ++page;
        if (top >= bar->maximum()) {
            break;
        }
    }
    bar->setValue(0);
}

void WindowImageTaker::TakeAgreement()
{
    ProtocolWin window(nullptr);
    window.show();
    AddStates("agreement", window);
    window.ClickAgreeBtn();
    AddStates("agreement-ticked", window);
    AddPages("agreement-page", window, *window.findChild<SerProEdit*>());
}

void WindowImageTaker::TakeMainWindow()
{
    VeloWin window(nullptr);
    window.show();
    auto& page = *window.findChild<MultiScreen*>();
    AddStates("main-idle", window);
    page.SetPreScreenStatus(true);
    AddStates("main-casting", window);
    page.SetPreScreenStatus(false);
    page.ClickNameEditBtn();
    Add("main-name", window, false);
    page.ComputerNameEditEditingFinished();
    TakeHelp(window, page);
    TakeSettings(window);
    TakeAbout(window);
    window.ShowCurAppUi(0);
    TakeMenu(window);
    TakeDialogs(window, page);
}

void WindowImageTaker::TakeHelp(VeloWin& window, MultiScreen& page)
{
    page.ClickHelpBtn();
    AddStates("help-menu", window);
    page.ClickNewHandBtn();
    AddPages("help-guide", window, *page.findChild<SerProEdit*>());
    page.ClickCommonProblemBtn();
    AddPages("help-problems", window, *page.findChild<SerProEdit*>());
}

void WindowImageTaker::TakeSettings(VeloWin& window)
{
    Singleton<Configure>::GetInstance()->ClearTrustDevices();
    window.ShowSetWin();
    Add("settings-no-phone", window);
    Store(Velodesk::SERVER_SECTION, Velodesk::KEY_TRUST_NUM, std::to_string(TRUSTED_PHONES));
    window.ShowSetWin();
    AddStates("settings", window);
}

void WindowImageTaker::TakeAbout(VeloWin& window)
{
    window.ShowAboutWin();
    AddStates("about", window);
    auto& about = *window.findChild<AboutWin*>();
    about.ShowSerProWin();
    AddPages("about-agreement", window, *about.findChild<SerProEdit*>());
    about.BackToAboutWin();
}

void WindowImageTaker::TakeMenu(VeloWin& window)
{
    window.ShowMenu();
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        if (widget->objectName() == QLatin1String("PopUpMenu") && widget->isVisible()) {
            AddStates("menu", *widget);
            widget->hide();
        }
    }
}

void WindowImageTaker::TakeDialogs(VeloWin& window, MultiScreen& page)
{
    window.ShowExitWin();
    auto& question = *window.findChild<ExitWin*>();
    AddStates("quit", question);
    question.hide();
    // The engine is not installed, so the click shows the warning.
    AddDialog("warning", [&page] { page.ClickPreScreenBtn(); });
    AddDialog("question", [&page] { page.ClearTrustDevices(); });
}

void WindowImageTaker::AddDialog(const char* name, const std::function<void()>& openDialog)
{
    const ModalActor actor([this, name](QWidget* dialog) {
        AddStates(name, *dialog);
        static_cast<QDialog*>(dialog)->reject();
    });
    openDialog();
    if (!actor.HasActed()) {
        qFatal("no dialog for %s", name);
    }
}

QList<WindowImage> WindowImageTaker::Take()
{
    // Images must not depend on the scratch home or on the time.
    Singleton<Configure>::GetInstance()->SetSavePath("/home/user/Desktop");
    QApplication::setCursorFlashTime(0);
    TakeAgreement();
    TakeMainWindow();
    return images;
}

} // namespace

QList<WindowImage> TakeWindowImages(bool shadow)
{
    return WindowImageTaker(shadow).Take();
}
