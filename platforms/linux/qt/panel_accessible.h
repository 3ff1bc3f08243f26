#pragma once

namespace pellow {

// Shows the views of panels that have an accessible name to screen readers: a panel is a toolbar,
// a view that can be clicked a button in it. Once, before the first panel.
void installPanelAccessibility();

}  // namespace pellow
