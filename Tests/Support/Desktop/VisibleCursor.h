// A pointer's picture that a test finds without doubt in a picture of the screen: a square
// of one colour, its hot spot in the middle.
#pragma once

#include "Platform/Image.h"
#include "Platform/X11/Connection.h"

namespace TestSupport {

xcb_cursor_t makeVisibleCursor(const Platform::X11::Connection&);

// True when that square is there in full, its hot spot at the pixel.
bool showsVisibleCursor(const Platform::Image&, int x, int y);

// How many pixels of its colour there are in the whole picture.
long visibleCursorPixels(const Platform::Image&);

}  // namespace TestSupport
