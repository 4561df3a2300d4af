// The whole system as a recording fake: every interface of the seam, one shared log.
#pragma once

#include "Platform/Platform.h"
#include "Support/CallLog.h"
#include "Support/FakeApplication.h"
#include "Support/FakeHotKeyCenter.h"
#include "Support/FakeKeyboardLayout.h"
#include "Support/FakeMainLoop.h"
#include "Support/FakeOverlayWindows.h"
#include "Support/FakePointer.h"
#include "Support/FakeScreenCapture.h"
#include "Support/FakeScreens.h"
#include "Support/FakeSerialQueues.h"
#include "Support/FakeShapePainter.h"
#include "Support/FakeStatusBar.h"
#include "Support/FakeUserDefaults.h"

namespace TestSupport {

struct FakeSystem {
    CallLog log;
    FakeMainLoop mainLoop{log};
    FakeSerialQueues serialQueues{log};
    FakeScreens screens{log};
    FakePointer pointer{log};
    FakeCursor cursor{log};
    FakeScreenCapture screenCapture{log};
    FakeOverlayWindows overlayWindows{log};
    FakeHotKeyCenter hotKeys{log};
    FakeKeyboardLayout keyboardLayout{log};
    FakeReservedShortcuts reservedShortcuts{log};
    FakeUserDefaults userDefaults{log};
    Platform::NotificationCenter notifications;
    FakeStatusBar statusBar{log};
    FakeApplication application{log};
    FakeShapePainter shapePainter{log};

    Platform::System system{mainLoop, serialQueues, screens, pointer, cursor, screenCapture, overlayWindows, hotKeys, keyboardLayout,
        reservedShortcuts, userDefaults, notifications, statusBar, application};
};

}  // namespace TestSupport
