#pragma once

#include <QFont>
#include <QString>
#include <QWidget>
#include <functional>
#include <memory>

#include "shell/CardWindow.h"
#include "shell/SerProEdit.h"

class Ui_ProtocolWin;

/// The first-run window with the user agreement. main() builds one in every run, shows it while the agreement
/// was never accepted, and owns it. Interface thread only, before the supervised applications exist.
class ProtocolWin : public CardWindow<QWidget>
{
    Q_OBJECT

public:
    explicit ProtocolWin(QWidget* parent);
    ~ProtocolWin() override;

    /// True once the user has pressed the start button in this run, also if that could not be stored.
    bool IsReadStatement();
    /// Leaves without accepting: tells the daemon through exitHook, then closes. A close by the window
    /// manager does not come here.
    void Exit();
    /// A default font with the family, pixel size, weight and letters 1 pixel apart.
    QFont FontStyle(QString family, int pixelSize, int weight) const;

public slots:
    /// Ticks or unticks. Whether the start button is enabled is the state; there is no other.
    void ClickAgreeBtn();
    /// Stores the acceptance and closes.
    void ClickBeginBtn();

private:
    void InitProtocolDialogPage();
    void InitProtocolDialogConnection() const;
    /// Before there is more on the card: with each style sheet all that lies below is styled again.
    void StyleCard();
    void ApplyShadowLook(const QRect& area);
    void ApplyPlainLook(const QRect& area);

    std::unique_ptr<Ui_ProtocolWin> ui;
    SerProEdit serProEdit;
    bool statementRead = false;

public:
    /// Called by Exit(); empty until main() fills it.
    std::function<void()> exitHook;
};
