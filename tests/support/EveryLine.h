#pragma once

#include <QStringList>

/// Records every line that our code passes to the log while the object exists, including lines that the log
/// drops. Only one object may exist at a time. The test must link velodesk_everyline.
class EveryLine
{
public:
    EveryLine();
    ~EveryLine();
    EveryLine(const EveryLine&) = delete;
    EveryLine& operator=(const EveryLine&) = delete;

    /// Returns the lines since the last call, each as "LEVEL TAG message".
    QStringList Take() const;
};
