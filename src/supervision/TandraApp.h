#pragma once

#include "supervision/BaseApp.h"

/// The cast engine. Use it as Singleton<TandraApp>, which owns it, on the main thread. The constructor sets
/// the engine's program and argument and starts its status server, but does not start the engine.
class TandraApp : public BaseApp
{
    Q_OBJECT

public:
    TandraApp();

    /// Forwards the status "run" only while an engine process runs, because any program can connect to the
    /// socket.
    void EventRunning() override;
};
