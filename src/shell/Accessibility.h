#pragma once

/// Corrects roles, states and actions that Qt reports wrongly to assistive technologies: those of windows, of
/// checkable buttons that act like plain ones, of the list row, which consists of widgets, and of the menu,
/// which Qt omits because it is a pop-up.
///
/// The forms define the accessible names of widgets without text (property accessibleName).
namespace Accessibility {
/// Installs the factory of the accessible objects. Call it once on the main thread, before the first window
/// is constructed. Qt calls the factory only while an assistive technology is active.
void Install();
} // namespace Accessibility
