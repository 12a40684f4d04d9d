#pragma once

#include "supervision/BaseApp.h"

/// The cast engine: its program, argument and socket. Use it as Singleton<TandraApp>. Constructing it does
/// not start the engine.
class TandraApp : public BaseApp
{
    Q_OBJECT

public:
    TandraApp();

    /// Forwards the status "run" only while an engine process runs, because any program can connect to the
    /// socket.
    void EventRunning() override;
};
