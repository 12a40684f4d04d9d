#pragma once

#include <QDialog>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include "support/ModalActor.h"

/// Plays its steps on the modal dialogs that come one after another, one step a dialog. A dialog that comes
/// after the last step is closed and counted, so that no test hangs on it.
class DialogScript
{
public:
    explicit DialogScript(std::vector<std::function<void(QWidget*)>> wanted) : steps(std::move(wanted))
    {
        Await();
    }
    DialogScript(const DialogScript&) = delete;
    DialogScript& operator=(const DialogScript&) = delete;

    /// How many dialogs have come.
    int Seen() const { return seen; }
    /// Whether each step had its dialog and no other dialog came.
    bool IsPlayedOut() const { return seen == static_cast<int>(steps.size()); }

private:
    void Await()
    {
        actors.push_back(std::make_unique<ModalActor>([this](QWidget* dialog) {
            const auto number = static_cast<std::size_t>(seen);
            ++seen;
            Await();
            if (number < steps.size()) {
                steps[number](dialog);
            } else {
                static_cast<QDialog*>(dialog)->reject();
            }
        }));
    }

    std::vector<std::function<void(QWidget*)>> steps;
    std::vector<std::unique_ptr<ModalActor>> actors;
    int seen = 0;
};
