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
/// main() owns it, and calls SetAppObj() and sets exitHook before the event loop runs. The window owns its
/// pages and the current ExitWin. A user can close it only by a confirmation of the exit question. The end of
/// the desktop session closes it without a confirmation. Main thread only.
class VeloWin : public CardWindow<QWidget>
{
    Q_OBJECT

public:
    explicit VeloWin(QWidget* parent);
    ~VeloWin() override;

    /// Connects the window to the end of the desktop session (XSMP), which then closes it. Call it once,
    /// before the event loop runs. The caller owns `app`.
    void SetAppObj(QApplication& app);
    /// Appends a row to the application list. `icon` is the resource path of an image. If there is no memory,
    /// logs an error and adds no row.
    void AddAppListItem(QString icon, QString text);
    /// Sets the margins of a row of the application list.
    void SetItemLayoutMargins(QGridLayout& layout);
    /// Makes row `index` of the application list the current one.
    void InitDefaultAppUi(int index) const;

public slots:
    /// Shows the page of row `index` and the first view of each page. If `index` is -1, no row is current,
    /// and nothing changes.
    void ShowCurAppUi(int index);
    void ShowExitWin();
    void ShowAboutWin();
    /// Returns from the about page to the last application page.
    void CloseAboutWin() const;
    /// Stops all children, which can block for 3000 ms per child, ends the event loop and calls exitHook.
    void ExitVeloWin() const;
    /// Handles the session manager's request to save data, before the session ends. Close events after it
    /// close the window.
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
    /// Sets the style sheets of the card. Call it before the pages are added to the card, because each new
    /// style sheet is also applied to all widgets on the card, which takes time.
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
    /// ExitVeloWin() calls it after it has stopped the children. Empty until main() sets it.
    std::function<void()> exitHook;
};
