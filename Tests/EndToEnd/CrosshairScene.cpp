#include "EndToEnd/CrosshairScene.h"

#include <linux/input-event-codes.h>

#include "EndToEnd/ExpectedScreen.h"

namespace TestSupport {

void CrosshairScene::pressShortcut() { desktop().keyboard().chord({KEY_LEFTMETA, KEY_LEFTALT, KEY_X}); }

testing::AssertionResult CrosshairScene::showsCrosshairAt(int x, int y) { return withKeys(shows(withCrosshair(beneath(), x, y))); }

}  // namespace TestSupport
