#pragma once

// <xcb/xkb.h> is C: it has members named `explicit`. Everything that it includes comes first, so
// that the name means something else to nobody but it.
#include <xcb/xcb.h>
#define explicit explicit_
#include <xcb/xkb.h>
#undef explicit
