// Where the menu of an icon opens: beside the icon and its panel, so that a second click on
// the icon is one outside the menu, and so that the pointer is over no entry yet.
#pragma once

#include <QRect>

namespace Platform {

// For QMenu::popup(), all in its coordinates. `icon` is empty where the desktop does not
// tell its place; the pointer is over it anyway. `free` is the screen without its panels.
QPoint menuPlace(QPoint pointer, const QRect& icon, const QSize& menu, const QRect& screen, const QRect& free);

}  // namespace Platform
