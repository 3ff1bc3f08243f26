#pragma once

// <xcb/xkb.h> is C and has members named `explicit`. What it includes comes first, so that the name
// changes its meaning for nothing else.
#include <xcb/xcb.h>

#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Wkeyword-macro"
#define explicit explicit_
#include <xcb/xkb.h>
#undef explicit
#pragma clang diagnostic pop
