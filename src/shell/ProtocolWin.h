#pragma once

#include <QFont>
#include <QString>
#include <QWidget>
#include <functional>
#include <memory>

#include "shell/CardWindow.h"
#include "shell/SerProEdit.h"

class Ui_ProtocolWin;

/// The first-run window with the user agreement. main() owns it, constructs it in every run, and shows it if
/// the agreement was never accepted. Main thread only.
class ProtocolWin : public CardWindow<QWidget>
{
    Q_OBJECT

public:
    explicit ProtocolWin(QWidget* parent);
    ~ProtocolWin() override;

    /// Returns true if the user has pressed the start button in this run, even if the settings file could not
    /// be written.
    bool IsReadStatement();
    /// Leaves without accepting: calls exitHook, then closes the window. A close request of the window
    /// manager does not call this.
    void Exit();
    /// Returns a font with the family, pixel size and weight, and with a letter spacing of 1 pixel.
    QFont FontStyle(QString family, int pixelSize, int weight) const;

public slots:
    /// Ticks or unticks the agreement. The start button is enabled while the agreement is ticked; this is the
    /// only place where the state is stored.
    void ClickAgreeBtn();
    /// Stores the acceptance and closes the window.
    void ClickBeginBtn();

private:
    void InitProtocolDialogPage();
    void InitProtocolDialogConnection() const;
    /// Sets the style sheets of the card. Call it before widgets are added to the card, because each new
    /// style sheet is also applied to all widgets on the card, which takes time.
    void StyleCard();
    void ApplyShadowLook(const QRect& area);
    void ApplyPlainLook(const QRect& area);

    std::unique_ptr<Ui_ProtocolWin> ui;
    SerProEdit serProEdit;
    bool statementRead = false;

public:
    /// Exit() calls it. Empty until main() sets it.
    std::function<void()> exitHook;
};
