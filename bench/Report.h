#pragma once

#include <QList>
#include <QString>

#include "Samples.h"

/// One line of the table: ours beside the baseline, and what is to be reached.
struct Row
{
    enum Aim
    {
        RATIO_AT_MOST,
        RATIO_AT_LEAST,
        /// Ours may take so much more than the baseline, in the row's unit.
        MORE_AT_MOST,
        /// Of 99 in 100 of ours, in the row's unit.
        P99_BELOW,
        /// For comparison only.
        NONE
    };

    QString name;
    QString unit;
    QString baselineName;
    Samples ours;
    Samples baseline;
    Aim aim = NONE;
    double limit = 0.0;

    /// The figure that is held against the limit.
    double Figure() const;
    bool IsMet() const;
};

/// The table for people and the samples for programs.
class Report
{
public:
    void Add(const Row& row);

    /// Prints the line of the row, below a heading where it is the first.
    void Print(const Row& row);
    /// False if the file could not be written.
    bool Save(const QString& path) const;
    int Missed() const;

private:
    QList<Row> rows;
};
