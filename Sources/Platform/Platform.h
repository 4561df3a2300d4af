// Everything that the program's logic asks of the system it runs on: one plain
// struct of references. main() and App choose the implementations; the rest of the
// program knows only these interfaces.
#pragma once

#include "Platform/Application.h"
#include "Platform/HotKeyCenter.h"
#include "Platform/KeyboardLayout.h"
#include "Platform/MainLoop.h"
#include "Platform/NotificationCenter.h"
#include "Platform/OverlayWindow.h"
#include "Platform/Pointer.h"
#include "Platform/ScreenCapture.h"
#include "Platform/Screens.h"
#include "Platform/SerialQueue.h"
#include "Platform/StatusBar.h"
#include "Platform/UserDefaults.h"

namespace Platform {

struct System {
    MainLoop& mainLoop;
    SerialQueues& serialQueues;
    Screens& screens;
    Pointer& pointer;
    Cursor& cursor;
    ScreenCapture& screenCapture;
    OverlayWindows& overlayWindows;
    HotKeyCenter& hotKeys;
    KeyboardLayout& keyboardLayout;
    ReservedShortcuts& reservedShortcuts;
    UserDefaults& userDefaults;
    NotificationCenter& notifications;
    StatusBar& statusBar;
    Application& application;
};

}  // namespace Platform
