#pragma once

#include <QString>

#include "Samples.h"

/// One line of the table: ours beside the baseline, and its limit.
struct Row
{
    enum Kind
    {
        RATIO_AT_MOST,
        RATIO_AT_LEAST,
        /// Ours may take so much more than the baseline, in the row's unit.
        MORE_AT_MOST,
        /// Of 99 in 100 of ours, in the row's unit.
        P99_BELOW
    };

    QString name;
    QString unit;
    QString baselineName;
    Samples ours;
    Samples baseline;
    Kind kind = RATIO_AT_MOST;
    double limit = 0.0;

    /// What the limit applies to.
    double Figure() const;
    bool IsMet() const;
};

/// The table: a line for each row as soon as it is measured.
class Report
{
public:
    void Add(const Row& row);
    int Missed() const { return missed; }

private:
    bool hasHeading = false;
    int missed = 0;
};
