#pragma once

#include <QWidget>
#include <memory>

namespace Ui {
class PhoneWindow;
}

/// What a newcomer sees in place of the phone's screen while the stand-in engine casts.
class PhoneWindow : public QWidget
{
    Q_OBJECT

public:
    /// At the left of the screen, beside the assistant.
    PhoneWindow();
    ~PhoneWindow() override;

private:
    std::unique_ptr<Ui::PhoneWindow> form;
};
