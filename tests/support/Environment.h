#pragma once

#include <QByteArray>
#include <QtGlobal>

/// One variable of the environment, for as long as the object lives; a null value takes it away.
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
