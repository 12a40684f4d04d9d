#pragma once

#include <QWidget>
#include <memory>

#include "shell/CardWindow.h"

class Ui_ExitWin;

/// The question before the program ends. It stops nothing itself: CloseVeloApp reaches VeloWin::ExitVeloWin
/// of the parent. VeloWin makes a new one for each request; a closed one only hides. Interface thread only.
class ExitWin : public CardWindow<QWidget>
{
    Q_OBJECT

public:
    explicit ExitWin(QWidget* parent);
    ~ExitWin() override;

    /// Runs the layout once, unseen, so that the card has its real size.
    void UpdateLayout();
    /// The look with shadow: centres the card, by its own size, in `area` (global pixels).
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
