#pragma once

/// Corrects the accessible roles, states and actions that Qt reports for windows, for checkable buttons that
/// act like ordinary ones, for the list row, and for the menu, which Qt omits because it is a pop-up.
///
/// The Designer forms contain the names of widgets without text (accessibleName).
namespace Accessibility {
/// Installs the factory. Call it once on the main thread, before the first window is constructed. It has
/// no effect until assistive technology is active.
void Install();
} // namespace Accessibility
