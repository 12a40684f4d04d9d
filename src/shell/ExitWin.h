#pragma once

#include <QWidget>
#include <memory>

#include "shell/CardWindow.h"

class Ui_ExitWin;

/// The question before the program ends. VeloWin owns it and constructs a new one for each request. `parent`
/// must be a VeloWin; the signal CloseVeloApp() calls its ExitVeloWin(). Closing the question only hides it.
/// Main thread only.
class ExitWin : public CardWindow<QWidget>
{
    Q_OBJECT

public:
    explicit ExitWin(QWidget* parent);
    ~ExitWin() override;

    /// Performs the layout without showing the window, so that the card has its final size.
    void UpdateLayout();
    /// With shadow: centres the card, by its own size, in `area` (global pixels).
    void SetAdjustShadow(const QRect& area);

signals:
    /// The user wants the program to end.
    void CloseVeloApp();

public slots:
    void CancelExitWin();
    void CloseExitWin();
    void QuitExitWin();

private:
    void InitConnect() const;
    void ApplyShadowLook(const QRect& area);
    void ApplyPlainLook(const QRect& area);

    std::unique_ptr<Ui_ExitWin> ui;
};
