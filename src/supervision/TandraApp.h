#pragma once

#include "supervision/BaseApp.h"

/// The cast engine: which program, with which argument, on which socket. Reached as Singleton<TandraApp>; the
/// engine is not started by constructing this.
class TandraApp : public BaseApp
{
    Q_OBJECT

public:
    TandraApp();

    /// Passes the report "run" on only while an engine process of ours lives: anybody can connect to the
    /// socket.
    void EventRunning() override;
};
