#pragma once

namespace Brevora {

/// Corrects what this process inherits from the program that started it: descriptors, the signal mask and
/// ignored signals. Main thread only. Neither operation reports a failure.
namespace InheritedState {
/// If descriptor 0, 1 or 2 is closed, opens it on the null device. Calls KeepDescriptorsFromChildren(),
/// unblocks all signals, and restores the default action of ignored ones. Call it before the first file is
/// opened; otherwise that file could become descriptor 0, 1 or 2.
void Reset();

/// Sets the close-on-exec flag of all descriptors except 0, 1 and 2, including those that libraries opened
/// without the flag.
void KeepDescriptorsFromChildren();
} // namespace InheritedState

} // namespace Brevora
