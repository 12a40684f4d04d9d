#pragma once

/// Ends the program in order on SIGTERM, SIGINT and SIGHUP. Main thread only.
namespace TerminationSignals {
/// From now on the first of these signals makes all event loops return, those of dialogs too; a second one
/// has its default effect. Once, after the QApplication is constructed.
void QuitEventLoop();

/// True once one of the signals has arrived.
bool HaveArrived();
} // namespace TerminationSignals
