#include "Platform/X11/Keys/OverlayKeys.h"

#include <algorithm>
#include <utility>

#include "Platform/X11/Keys/KeyboardEvents.h"

namespace Platform::X11 {
namespace {

constexpr std::uint16_t modifierBits = 0xff;  // the rest of an event's state is buttons and the layout group

}  // namespace

std::unique_ptr<OverlayKeys> OverlayKeys::open(const std::string& displayName, FileDescriptorWatcher& watcher, MainLoop& mainLoop)
{
    auto connection = Connection::open(displayName);
    if (!connection || !startKeyboardEvents(*connection))
        return nullptr;
    return std::unique_ptr<OverlayKeys>(new OverlayKeys(std::move(connection), watcher, mainLoop));
}

OverlayKeys::OverlayKeys(std::unique_ptr<Connection> connection, FileDescriptorWatcher& watcher, MainLoop& mainLoop)
    : m_connection(std::move(connection)), m_mainLoop(mainLoop), m_rawKeys(*m_connection), m_focus(*m_connection, mainLoop, [this] { focusMoved(); }),
      m_modifierMap(ModifierMap::read(*m_connection)),
      m_pump(*m_connection, watcher, mainLoop, [this](const xcb_generic_event_t& event) { handle(event); }),
      m_self(std::make_shared<OverlayKeys*>(this))
{
    m_pump.collectAfterRoundTrips();
}

OverlayKeys::~OverlayKeys()
{
    *m_self = nullptr;
    release();
}

void OverlayKeys::grab(std::function<void(const KeyEvent&)> keyDown, xcb_window_t focusWindow)
{
    const bool isNew = m_keyDown == nullptr;
    m_keyDown = std::make_shared<std::function<void(const KeyEvent&)>>(std::move(keyDown));
    m_focus.begin(focusWindow);
    if (isNew) {
        // In this order no press falls between: one that the raw events do not tell is held.
        m_rawKeys.listen(true, true);
        noteHeldKeys();
        grabKeyboard();
    }
    m_pump.collectAfterRoundTrips();
}

void OverlayKeys::release()
{
    if (std::exchange(m_keyDown, nullptr) == nullptr)
        return;
    m_rawKeys.listen(false, false);
    m_focus.end();
    ungrabKeyboard();
    m_held.clear();
    m_pump.collectAfterRoundTrips();
}

Token OverlayKeys::suspend()
{
    if (m_suspensions++ == 0)
        ungrabKeyboard();
    return Token([self = m_self] {
        if (*self == nullptr || --(*self)->m_suspensions > 0)
            return;
        (*self)->grabKeyboard();
        (*self)->m_pump.collectAfterRoundTrips();
    });
}

void OverlayKeys::handle(const xcb_generic_event_t& event)
{
    m_focus.handle(event);
    if (const auto raw = m_rawKeys.keyOf(event)) {
        if (raw->isPress)
            rawKeyPressed(*raw);
        else
            m_held.erase(raw->keycode);
    } else if (eventType(event) == XCB_KEY_PRESS) {
        const auto& press = reinterpret_cast<const xcb_key_press_event_t&>(event);
        keyPressed({press.detail, static_cast<std::uint16_t>(press.state & modifierBits)}, press.time);
    } else if (eventType(event) == XCB_KEY_RELEASE) {
        m_held.erase(reinterpret_cast<const xcb_key_release_event_t&>(event).detail);
    } else if (isKeyboardMapChange(*m_connection, event)) {
        keyboardMapChanged();
    }
}

void OverlayKeys::keyPressed(const KeyCombination& combination, xcb_timestamp_t time)
{
    const auto [press, isFirst] = m_held.try_emplace(combination.keycode, Press{.time = time});
    const bool isRepeat = !isFirst && press->second.time != time;
    if (!isRepeat && std::exchange(press->second.isTold, true))
        return;
    // While a key of ours is down, the server sends us the modifiers' presses too.
    if (!m_modifierMap.keycodes.test(combination.keycode))
        tell(combination, isRepeat);
}

void OverlayKeys::rawKeyPressed(const RawKey& raw)
{
    const KeyCombination combination{raw.keycode, raw.modifiers};
    const auto virtualKey = virtualKeyOfKeycode(raw.keycode);
    const bool isEscape = virtualKey == escapeKeyCode && !isForeign(combination);
    m_held.insert_or_assign(raw.keycode, Press{.time = raw.time, .isTold = isEscape});
    if (isEscape)
        tell(combination, false);
}

void OverlayKeys::tell(const KeyCombination& combination, bool isRepeat)
{
    const auto virtualKey = virtualKeyOfKeycode(combination.keycode);
    const auto keyDown = m_keyDown;  // the call may end or replace it
    if (virtualKey && keyDown != nullptr)
        (*keyDown)({.keyCode = *virtualKey, .modifiers = m_modifierMap.flagsOfModifiers(combination.modifiers), .isRepeat = isRepeat});
}

void OverlayKeys::grabKeyboard()
{
    if (m_keyDown == nullptr || m_suspensions > 0)
        return;
    // A hot key of another client refuses its key as a whole.
    m_hotKeysKeys = grabKeys(*m_connection, m_connection->root(), allKeys());
    if (!m_hotKeysKeys.empty())
        grabHotKeysKeys();
}

// In the window with the focus such a key may be grabbed with any modifiers: the server
// looks there after the root, so a hot key still comes first. On the root each combination
// is a grab of its own, and the server's time grows with the square of their number: 20
// keys of hot keys took 200 ms.
void OverlayKeys::grabHotKeysKeys()
{
    const auto root = m_connection->root();
    m_toplevel = m_focus.toplevel();
    if (m_toplevel == XCB_WINDOW_NONE) {
        m_foreign = grabKeys(*m_connection, root, combinationsOf(m_hotKeysKeys));
        return;
    }
    std::vector<KeyCombination> escape;
    std::vector<KeyCombination> others;
    for (const auto& key : m_hotKeysKeys)
        (virtualKeyOfKeycode(key.keycode) == escapeKeyCode ? escape : others).push_back(key);
    m_foreign = grabKeys(*m_connection, root, combinationsOf(escape));
    const auto refused = grabKeys(*m_connection, m_toplevel, others);
    grabKeys(*m_connection, m_toplevel, combinationsOf(refused));
}

void OverlayKeys::ungrabKeyboard()
{
    m_foreign.clear();
    m_hotKeysKeys.clear();
    if (const auto toplevel = std::exchange(m_toplevel, XCB_WINDOW_NONE); toplevel != XCB_WINDOW_NONE)
        xcb_ungrab_key(*m_connection, XCB_GRAB_ANY, toplevel, XCB_MOD_MASK_ANY);
    // Waits for the server: whoever comes next finds the keys free.
    const auto request = xcb_ungrab_key_checked(*m_connection, XCB_GRAB_ANY, m_connection->root(), XCB_MOD_MASK_ANY);
    adopt(xcb_request_check(*m_connection, request));
}

void OverlayKeys::focusMoved()
{
    if (!m_hotKeysKeys.empty() && m_focus.toplevel() != m_toplevel) {
        ungrabKeyboard();
        grabKeyboard();
    }
    m_pump.collectAfterRoundTrips();
}

void OverlayKeys::noteHeldKeys()
{
    m_held.clear();
    const auto keymap = adopt(xcb_query_keymap_reply(*m_connection, xcb_query_keymap(*m_connection), nullptr));
    for (unsigned keycode = 0; keymap && keycode < 256; ++keycode) {
        if ((keymap->keys[keycode / 8] >> (keycode % 8) & 1) != 0)
            m_held.insert_or_assign(static_cast<xcb_keycode_t>(keycode), Press{.isTold = true});
    }
}

std::vector<KeyCombination> OverlayKeys::allKeys() const
{
    const auto* setup = xcb_get_setup(*m_connection);
    std::vector<KeyCombination> keys;
    for (unsigned keycode = setup->min_keycode; keycode <= setup->max_keycode; ++keycode) {
        if (!m_modifierMap.keycodes.test(keycode))
            keys.push_back({static_cast<xcb_keycode_t>(keycode), XCB_MOD_MASK_ANY});
    }
    return keys;
}

// Of many keys only those that type: no Control, no Alt, no Super.
std::vector<KeyCombination> OverlayKeys::combinationsOf(std::span<const KeyCombination> keys) const
{
    constexpr std::size_t few = 4;
    const auto typing = static_cast<std::uint16_t>(m_modifierMap.used & (XCB_MOD_MASK_SHIFT | m_modifierMap.locks()));
    const auto bits = keys.size() <= few ? m_modifierMap.used : typing;
    std::vector<KeyCombination> combinations;
    for (const auto& key : keys)
        forEachSubset(bits, [&](std::uint16_t modifiers) { combinations.push_back({key.keycode, modifiers}); });
    return combinations;
}

bool OverlayKeys::isForeign(const KeyCombination& combination) const
{
    return std::find(m_foreign.begin(), m_foreign.end(), combination) != m_foreign.end();
}

void OverlayKeys::keyboardMapChanged()
{
    if (std::exchange(m_isMapChangePending, true))
        return;
    // A change of layout tells itself by a dozen events. They are answered once.
    m_mainLoop.post([self = m_self] {
        if (*self != nullptr)
            (*self)->readKeyboardMap();
    });
}

void OverlayKeys::readKeyboardMap()
{
    m_isMapChangePending = false;
    const auto former = std::exchange(m_modifierMap, ModifierMap::read(*m_connection));
    if (former != m_modifierMap && m_keyDown != nullptr) {
        ungrabKeyboard();
        grabKeyboard();
    }
    m_pump.collectAfterRoundTrips();
}

}  // namespace Platform::X11
