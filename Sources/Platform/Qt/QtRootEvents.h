// What Qt's own connection hears of the root window. Main thread only.
#pragma once

namespace Platform {

// Qt listens to every property of the root window and to the pointer there. Window managers
// change such properties whenever any window opens, closes or gets the focus, and each
// change wakes two threads of a program that has nothing to do. Nothing of ours needs them
// while none of its ordinary windows is open, but for the size of the screen, which stays.
// Needs a QGuiApplication; does nothing where it does not run on X11.
void ignoreOtherWindowsOnRoot();

}  // namespace Platform
