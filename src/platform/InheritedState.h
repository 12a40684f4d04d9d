#pragma once

namespace Brevora {

/// Controls what a process inherits from its parent: descriptors, signal mask and ignored signals.
/// Main thread only; neither operation reports a failure.
namespace InheritedState {
/// Resets the inherited state to that of a program started by a shell. Opens descriptors 0, 1 and 2 on the
/// null device if they are closed, unblocks all signals, restores the default effect of ignored signals, and
/// marks all other descriptors close-on-exec. Call it before a file is opened, because that file would get
/// the number of a missing standard descriptor.
void Reset();

/// Marks all descriptors except 0, 1 and 2 close-on-exec, including those of libraries.
void KeepDescriptorsFromChildren();
} // namespace InheritedState

} // namespace Brevora
