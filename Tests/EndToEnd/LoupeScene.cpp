#include "EndToEnd/LoupeScene.h"

#include <linux/input-event-codes.h>

namespace TestSupport {

void LoupeScene::pressShortcut() { desktop().keyboard().chord({KEY_LEFTMETA, KEY_LEFTALT, KEY_L}); }

void LoupeScene::tapTimes(std::uint16_t key, int times)
{
    for (int i = 0; i < times; ++i)
        desktop().keyboard().tap(key);
}

testing::AssertionResult LoupeScene::showsLoupe(ExpectedLoupe loupe) { return showsLoupeOver(beneath(), loupe); }

testing::AssertionResult LoupeScene::showsLoupeOver(const Platform::Image& beneath, ExpectedLoupe loupe)
{
    loupe.isBlended = m_isBlended;
    return withKeys(showsWithout([&](const Platform::Image& actual) { return whatIsWrong(loupe, beneath, actual); }));
}

bool LoupeScene::isCompositing(WindowManagerKind kind)
{
    return kind == WindowManagerKind::openboxWithPicom || kind == WindowManagerKind::xfwm4WithCompositor || kind == WindowManagerKind::kwin;
}

}  // namespace TestSupport
