// The hot keys of a private server, and what they told.
#pragma once

#include "Platform/X11/Keys/X11HotKeyCenter.h"
#include "X11/Keys/KeysFixture.h"

inline constexpr std::uint32_t commandOption = 0x900;
inline constexpr std::uint32_t keyX = 7;
inline constexpr std::uint32_t keyL = 37;

class X11HotKeyCenterFixture : public KeysFixture {
protected:
    X11HotKeyCenterFixture()
    {
        m_handler = m_center->installHandler([this](const Platform::KeyboardEvent& event) {
            m_events.push_back(textOf(event));
            return Platform::noErr;
        });
        m_center->addEventTypes(Platform::KeyboardEventTypes::hotKey);
    }

    static std::string textOf(const Platform::KeyboardEvent& event)
    {
        using Kind = Platform::KeyboardEvent::Kind;
        switch (event.kind) {
        case Kind::hotKeyPressed:
            return "pressed " + std::to_string(event.hotKeyID.id);
        case Kind::hotKeyReleased:
            return "released " + std::to_string(event.hotKeyID.id);
        case Kind::rawKeyDown:
            return "down " + std::to_string(event.keyCode) + " " + std::to_string(event.carbonModifiers);
        case Kind::rawKeyUp:
            return "up " + std::to_string(event.keyCode) + " " + std::to_string(event.carbonModifiers);
        }
        return "unknown";
    }

    Platform::HotKeyRegistration registerKey(std::uint32_t keyCode, std::uint32_t modifiers, std::uint32_t id)
    {
        return m_center->registerHotKey(keyCode, modifiers, {.signature = 0x51484b56, .id = id});
    }

    void pressShortcut(std::uint16_t key) { m_keyboard.chord({KEY_LEFTMETA, KEY_LEFTALT, key}); }

    // All that came until a hot key that works came through: F12, registered here.
    std::vector<std::string> takeEvents()
    {
        const auto sentinel = registerKey(111, 0, 999);
        EXPECT_EQ(sentinel.status, Platform::HotKeyStatus::granted);
        m_keyboard.tap(KEY_F12);
        EXPECT_TRUE(TestSupport::loopUntil([&] { return !m_events.empty() && m_events.back() == "released 999"; }));
        auto events = std::move(m_events);
        m_events.clear();
        std::erase(events, "pressed 999");
        std::erase(events, "released 999");
        return events;
    }

    std::unique_ptr<Platform::X11::X11HotKeyCenter> m_center = Platform::X11::X11HotKeyCenter::open(m_server.displayName(), m_mainLoop, m_mainLoop);
    std::vector<std::string> m_events;
    Platform::Token m_handler;
};

using Lines = std::vector<std::string>;
