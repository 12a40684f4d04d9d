#pragma once

#include <QJsonObject>
#include <QList>
#include <QString>

/// How the figure of one row was in one run and is in another.
struct Change
{
    QString name;
    double before = 0.0;
    double after = 0.0;
    /// How far apart two runs of the same program may lie by chance.
    double noise = 0.0;

    bool IsBeyondNoise() const;
};

/// Of each row that both runs have; each run as Report::Save() writes it. What the noise is, the samples of
/// the runs themselves say: the figure is taken again and again of rounds drawn from them by lot, and may
/// differ by three times as much as those do. The same lots are drawn for the same runs.
QList<Change> Compare(const QJsonObject& before, const QJsonObject& after);
