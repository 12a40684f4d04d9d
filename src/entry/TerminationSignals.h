#pragma once

/// Ends the program in order on SIGTERM, SIGINT and SIGHUP. Main thread only.
namespace TerminationSignals {
/// Installs the handlers. The first signal makes all event loops return, also those of dialogs; a second one
/// has its default effect. Call it once, after the QApplication is constructed.
void QuitEventLoop();

/// True once one of the signals has arrived.
bool HaveArrived();
} // namespace TerminationSignals
