#pragma once

#include <QFont>
#include <QProcess>
#include <QString>
#include <QWidget>
#include <memory>

#include "shell/SerProEdit.h"
#include "supervision/AppManager.h"

class Ui_MultiScreen;

/// The main page: cast control, device name, settings, trusted devices and help, in one stack of views.
///
/// VeloWin owns it. It asks AppManager to start and stop the cast engine and learns only from AppManager's
/// signals what came of it: a click never changes the display. Interface thread only.
class MultiScreen : public QWidget
{
    Q_OBJECT

public:
    explicit MultiScreen(QWidget* parent);
    ~MultiScreen() override;

    /// Shows the casting or the idle state. The start button's text is the state; there is no other.
    void SetPreScreenStatus(bool casting);
    /// Shows the settings as they stand in the settings file at this moment.
    void ShowSetView();
    /// True if `path`, an absolute path, or one of its ancestors is a symbolic link.
    bool PathHasLink(QString path);
    /// Puts the help view into `frame` and loads the document `resource` anew.
    void InitHtmlContent(QWidget* frame, QString resource);
    /// A font with the family, pixel size, weight and letters `spacing` pixels apart.
    QFont FontStyle(QString family, int pixelSize, int weight, double spacing) const;

public slots:
    void ClickPreScreenBtn();
    void ClickNameEditBtn();
    /// Shows the help menu.
    void ClickHelpBtn() const;
    /// Ends an edit of the device name: centres the row and stores the name, whether it has changed or not.
    void ComputerNameEditEditingFinished();
    /// Cuts an over-long device name and fits the field to `text`.
    void ComputerNameTextEdited(const QString& text);
    void BackToMainScreen() const;
    void ClickNewHandBtn();
    void ClickCommonProblemBtn();
    void ClickNewHandReturnBtn() const;
    void ClickProblemReturnBtn() const;
    void ClickNewHandTextBtn();
    void ClickCommonProTextBtn();
    void ProcessStarted(AppManager::AppType type) const;
    void ProcessFinished(AppManager::AppType type, int exitCode);
    void ProcessAppError(AppManager::AppType type, QProcess::ProcessError err);
    void ProcessEvent(AppManager::AppType type, AppManager::AppEventType event);
    /// Asks, then erases the engine's trust files and sets the count of trusted phones to zero.
    void ClearTrustDevices();
    void TrustOK();
    /// Lets the user choose the folder for received files until a usable one is chosen or the dialog is
    /// cancelled.
    void ChangePath();
    void SetHelpPageBtn();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void InitScreenPage();
    void InitInputBoxPara();
    void InitScreenConnection() const;
    void InitFonts();
    void LoadDeviceName();
    /// Records the user's desktop as the save path where none is stored, and gives the path, local 8-bit.
    std::string SavePathOrDesktop();
    /// Why a folder (local 8-bit) cannot be taken, as the text to show; empty if it can.
    QString FolderFault(const QString& folder);
    /// Width in pixels that the name field takes for `text`.
    int NameWidth(const QString& text) const;

    std::unique_ptr<Ui_MultiScreen> ui;
    SerProEdit helpView;
    QString currentName;
    QString fontFamily;
    bool nameEditing = false;
    bool trustConfirmed = false;
};
