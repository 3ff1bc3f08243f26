#pragma once

#include "base/geometry.h"
#include "platform/view.h"
#include "strips/strip_entry.h"
#include "strips/strip_layout.h"

namespace pellow {

// A tab: the application's icon, or the picture of the window with the icon on it where tabs show
// pictures and there is one. With a title beside it, a pin in the top left corner and a count in
// the top right one, if the entry asks for them.
View tabItemView(const StripEntry& entry, const StripLayout& layout, bool pictureTabs);

}  // namespace pellow
