#pragma once

#include <QDialog>
#include <QGridLayout>
#include <QRect>
#include <QString>
#include <QWidget>
#include <functional>
#include <memory>

#include "multiscreen/MultiScreen.h"
#include "shell/AboutWin.h"
#include "shell/CardWindow.h"

class ExitWin;
class QApplication;
class QSessionManager;
class Ui_PopUpMenu;
class Ui_VeloWin;

/// The main window: the list of applications, a title strip, a stack of pages, the pop-up menu and the way
/// out.
///
/// main() owns it, calls SetAppObj() and fills exitHook before the event loop runs. It owns its pages and the
/// present ExitWin. The user leaves it only through the confirmation; the end of the desktop session closes
/// it without. Interface thread only.
class VeloWin : public CardWindow<QWidget>
{
    Q_OBJECT

public:
    explicit VeloWin(QWidget* parent);
    ~VeloWin() override;

    /// Lets the end of the desktop session, as XSMP tells it, close the window. Once, before the event loop.
    void SetAppObj(QApplication& app);
    /// Appends a row to the application list: a picture's resource path and a text.
    void AddAppListItem(QString icon, QString text);
    void SetItemLayoutMargins(QGridLayout& layout);
    /// Makes a row of the application list the current one.
    void InitDefaultAppUi(int index) const;

public slots:
    /// Shows the page of a row and brings all pages back to their first view; -1, no row, does nothing.
    void ShowCurAppUi(int index);
    void ShowExitWin();
    void ShowAboutWin();
    /// Back from the about page to the last application page.
    void CloseAboutWin() const;
    /// Ends the program: stops all children, which can block for seconds, leaves the event loop, calls
    /// exitHook.
    void ExitVeloWin() const;
    /// The session manager asks us to save: from now on a close event goes through.
    void SessionMng(QSessionManager& sessionManager);
    void ShowMenu();
    void ShowSetWin();
    /// Shows the multi-screen page.
    void ShowMain();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void MoveCard(const QPoint& topLeft) override;

private:
    void InitUi();
    void InitConnect() const;
    void InitPopMenu();
    /// Before there are pages on the card: with each style sheet all that lies below is styled again.
    void StyleCard();
    void ApplyShadowLook(const QRect& area);
    void ApplyPlainLook(const QRect& area);
    void ApplyMenuShadowLook();
    /// Replaces the confirmation window by a new one; false if there is no memory for it.
    bool RenewExitWin();
    void ShowExitWinCentred();

    std::unique_ptr<Ui_VeloWin> ui;
    std::unique_ptr<Ui_PopUpMenu> menuUi;
    QDialog popUpMenu;
    MultiScreen multiScreen;
    AboutWin aboutWin;
    std::unique_ptr<ExitWin> exitWin;
    QRect cardRect;
    int currentApp = 0;
    QApplication* application = nullptr;
    bool sessionEnding = false;

public:
    /// Called once the children have been stopped, when the user quits; empty until main() fills it.
    std::function<void()> exitHook;
};
