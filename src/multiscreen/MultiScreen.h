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
/// VeloWin owns it. It asks AppManager to start and stop the cast engine. Only AppManager's signals change
/// what the page shows, never a click. Interface thread only.
class MultiScreen : public QWidget
{
    Q_OBJECT

public:
    explicit MultiScreen(QWidget* parent);
    ~MultiScreen() override;

    /// Shows the casting or the idle state. The text of the start button is the state; there is no other.
    void SetPreScreenStatus(bool casting);
    /// Shows the settings, which it reads from the settings file.
    void ShowSetView();
    /// True if `path`, an absolute path, or one of its ancestors is a symbolic link.
    bool PathHasLink(QString path);
    /// Moves the help view into `frame` and loads the document `resource`.
    void InitHtmlContent(QWidget* frame, QString resource);
    /// Returns a font with the family, pixel size and weight, and with a letter spacing of `spacing` pixels.
    QFont FontStyle(QString family, int pixelSize, int weight, double spacing) const;

public slots:
    void ClickPreScreenBtn();
    void ClickNameEditBtn();
    /// Shows the help menu.
    void ClickHelpBtn() const;
    /// Ends an edit of the device name: centres the row and stores the name, even if it has not changed.
    void ComputerNameEditEditingFinished();
    /// Cuts a device name that is too long, and fits the width of the field to `text`.
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
    /// Asks for the folder for received files until the user chooses a usable one or cancels the dialog.
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
    /// Returns the save path (local 8-bit). If none is stored, it stores the user's desktop folder first.
    std::string SavePathOrDesktop();
    /// Returns why a folder cannot be the save path, as the text to show; empty if it can.
    QString FolderFault(const QString& folder);
    /// Returns the width in pixels of the name field for `text`.
    int NameWidth(const QString& text) const;

    std::unique_ptr<Ui_MultiScreen> ui;
    SerProEdit helpView;
    QString currentName;
    QString fontFamily;
    bool nameEditing = false;
    bool trustConfirmed = false;
};
