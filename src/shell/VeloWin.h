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

/// The main window: the list of applications, a title strip, a stack of pages, the pop-up menu and the exit
/// question.
///
/// main() owns it, calls SetAppObj() and sets exitHook before the event loop runs. The window owns its pages
/// and the current ExitWin. The user can close it only by the exit question; the end of the desktop
/// session closes it without a question. Interface thread only.
class VeloWin : public CardWindow<QWidget>
{
    Q_OBJECT

public:
    explicit VeloWin(QWidget* parent);
    ~VeloWin() override;

    /// Lets the end of the desktop session (XSMP) close the window. Call it once, before the event loop runs.
    void SetAppObj(QApplication& app);
    /// Appends a row to the application list: the resource path of an image and a text.
    void AddAppListItem(QString icon, QString text);
    void SetItemLayoutMargins(QGridLayout& layout);
    /// Makes row `index` of the application list the current one.
    void InitDefaultAppUi(int index) const;

public slots:
    /// Shows the page of row `index` and returns all pages to their first view. Ignores -1, which means no
    /// row.
    void ShowCurAppUi(int index);
    void ShowExitWin();
    void ShowAboutWin();
    /// Returns from the about page to the last application page.
    void CloseAboutWin() const;
    /// Ends the program: stops all children, which can block for 3 s each, quits the event loop and calls
    /// exitHook.
    void ExitVeloWin() const;
    /// The session manager asks to save data: from now on, a close event closes the window.
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
    /// Call it before the pages are added to the card: each style sheet styles all widgets below it again.
    void StyleCard();
    void ApplyShadowLook(const QRect& area);
    void ApplyPlainLook(const QRect& area);
    void ApplyMenuShadowLook();
    /// Replaces the exit question by a new one. Returns false if there is no memory for it.
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
    /// Called when the user quits, after the children are stopped. Empty until main() sets it.
    std::function<void()> exitHook;
};
