// A keyboard layout and a desktop's reserved shortcuts, as a test wants them.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Platform/KeyboardLayout.h"
#include "Support/CallLog.h"

namespace TestSupport {

// Lines: "keyboardLayout.displayText 7". It starts as the letters, digits and
// punctuation of an American keyboard.
class FakeKeyboardLayout : public Platform::KeyboardLayout {
public:
    explicit FakeKeyboardLayout(CallLog& log);

    void setText(std::uint16_t virtualKeyCode, std::string text) { m_texts[virtualKeyCode] = std::move(text); }
    void removeText(std::uint16_t virtualKeyCode) { m_texts.erase(virtualKeyCode); }

    std::optional<std::string> displayText(std::uint16_t virtualKeyCode) override;

private:
    CallLog& m_log;
    std::map<std::uint16_t, std::string> m_texts;
};

// Lines: "reservedShortcuts.copySymbolicHotKeys".
class FakeReservedShortcuts : public Platform::ReservedShortcuts {
public:
    explicit FakeReservedShortcuts(CallLog& log) : m_log(log) { }

    void set(std::vector<Platform::SymbolicHotKey> hotKeys) { m_hotKeys = std::move(hotKeys); }

    std::vector<Platform::SymbolicHotKey> copySymbolicHotKeys() override
    {
        m_log.add("reservedShortcuts.copySymbolicHotKeys");
        return m_hotKeys;
    }

private:
    CallLog& m_log;
    std::vector<Platform::SymbolicHotKey> m_hotKeys;
};

}  // namespace TestSupport
