#include "KeyboardShortcuts/CarbonKeyboardShortcuts.h"

#include <algorithm>
#include <limits>
#include <ostream>
#include <string_view>
#include <utility>

#include "KeyboardShortcuts/Utilities.h"
#include "Platform/FatalError.h"

namespace KeyboardShortcuts {
namespace {

using Platform::KeyboardEvent;
using Platform::KeyboardEventTypes;

std::uint32_t unsigned32(std::string_view what, std::int64_t value)
{
    if (value < 0 || value > std::numeric_limits<std::uint32_t>::max())
        Platform::fatalError("CarbonKeyboardShortcuts.register: " + std::string(what) + " outside 0...4294967295", std::to_string(value));
    return static_cast<std::uint32_t>(value);
}

bool isKeyDown(KeyboardEvent::Kind kind) { return kind == KeyboardEvent::Kind::hotKeyPressed || kind == KeyboardEvent::Kind::rawKeyDown; }

}  // namespace

CarbonKeyboardShortcuts::CarbonKeyboardShortcuts(Platform::HotKeyCenter& center, const Switches& switches,
    std::function<std::string(const Shortcut&)> describe, std::ostream& output, std::int64_t lastHotKeyID)
    : m_center(center), m_switches(switches), m_describe(std::move(describe)), m_output(output), m_hotKeyID(lastHotKeyID)
{
}

void CarbonKeyboardShortcuts::registerShortcut(const Shortcut& shortcut, Action onKeyDown, Action onKeyUp)
{
    if (m_hotKeyID == std::numeric_limits<std::int64_t>::max())
        Platform::fatalError("CarbonKeyboardShortcuts.register: no identifier left after", std::to_string(m_hotKeyID));
    ++m_hotKeyID;
    auto reference = requestHotKey(shortcut, m_hotKeyID);
    if (!reference)
        return;
    // While hot keys are given back, this one is too: held, it would swallow the key.
    if (!areHotKeysActive())
        reference = nullptr;
    m_hotKeys.insert_or_assign(m_hotKeyID, HotKey{shortcut, m_hotKeyID, std::move(reference), std::move(onKeyDown), std::move(onKeyUp)});
    installEventHandlerIfNeeded();
}

void CarbonKeyboardShortcuts::unregisterShortcut(const Shortcut& shortcut)
{
    std::erase_if(m_hotKeys, [&](const auto& entry) { return entry.second.shortcut == shortcut; });
}

std::unique_ptr<Platform::HotKeyReference> CarbonKeyboardShortcuts::requestHotKey(const Shortcut& shortcut, std::int64_t hotKeyID)
{
    const auto keyCode = unsigned32("key code", shortcut.carbonKeyCode());
    const auto modifiers = unsigned32("modifiers", shortcut.carbonModifiers());
    auto registration = m_center.registerHotKey(keyCode, modifiers, {signature, unsigned32("identifier", hotKeyID)});
    if (registration.status == Platform::HotKeyStatus::granted && registration.reference)
        return std::move(registration.reference);
    m_output << "Error registering hotkey " << m_describe(shortcut) << ": " << static_cast<std::int32_t>(registration.status) << std::endl;
    return nullptr;
}

void CarbonKeyboardShortcuts::installEventHandlerIfNeeded()
{
    if (m_eventHandler)
        return;
    m_eventHandler = m_center.installHandler([this](const KeyboardEvent& event) { return handleEvent(event); });
    updateEventHandler();
}

void CarbonKeyboardShortcuts::updateEventHandler()
{
    if (!m_eventHandler)
        return;
    if (areHotKeysActive()) {
        softRegisterAll();
        m_center.removeEventTypes(KeyboardEventTypes::rawKey);
        m_center.addEventTypes(KeyboardEventTypes::hotKey);
        return;
    }
    softUnregisterAll();
    m_center.removeEventTypes(KeyboardEventTypes::hotKey);
    if (m_switches.isEnabled)
        m_center.addEventTypes(KeyboardEventTypes::rawKey);
    else
        m_center.removeEventTypes(KeyboardEventTypes::rawKey);
}

// One that is held already stays held: asking a second time for the same combination is
// refused on some systems and on others takes the first grab along when it ends.
void CarbonKeyboardShortcuts::softRegisterAll()
{
    for (auto& [hotKeyID, hotKey] : m_hotKeys) {
        if (!hotKey.carbonHotKey)
            hotKey.carbonHotKey = requestHotKey(hotKey.shortcut, hotKeyID);
    }
    std::erase_if(m_hotKeys, [](const auto& entry) { return entry.second.carbonHotKey == nullptr; });
}

void CarbonKeyboardShortcuts::softUnregisterAll()
{
    for (auto& [hotKeyID, hotKey] : m_hotKeys)
        hotKey.carbonHotKey = nullptr;
}

std::int32_t CarbonKeyboardShortcuts::handleEvent(const KeyboardEvent& event)
{
    switch (event.kind) {
    case KeyboardEvent::Kind::hotKeyPressed:
    case KeyboardEvent::Kind::hotKeyReleased:
        return handleHotKeyEvent(event);
    // The seam brings the raw keys of an open menu here too; no event queue is filtered.
    case KeyboardEvent::Kind::rawKeyDown:
    case KeyboardEvent::Kind::rawKeyUp:
        return handleRawKeyEvent(event);
    }
    return Platform::eventNotHandledErr;
}

std::int32_t CarbonKeyboardShortcuts::handleHotKeyEvent(const KeyboardEvent& event)
{
    const auto entry = m_hotKeys.find(event.hotKeyID.id);
    if (event.hotKeyID.signature != signature || entry == m_hotKeys.end())
        return Platform::eventNotHandledErr;
    call(entry->second, event.kind);
    return Platform::noErr;
}

std::int32_t CarbonKeyboardShortcuts::handleRawKeyEvent(const KeyboardEvent& event)
{
    const auto pressed = Shortcut::fromCarbon(event.keyCode, event.carbonModifiers);
    const auto entry = std::find_if(m_hotKeys.begin(), m_hotKeys.end(), [&](const auto& hotKey) { return hotKey.second.shortcut == pressed; });
    if (entry == m_hotKeys.end())
        return Platform::eventNotHandledErr;
    call(entry->second, event.kind);
    return Platform::noErr;
}

// Copies first: an action may take its own hot key away.
void CarbonKeyboardShortcuts::call(const HotKey& hotKey, KeyboardEvent::Kind kind)
{
    const auto shortcut = hotKey.shortcut;
    const auto action = isKeyDown(kind) ? hotKey.onKeyDown : hotKey.onKeyUp;
    action(shortcut);
}

std::vector<Shortcut> CarbonKeyboardShortcuts::system(Platform::ReservedShortcuts& reservedShortcuts)
{
    std::vector<Shortcut> result;
    for (const auto& hotKey : reservedShortcuts.copySymbolicHotKeys()) {
        if (hotKey.isEnabled)
            result.push_back(Shortcut::fromCarbon(hotKey.keyCode, hotKey.carbonModifiers));
    }
    return result;
}

}  // namespace KeyboardShortcuts
