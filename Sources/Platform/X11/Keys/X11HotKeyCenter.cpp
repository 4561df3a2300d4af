#include "Platform/X11/Keys/X11HotKeyCenter.h"

#include <algorithm>
#include <utility>

#include "Platform/X11/Keys/KeyboardEvents.h"

namespace Platform::X11 {
namespace {

constexpr std::uint16_t modifierBits = 0xff;  // the rest of an event's state is buttons and the layout group

bool isModifierKey(std::uint16_t virtualKeyCode)
{
    constexpr std::uint16_t first = 54;  // right Command
    constexpr std::uint16_t last = 63;   // function
    return virtualKeyCode >= first && virtualKeyCode <= last;
}

}  // namespace

class X11HotKeyCenter::Reference final : public HotKeyReference {
public:
    Reference(std::shared_ptr<X11HotKeyCenter*> center, std::uint64_t serial) : m_center(std::move(center)), m_serial(serial) { }
    ~Reference() override
    {
        if (*m_center != nullptr)
            (*m_center)->unregister(m_serial);
    }
    Reference(const Reference&) = delete;
    Reference& operator=(const Reference&) = delete;

private:
    const std::shared_ptr<X11HotKeyCenter*> m_center;
    const std::uint64_t m_serial;
};

std::unique_ptr<X11HotKeyCenter> X11HotKeyCenter::open(const std::string& displayName, FileDescriptorWatcher& watcher, MainLoop& mainLoop)
{
    auto connection = Connection::open(displayName);
    if (!connection || !startKeyboardEvents(*connection))
        return nullptr;
    return std::unique_ptr<X11HotKeyCenter>(new X11HotKeyCenter(std::move(connection), watcher, mainLoop));
}

X11HotKeyCenter::X11HotKeyCenter(std::unique_ptr<Connection> connection, FileDescriptorWatcher& watcher, MainLoop& mainLoop)
    : m_connection(std::move(connection)), m_mainLoop(mainLoop), m_rawKeys(*m_connection), m_modifierMap(ModifierMap::read(*m_connection)),
      m_pump(*m_connection, watcher, mainLoop, [this](const xcb_generic_event_t& event) { handle(event); }),
      m_self(std::make_shared<X11HotKeyCenter*>(this))
{
    m_pump.collectAfterRoundTrips();
}

X11HotKeyCenter::~X11HotKeyCenter() { *m_self = nullptr; }

HotKeyRegistration X11HotKeyCenter::registerHotKey(std::uint32_t keyCode, std::uint32_t carbonModifiers, HotKeyID hotKeyID)
{
    const auto keycode = keycodeOfVirtualKey(keyCode);
    const auto modifiers = m_modifierMap.modifiersOfCarbon(carbonModifiers);
    if (!keycode || !modifiers || m_connection->isBroken())
        return {HotKeyStatus::unsupported, nullptr};
    const KeyCombination combination{*keycode, *modifiers};
    if (hotKeyOf(combination) || !grab(combination))
        return {HotKeyStatus::taken, nullptr};
    m_hotKeys.emplace(++m_lastSerial, HotKey{hotKeyID, carbonModifiers, combination});
    noteIfDown(*keycode);
    m_pump.collectAfterRoundTrips();
    return {HotKeyStatus::granted, std::make_unique<Reference>(m_self, m_lastSerial)};
}

Token X11HotKeyCenter::installHandler(std::function<std::int32_t(const KeyboardEvent&)> handler)
{
    m_handler = std::make_shared<std::function<std::int32_t(const KeyboardEvent&)>>(std::move(handler));
    return Token([self = m_self, installed = std::weak_ptr(m_handler)] {
        if (*self != nullptr && (*self)->m_handler == installed.lock())
            (*self)->m_handler = nullptr;
    });
}

void X11HotKeyCenter::addEventTypes(KeyboardEventTypes types)
{
    (types == KeyboardEventTypes::hotKey ? m_wantsHotKeys : m_wantsRawKeys) = true;
    listenToRawKeys();
    m_pump.collectAfterRoundTrips();
}

void X11HotKeyCenter::removeEventTypes(KeyboardEventTypes types)
{
    (types == KeyboardEventTypes::hotKey ? m_wantsHotKeys : m_wantsRawKeys) = false;
    listenToRawKeys();
}

void X11HotKeyCenter::handle(const xcb_generic_event_t& event)
{
    if (const auto raw = m_rawKeys.keyOf(event)) {
        const KeyCombination combination{raw->keycode, raw->modifiers};
        raw->isPress ? keyPressed(combination, true) : keyReleased(combination);
    } else if (eventType(event) == XCB_KEY_PRESS || eventType(event) == XCB_KEY_RELEASE) {
        const auto& key = reinterpret_cast<const xcb_key_press_event_t&>(event);
        const KeyCombination combination{key.detail, static_cast<std::uint16_t>(key.state & modifierBits)};
        eventType(event) == XCB_KEY_PRESS ? keyPressed(combination, false) : keyReleased(combination);
    } else if (isKeyboardMapChange(*m_connection, event)) {
        keyboardMapChanged();
    }
}

void X11HotKeyCenter::keyPressed(const KeyCombination& combination, bool isRaw)
{
    // A raw press never repeats: it is the one that an older press was noted for.
    const auto known = m_held.find(combination.keycode);
    if (known != m_held.end() && !(isRaw && known->second.isOlder))
        return;
    const auto hotKey = m_wantsHotKeys ? hotKeyOf(combination) : std::nullopt;
    m_held.insert_or_assign(combination.keycode, Press{.hotKey = hotKey});
    listenToRawKeys();
    if (hotKey)
        deliverHotKey(KeyboardEvent::Kind::hotKeyPressed, m_hotKeys.at(*hotKey));
    else if (m_wantsRawKeys)
        deliverRawKey(KeyboardEvent::Kind::rawKeyDown, combination);
}

void X11HotKeyCenter::keyReleased(const KeyCombination& combination)
{
    const auto press = m_held.extract(combination.keycode);
    if (press.empty())
        return;
    listenToRawKeys();
    const auto hotKey = press.mapped().hotKey ? m_hotKeys.find(*press.mapped().hotKey) : m_hotKeys.end();
    if (hotKey != m_hotKeys.end() && m_wantsHotKeys)
        deliverHotKey(KeyboardEvent::Kind::hotKeyReleased, hotKey->second);
    else if (m_wantsRawKeys)
        deliverRawKey(KeyboardEvent::Kind::rawKeyUp, combination);
}

void X11HotKeyCenter::deliver(const KeyboardEvent& event)
{
    if (const auto handler = m_handler)  // the call may remove it
        (*handler)(event);
}

void X11HotKeyCenter::deliverHotKey(KeyboardEvent::Kind kind, const HotKey& hotKey) { deliver({.kind = kind, .hotKeyID = hotKey.hotKeyID}); }

void X11HotKeyCenter::deliverRawKey(KeyboardEvent::Kind kind, const KeyCombination& combination)
{
    const auto virtualKey = virtualKeyOfKeycode(combination.keycode);
    if (!virtualKey || isModifierKey(*virtualKey))
        return;
    const auto carbonModifiers = m_modifierMap.carbonOfModifiers(combination.modifiers);
    deliver({.kind = kind, .hotKeyID = {}, .keyCode = *virtualKey, .carbonModifiers = carbonModifiers});
}

std::optional<std::uint64_t> X11HotKeyCenter::hotKeyOf(const KeyCombination& combination) const
{
    const KeyCombination bare{combination.keycode, static_cast<std::uint16_t>(combination.modifiers & ~m_modifierMap.locks())};
    const auto found = std::find_if(m_hotKeys.begin(), m_hotKeys.end(), [&](const auto& entry) { return entry.second.combination == bare; });
    if (found == m_hotKeys.end())
        return std::nullopt;
    return found->first;
}

bool X11HotKeyCenter::grab(const KeyCombination& combination)
{
    const auto variants = lockVariants(combination, m_modifierMap.locks());
    if (grabOrGiveBack(variants))
        return true;
    if (m_yield == nullptr)
        return false;
    const auto yielding = m_yield();
    return grabOrGiveBack(variants);
}

bool X11HotKeyCenter::grabOrGiveBack(const std::vector<KeyCombination>& variants)
{
    const auto refused = grabKeys(*m_connection, m_connection->root(), variants);
    if (refused.empty())
        return true;
    // Giving back one that was refused is harmless: only our own grabs go.
    ungrabKeys(*m_connection, m_connection->root(), variants);
    return false;
}

void X11HotKeyCenter::ungrab(const HotKey& hotKey)
{
    if (hotKey.isGrabbed)
        ungrabKeys(*m_connection, m_connection->root(), lockVariants(hotKey.combination, m_modifierMap.locks()));
}

void X11HotKeyCenter::unregister(std::uint64_t serial)
{
    const auto hotKey = m_hotKeys.extract(serial);
    if (!hotKey.empty())
        ungrab(hotKey.mapped());
}

// A key that is held while its hot key comes would trigger it by its auto-repeat.
void X11HotKeyCenter::noteIfDown(xcb_keycode_t keycode)
{
    if (m_held.contains(keycode))
        return;
    // Released between the two: then the raw release is on its way.
    m_rawKeys.listen(m_wantsRawKeys, true);
    const auto keymap = adopt(xcb_query_keymap_reply(*m_connection, xcb_query_keymap(*m_connection), nullptr));
    if (keymap && (keymap->keys[keycode / 8] >> (keycode % 8) & 1) != 0)
        m_held.emplace(keycode, Press{.hotKey = {}, .isOlder = true});
    listenToRawKeys();
}

// Releases are wanted while a key is held: a key that went down under another key's grab
// may go up when that grab is over.
void X11HotKeyCenter::listenToRawKeys() { m_rawKeys.listen(m_wantsRawKeys, m_wantsRawKeys || !m_held.empty()); }

void X11HotKeyCenter::keyboardMapChanged()
{
    if (std::exchange(m_isMapChangePending, true))
        return;
    // A change of layout tells itself by a dozen events. They are answered once.
    m_mainLoop.post([self = m_self] {
        if (*self != nullptr)
            (*self)->readKeyboardMap();
    });
}

void X11HotKeyCenter::readKeyboardMap()
{
    m_isMapChangePending = false;
    const auto map = ModifierMap::read(*m_connection);
    if (map != m_modifierMap)
        grabAgain(map);
    m_pump.collectAfterRoundTrips();
}

void X11HotKeyCenter::grabAgain(const ModifierMap& map)
{
    for (const auto& [serial, hotKey] : m_hotKeys)
        ungrab(hotKey);
    m_modifierMap = map;
    for (auto& [serial, hotKey] : m_hotKeys) {
        // Modifiers that one map could translate every map can.
        hotKey.combination.modifiers = map.modifiersOfCarbon(hotKey.carbonModifiers).value();
        hotKey.isGrabbed = grab(hotKey.combination);
    }
}

}  // namespace Platform::X11
