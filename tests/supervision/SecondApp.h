#pragma once

#include "supervision/BaseApp.h"

/// Another supervised program, which ignores the termination request for a while.
class SecondApp : public BaseApp
{
public:
    SecondApp() : BaseApp(GetConstant(Velodesk::DATA_DIR) + "SecondIpc")
    {
        program = QStringLiteral("/bin/sh");
        arguments = QStringList{QStringLiteral("-c"), QStringLiteral("exec sleep 60")};
    }
};
