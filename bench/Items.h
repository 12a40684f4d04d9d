#pragma once

#include <QStringList>
#include <functional>

#include "Report.h"

/// The number of rounds. Each round takes one sample of our program and one of the baseline.
struct Effort
{
    bool quick = false;

    int Rounds(int thorough) const { return quick ? qMax(2, thorough / 10) : thorough; }
};

/// A measurement, with its name on the command line.
struct Item
{
    const char* name;
    void (*measure)(Report& report, const Effort& effort);
};

void MeasureStart(Report& report, const Effort& effort);
/// Measures the start while two other processes use the processors all the time.
void MeasureBusyStart(Report& report, const Effort& effort);
void MeasureMemory(Report& report, const Effort& effort);
void MeasureCast(Report& report, const Effort& effort);
void MeasureIdle(Report& report, const Effort& effort);
void MeasureQuit(Report& report, const Effort& effort);
void MeasureLog(Report& report, const Effort& effort);
void MeasureRotation(Report& report, const Effort& effort);
void MeasureSettings(Report& report, const Effort& effort);
void MeasureErase(Report& report, const Effort& effort);

/// Returns the path of a program of this build.
inline QString BuiltProgram(const char* name)
{
    return QStringLiteral(VELODESK_BINARY_DIR "/") + QLatin1String(name);
}
