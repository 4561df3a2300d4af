#include "Platform/Qt/Tray/MenuPlace.h"

#include <algorithm>

namespace Platform {

QPoint menuPlace(QPoint pointer, const QRect& icon, const QSize& menu, const QRect& screen, const QRect& free)
{
    // Where there is no room below or to the right, Qt opens the menu on the other side of the place.
    if (!icon.contains(pointer))
        return {std::clamp(pointer.x(), free.left(), free.right()), std::clamp(pointer.y(), free.top(), free.bottom())};
    const int below = icon.bottom() + 1;
    const bool fitsBelow = below + menu.height() <= screen.bottom() + 1;
    return {pointer.x(), fitsBelow ? below : icon.top() - menu.height()};
}

}  // namespace Platform
