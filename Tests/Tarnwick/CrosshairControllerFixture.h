// A controller on the recording fake of the whole seam, with a loupe that writes down what
// it is told.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "Support/FakeSystem.h"
#include "Tarnwick/CrosshairController.h"

namespace Tarnwick {

using Lines = std::vector<std::string>;
using Combination = TestSupport::FakeHotKeyCenter::Combination;

inline constexpr std::chrono::nanoseconds oneTick{16'666'666};
inline constexpr Combination optionCommandX{7, 0x900};
inline constexpr Combination optionCommandL{37, 0x900};

// A loupe that writes down what it is told.
class FakeLoupe final : public LoupeOverlay {
public:
    explicit FakeLoupe(TestSupport::CallLog& log) : m_log(log) { }

    void updateCursor(Platform::Point mouseLocation) override
    {
        std::ostringstream line;
        line << "loupe.updateCursor " << mouseLocation.x << " " << mouseLocation.y;
        m_log.add(line.str());
    }
    void makeKeyAndOrderFront() override { m_log.add("loupe.makeKeyAndOrderFront"); }
    void orderOut() override { m_log.add("loupe.orderOut"); }

private:
    TestSupport::CallLog& m_log;
};

class CrosshairControllerTest : public testing::Test {
protected:
    void start()
    {
        controller.emplace(fake.system, shortcuts, [this](std::function<void()> onDismiss) {
            dismissLoupeFromInside = std::move(onDismiss);
            return std::make_unique<FakeLoupe>(fake.log);
        });
        fake.log.clear();
    }
    // The capture that is under way ends, and everything that follows from it.
    void settle()
    {
        fake.mainLoop.runUntilIdle();
        fake.serialQueues.runAll();
        fake.mainLoop.runUntilIdle();
    }
    void tick()
    {
        fake.mainLoop.advance(oneTick);
        settle();
    }
    void pressEscape()
    {
        fake.overlayWindows.pressKey({.keyCode = 53});
        fake.mainLoop.runUntilIdle();
    }
    Lines takeLines(const Lines& prefixes) { return fake.log.takeLinesOf(prefixes); }
    TestSupport::FakeOverlayWindow& crosshair() { return fake.overlayWindows.last(); }

    TestSupport::FakeSystem fake;
    KeyboardShortcuts::Texts texts;
    std::ostringstream output;
    KeyboardShortcuts::KeyboardShortcuts shortcuts{
        fake.userDefaults, fake.notifications, fake.hotKeys, fake.keyboardLayout, fake.reservedShortcuts, texts, output};
    std::function<void()> dismissLoupeFromInside;
    std::optional<CrosshairController> controller;
};

}  // namespace Tarnwick
