#pragma once

#include <QDialog>
#include <QPointer>
#include <QTest>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include "support/ModalActor.h"

/// Plays its steps on the modal dialogs that come one after another, one step a dialog. A dialog that comes
/// after the last step, or whose step has failed, is closed, so that no test hangs on it.
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
            const QPointer<QDialog> open(static_cast<QDialog*>(dialog));
            if (number < steps.size()) {
                steps[number](dialog);
            }
            if (open != nullptr && (number >= steps.size() || QTest::currentTestFailed())) {
                open->reject();
            }
        }));
    }

    std::vector<std::function<void(QWidget*)>> steps;
    std::vector<std::unique_ptr<ModalActor>> actors;
    int seen = 0;
};
