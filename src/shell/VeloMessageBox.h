#pragma once

#include <QDialog>
#include <QString>
#include <memory>

#include "shell/CardWindow.h"

class Ui_VeloMessageBox;

/// The program's own modal message box: a close button, an optional warning mark, two text lines, one or two
/// buttons.
///
/// Made on the stack for one question, filled, run with exec() and left to die. The answer is told by the
/// signals alone, exec()'s result says nothing. Without a parent it centres on the primary screen, else over
/// the main window, of whose page stack the parent must be a page. Interface thread only.
class VeloMessageBox : public CardWindow<QDialog>
{
    Q_OBJECT

public:
    explicit VeloMessageBox(QWidget* parent);
    ~VeloMessageBox() override;

    /// `first` on the left button and `second` on the right one; with `second` empty there is only the right
    /// button, and it reads `first`.
    void SetBtnText(const QString& first, const QString& second) const;
    /// `right` on the right button, `left` on the left one, which is hidden for an empty text.
    void SetRightBtnText(const QString& right, const QString& left) const;
    /// The head line is what stands before the first line feed, the rest stands below it. Nothing wraps.
    void SetMessageText(const QString& text) const;
    /// Shows the warning mark.
    void SetWarning();
    /// How many boxes live at this moment: a caller can refuse to stack a second one.
    static int GetWindCount();
    /// The family of all texts of the box, with letters `spacing` pixels apart; null is harmless.
    void SetDefaultTextFont(QWidget* widget, int spacing) const;

signals:
    /// Sent while the box is still open.
    void SignalLeftBtnClick();
    void SignalRightBtnClick();

private slots:
    void SlotButtonEvent();

private:
    void InitConnection() const;
    void ApplyShadowLook(const QRect& area);
    void ApplyPlainLook(const QRect& area);

    static int windCount;

    std::unique_ptr<Ui_VeloMessageBox> ui;
    bool warningShown = false;
};
