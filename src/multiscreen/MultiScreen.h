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
/// VeloWin owns it. It asks AppManager to start and stop the cast engine. Whether it shows a cast depends
/// only on AppManager's signals; a click on the start button does not change it. Main thread only.
class MultiScreen : public QWidget
{
    Q_OBJECT

public:
    explicit MultiScreen(QWidget* parent);
    ~MultiScreen() override;

    /// Shows that a cast runs, or that none runs. The text of the start button stores this state; no member
    /// does.
    void SetPreScreenStatus(bool casting);
    /// Reads the settings file and shows the settings.
    void ShowSetView();
    /// Returns true if the absolute path `path` or one of its parent directories is a symbolic link.
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
    /// Cuts the device name in the field to 15 bytes, and sets the width of the field to that of `text`.
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
    /// Asks the user. If the user agrees, erases the engine's trust files and sets the number of trusted
    /// phones to 0.
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
    /// Returns the folder for received files (local 8-bit). If none is stored, stores the user's desktop
    /// folder first.
    std::string SavePathOrDesktop();
    /// Returns an empty text if `folder` can be the folder for received files. Otherwise, returns the message
    /// for the user and logs the reason.
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
