#pragma once

#include "supervision/BaseApp.h"

/// An additional supervised program.
class ExtraApp : public BaseApp
{
public:
    ExtraApp() : BaseApp(GetConstant(Velodesk::DATA_DIR) + "ExtraIpc")
    {
        program = QStringLiteral("/bin/sh");
        arguments = QStringList{QStringLiteral("-c"), QStringLiteral("exec sleep 60")};
    }
};
