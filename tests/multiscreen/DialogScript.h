#pragma once

#include <QDialog>
#include <QPointer>
#include <QTest>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include "support/ModalActor.h"

/// Runs one step on each modal dialog that is shown. Closes dialogs for which no step is left and dialogs
/// whose step failed, so that no test blocks.
class DialogScript
{
public:
    explicit DialogScript(std::vector<std::function<void(QWidget*)>> dialogSteps)
        : steps(std::move(dialogSteps))
    {
        Await();
    }
    DialogScript(const DialogScript&) = delete;
    DialogScript& operator=(const DialogScript&) = delete;

    /// Returns the number of dialogs that were shown.
    int Shown() const { return shown; }
    /// Returns whether each step ran and no other dialog was shown.
    bool IsComplete() const { return shown == static_cast<int>(steps.size()); }

private:
    void Await()
    {
        actors.push_back(std::make_unique<ModalActor>([this](QWidget* dialog) {
            const auto number = static_cast<std::size_t>(shown);
            ++shown;
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
    int shown = 0;
};
