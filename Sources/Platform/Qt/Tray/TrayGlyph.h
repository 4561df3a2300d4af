// The program's picture in trays: a plus in the four corners of a viewfinder.
#pragma once

#include <QIcon>
#include <QImage>

namespace Platform {

// White with a dark outline, because a program cannot learn the colour of the panel that it
// is shown on: the one reads on dark panels, the other on light ones. All edges lie on whole
// pixels, so it is sharp at every size. `size` is at least 16, in device pixels.
QImage trayGlyphImage(int size);

// At the sizes that panels ask for, the largest for four device pixels per point.
QIcon trayGlyphIcon();

}  // namespace Platform
