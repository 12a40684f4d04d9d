#pragma once

namespace Brevora {

/// What a process inherits from the program that started it: descriptors, signal mask and signal handlers.
/// Main thread only; neither operation reports a failure.
namespace InheritedState {
/// Makes the inherited state what a program started from a shell has: descriptors 0, 1 and 2 are open (on the
/// null device if they were closed), no signal is blocked or ignored, and children inherit no other
/// descriptor. Call before the first file is opened: it would get the number of a missing descriptor.
void Reset();

/// Marks all descriptors but 0, 1 and 2 close-on-exec, also those that libraries opened without the mark.
void KeepDescriptorsFromChildren();
} // namespace InheritedState

} // namespace Brevora
