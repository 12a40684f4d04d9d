#pragma once

#include <QString>

#include "Samples.h"

/// One line of the table: our program, the baseline and the limit.
struct Row
{
    enum Kind
    {
        RATIO_AT_MOST,
        RATIO_AT_LEAST,
        /// The limit is the difference between our median and the baseline's, in the row's unit.
        MORE_AT_MOST,
        /// The limit applies to our 99th percentile, in the row's unit.
        P99_BELOW
    };

    QString name;
    QString unit;
    QString baselineName;
    Samples ours;
    Samples baseline;
    Kind kind = RATIO_AT_MOST;
    double limit = 0.0;

    /// Returns the value to which the limit applies.
    double Figure() const;
    bool IsMet() const;
};

/// Prints the table. Each row is printed as soon as it is measured.
class Report
{
public:
    void Add(const Row& row);
    int Missed() const { return missed; }

private:
    bool hasHeading = false;
    int missed = 0;
};
