#pragma once

/// Accessible roles, states and actions where Qt's own are wrong: windows, checkable buttons that act like
/// plain ones, the list row made of widgets, and the menu, which Qt omits because it is a pop-up.
///
/// Names that are not a text of the widget are in the Designer forms (accessibleName).
namespace Accessibility {
/// Installs the factory. Call it once on the main thread, before the first window is constructed. It costs
/// nothing until assistive technology is active.
void Install();
} // namespace Accessibility
