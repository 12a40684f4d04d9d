#pragma once

#include <QStringList>

/// Every line that our code hands to the log while the object lives, those too that the log drops. One at a
/// time; link with velodesk_everyline.
class EveryLine
{
public:
    EveryLine();
    ~EveryLine();
    EveryLine(const EveryLine&) = delete;
    EveryLine& operator=(const EveryLine&) = delete;

    /// The lines since the last call, each as "LEVEL TAG message".
    QStringList Take() const;
};
