#pragma once

#include <QList>
#include <QStringList>

/// Programs for a supervised application.
namespace Children {
struct Child
{
    QString program;
    QStringList arguments;
};

inline Child Shell(const char* script)
{
    return {QStringLiteral("/bin/sh"), {QStringLiteral("-c"), QLatin1String(script)}};
}

/// Returns all programs. The last three end only after a signal, the others end soon.
inline QList<Child> All()
{
    return {
        Shell("exit 0"),
        Shell("exit 3"),
        Shell("kill -SEGV $$"),
        Shell("exec sleep 0.02"),
        Shell("trap '' TERM; exec sleep 0.2"),
        Shell("sleep 0.1 & exit 0"),
        Shell("head -c 100000 /dev/zero; exit 1"),
        {QStringLiteral("/nowhere/engine"), {}},
        {QString(), {}},
        {QStringLiteral("/"), {}},
        Shell("exec sleep 60"),
        Shell("exec >/dev/null 2>&1 </dev/null; exec sleep 60"),
        Shell("sleep 0.1 & trap 'exec >/dev/null 2>&1; sleep 0.1; exit 9' TERM; sleep 60 & wait"),
    };
}
} // namespace Children
