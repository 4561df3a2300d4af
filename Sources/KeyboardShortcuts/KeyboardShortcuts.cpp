#include "KeyboardShortcuts/KeyboardShortcuts.h"

#include <algorithm>
#include <iostream>
#include <memory>
#include <utility>

namespace KeyboardShortcuts {
namespace {

constexpr std::string_view keyPrefix = "KeyboardShortcuts_";

std::string keyOf(const Name& name) { return std::string(keyPrefix) + name.rawValue; }

}  // namespace

KeyboardShortcuts::KeyboardShortcuts(Platform::UserDefaults& userDefaults, Platform::NotificationCenter& notifications,
    Platform::HotKeyCenter& hotKeys, Platform::KeyboardLayout& keyboardLayout, Platform::ReservedShortcuts& reservedShortcuts, const Texts& texts)
    : KeyboardShortcuts(userDefaults, notifications, hotKeys, keyboardLayout, reservedShortcuts, texts, std::cout)
{
}

KeyboardShortcuts::KeyboardShortcuts(Platform::UserDefaults& userDefaults, Platform::NotificationCenter& notifications,
    Platform::HotKeyCenter& hotKeys, Platform::KeyboardLayout& keyboardLayout, Platform::ReservedShortcuts& reservedShortcuts, const Texts& texts,
    std::ostream& output)
    : m_userDefaults(userDefaults), m_notifications(notifications), m_keyboardLayout(keyboardLayout), m_reservedShortcuts(reservedShortcuts),
      m_texts(texts), m_carbon(
                          hotKeys, m_switches, [this](const Shortcut& shortcut) { return presentableDescription(shortcut); }, output)
{
}

Name KeyboardShortcuts::declareName(std::string rawValue, std::optional<Shortcut> defaultShortcut)
{
    Name name(std::move(rawValue), defaultShortcut);
    if (name.defaultShortcut && !userDefaultsContains(name))
        store(*name.defaultShortcut, name);
    initialize();
    return name;
}

std::optional<Shortcut> KeyboardShortcuts::getShortcut(const Name& name) const
{
    const auto text = m_userDefaults.stringValue(keyOf(name));
    return text ? Shortcut::fromJson(*text) : std::nullopt;
}

void KeyboardShortcuts::setShortcut(const std::optional<Shortcut>& shortcut, const Name& name)
{
    if (shortcut) {
        store(*shortcut, name);
        return;
    }
    const auto former = getShortcut(name);
    if (!former)
        return;
    if (name.defaultShortcut)
        m_userDefaults.setObject(keyOf(name), false);
    else
        m_userDefaults.removeObject(keyOf(name));
    unregister(*former);
    postChange(name);
}

void KeyboardShortcuts::store(const Shortcut& shortcut, const Name& name)
{
    const auto text = shortcut.toJson();
    if (const auto former = getShortcut(name))
        unregister(*former);
    registerIfNeeded(shortcut);
    m_userDefaults.setObject(keyOf(name), text);
    postChange(name);
}

void KeyboardShortcuts::postChange(const Name& name) { m_notifications.post(shortcutByNameDidChange, name); }

void KeyboardShortcuts::reset(std::span<const Name> names)
{
    for (const auto& name : names)
        setShortcut(name.defaultShortcut, name);
}

void KeyboardShortcuts::resetAll()
{
    const auto found = allNames();
    reset(std::vector<Name>(found.begin(), found.end()));
}

bool KeyboardShortcuts::userDefaultsContains(const Name& name) const { return m_userDefaults.object(keyOf(name)).has_value(); }

std::unordered_set<Name> KeyboardShortcuts::allNames() const
{
    std::unordered_set<Name> names;
    for (const auto& [key, value] : m_userDefaults.dictionaryRepresentation()) {
        if (key.starts_with(keyPrefix))
            names.insert(Name(key.substr(keyPrefix.size())));
    }
    return names;
}

void KeyboardShortcuts::onKeyDown(const Name& name, Action action)
{
    m_legacyKeyDownHandlers.add(name, std::move(action));
    registerStoredShortcutIfNeeded(name);
}

void KeyboardShortcuts::onKeyUp(const Name& name, Action action)
{
    m_legacyKeyUpHandlers.add(name, std::move(action));
    registerStoredShortcutIfNeeded(name);
}

void KeyboardShortcuts::removeHandler(const Name& name)
{
    m_legacyKeyDownHandlers.remove(name);
    m_legacyKeyUpHandlers.remove(name);
    const auto shortcut = getShortcut(name);
    if (shortcut && !shortcutsOf(m_streamKeyDownHandlers, m_streamKeyUpHandlers).contains(*shortcut))
        unregister(*shortcut);
}

void KeyboardShortcuts::removeAllHandlers()
{
    const auto streamed = shortcutsOf(m_streamKeyDownHandlers, m_streamKeyUpHandlers);
    for (const auto& shortcut : shortcutsOf(m_legacyKeyDownHandlers, m_legacyKeyUpHandlers)) {
        if (!streamed.contains(shortcut))
            unregister(shortcut);
    }
    m_legacyKeyDownHandlers.clear();
    m_legacyKeyUpHandlers.clear();
}

Platform::Token KeyboardShortcuts::events(EventType type, const Name& name, Action action)
{
    auto& handlers = type == EventType::keyDown ? m_streamKeyDownHandlers : m_streamKeyUpHandlers;
    auto token = handlers.subscribe(name, std::move(action));
    registerStoredShortcutIfNeeded(name);
    return token;
}

Platform::Token KeyboardShortcuts::events(const Name& name, const std::function<void(EventType)>& action)
{
    auto keyDown = std::make_shared<Platform::Token>(events(EventType::keyDown, name, [action] { action(EventType::keyDown); }));
    auto keyUp = std::make_shared<Platform::Token>(events(EventType::keyUp, name, [action] { action(EventType::keyUp); }));
    return Platform::Token([keyDown, keyUp] {
        keyDown->release();
        keyUp->release();
    });
}

void KeyboardShortcuts::setEnabled(bool isEnabled)
{
    if (isEnabled == m_switches.isEnabled)
        return;
    m_switches.isEnabled = isEnabled;
    m_carbon.updateEventHandler();
}

bool KeyboardShortcuts::isEnabled(const Name& name) const
{
    const auto shortcut = getShortcut(name);
    return m_switches.isEnabled && shortcut && m_registeredShortcuts.contains(*shortcut);
}

void KeyboardShortcuts::enable(std::span<const Name> names)
{
    for (const auto& name : names)
        registerStoredShortcutIfNeeded(name);
}

void KeyboardShortcuts::disable(std::span<const Name> names)
{
    for (const auto& name : names) {
        if (const auto shortcut = getShortcut(name))
            unregister(*shortcut);
    }
}

void KeyboardShortcuts::initialize()
{
    if (m_isInitialized)
        return;
    m_isInitialized = true;
    m_openMenuObserver = m_notifications.addObserver(std::string(menuDidBeginTracking), [this](const auto&) { setMenuOpen(true); });
    m_closeMenuObserver = m_notifications.addObserver(std::string(menuDidEndTracking), [this](const auto&) { setMenuOpen(false); });
}

void KeyboardShortcuts::setMenuOpen(bool isOpen)
{
    if (std::exchange(m_switches.isMenuOpen, isOpen) != isOpen)
        m_carbon.updateEventHandler();
}

bool KeyboardShortcuts::isTakenBySystem(const Shortcut& shortcut) const
{
    const auto reserved = CarbonKeyboardShortcuts::system(m_reservedShortcuts);
    return std::find(reserved.begin(), reserved.end(), shortcut) != reserved.end();
}

std::string KeyboardShortcuts::presentableDescription(const Shortcut& shortcut) const
{
    return shortcut.presentableDescription(m_keyboardLayout, m_texts);
}

void KeyboardShortcuts::registerIfNeeded(const Shortcut& shortcut)
{
    if (m_registeredShortcuts.contains(shortcut))
        return;
    m_carbon.registerShortcut(
        shortcut, [this](const Shortcut& pressed) { handle(pressed, m_legacyKeyDownHandlers, m_streamKeyDownHandlers); },
        [this](const Shortcut& released) { handle(released, m_legacyKeyUpHandlers, m_streamKeyUpHandlers); });
    m_registeredShortcuts.insert(shortcut);
}

void KeyboardShortcuts::registerStoredShortcutIfNeeded(const Name& name)
{
    if (const auto shortcut = getShortcut(name))
        registerIfNeeded(*shortcut);
}

void KeyboardShortcuts::unregister(const Shortcut& shortcut)
{
    m_carbon.unregisterShortcut(shortcut);
    m_registeredShortcuts.erase(shortcut);
}

std::unordered_set<Shortcut> KeyboardShortcuts::shortcutsOf(const HandlerTable& keyDownHandlers, const HandlerTable& keyUpHandlers) const
{
    std::unordered_set<Shortcut> shortcuts;
    for (const auto* const handlers : {&keyDownHandlers, &keyUpHandlers}) {
        for (const auto& name : handlers->names()) {
            if (const auto shortcut = getShortcut(name))
                shortcuts.insert(*shortcut);
        }
    }
    return shortcuts;
}

void KeyboardShortcuts::handle(const Shortcut& fired, const HandlerTable& legacyHandlers, const HandlerTable& streamHandlers) const
{
    if (m_isPaused)
        return;
    const auto isOfName = [&](const Name& name) { return getShortcut(name) == fired; };
    legacyHandlers.callMatching(isOfName);
    streamHandlers.callMatching(isOfName);
}

}  // namespace KeyboardShortcuts
