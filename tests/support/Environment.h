#pragma once

#include <QByteArray>
#include <QtGlobal>

/// Sets an environment variable as long as the object exists. A null value removes the variable.
class Variable
{
public:
    Variable(const char* variable, const QByteArray& value)
        : name(variable), wasSet(qEnvironmentVariableIsSet(variable)), before(qgetenv(variable))
    {
        Set(!value.isNull(), value);
    }
    ~Variable() { Set(wasSet, before); }
    Variable(const Variable&) = delete;
    Variable& operator=(const Variable&) = delete;

private:
    void Set(bool isSet, const QByteArray& value) const
    {
        if (isSet) {
            qputenv(name, value);
        } else {
            qunsetenv(name);
        }
    }

    const char* name;
    bool wasSet;
    QByteArray before;
};
