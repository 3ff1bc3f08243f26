#pragma once

namespace pellow {

// Shows screen readers the views of panels that have an accessible name: a panel is a toolbar, a
// clickable view a button in it. Call once, before the first panel.
void installPanelAccessibility();

}  // namespace pellow
