#pragma once

#include <QStringList>
#include <functional>

#include "Report.h"

/// How often an item is measured: the samples of ours and of the baseline are taken in turn, one of each a
/// round.
struct Effort
{
    bool quick = false;

    int Rounds(int thorough) const { return quick ? qMax(2, thorough / 10) : thorough; }
};

/// One thing that can be measured by itself, by its name on the command line.
struct Item
{
    const char* name;
    void (*measure)(Report& report, const Effort& effort);
};

void MeasureStart(Report& report, const Effort& effort);
/// The same beside two processes that never rest.
void MeasureBusyStart(Report& report, const Effort& effort);
void MeasureMemory(Report& report, const Effort& effort);
void MeasureCast(Report& report, const Effort& effort);
void MeasureIdle(Report& report, const Effort& effort);
void MeasureQuit(Report& report, const Effort& effort);
void MeasureLog(Report& report, const Effort& effort);
void MeasureRotation(Report& report, const Effort& effort);
void MeasureSettings(Report& report, const Effort& effort);
void MeasureErase(Report& report, const Effort& effort);

/// The path of a program of this build.
inline QString BuiltProgram(const char* name)
{
    return QStringLiteral(VELODESK_BINARY_DIR "/") + QLatin1String(name);
}
