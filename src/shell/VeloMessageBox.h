#pragma once

#include <QDialog>
#include <QString>
#include <memory>

#include "shell/CardWindow.h"

class Ui_VeloMessageBox;

/// The program's own modal message box: a close button, an optional warning mark, two text lines, one or two
/// buttons.
///
/// The caller owns it on the stack, sets its texts and calls exec(). The signals report the answer; the
/// result of exec() does not. Without a parent, the box is centred on the primary screen. Otherwise, the
/// parent must be a page of the main window, and the box is centred on that window. Main thread only.
class VeloMessageBox : public CardWindow<QDialog>
{
    Q_OBJECT

public:
    explicit VeloMessageBox(QWidget* parent);
    ~VeloMessageBox() override;

    /// Sets `first` on the left button and `second` on the right one. If `second` is empty, only the right
    /// button is shown, with the text `first`.
    void SetBtnText(const QString& first, const QString& second) const;
    /// Sets `right` on the right button and `left` on the left one, which is hidden if `left` is empty.
    void SetRightBtnText(const QString& right, const QString& left) const;
    /// Sets the message: the text before the first line feed is the headline, the rest is shown below it.
    /// Lines do not wrap.
    void SetMessageText(const QString& text) const;
    /// Shows the warning mark.
    void SetWarning();
    /// Returns the number of boxes that exist. A caller can avoid opening a second one.
    static int GetWindCount();
    /// Sets the font family of the box and a letter spacing in pixels on `widget`. Ignores a null pointer.
    void SetDefaultTextFont(QWidget* widget, int spacing) const;

signals:
    /// Emitted while the box is still open.
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
