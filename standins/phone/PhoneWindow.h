#pragma once

#include <QWidget>
#include <memory>

namespace Ui {
class PhoneWindow;
}

/// The window that shows the image of a phone while the stand-in engine casts.
class PhoneWindow : public QWidget
{
    Q_OBJECT

public:
    /// Places the window at the left of the screen, beside the assistant.
    PhoneWindow();
    ~PhoneWindow() override;

private:
    std::unique_ptr<Ui::PhoneWindow> form;
};
