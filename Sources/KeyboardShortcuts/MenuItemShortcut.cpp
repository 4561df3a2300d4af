#include "KeyboardShortcuts/MenuItemShortcut.h"

#include <any>
#include <string>

namespace KeyboardShortcuts {

MenuItemShortcut::MenuItemShortcut(Platform::MenuItem& item, const System& system) : m_item(item), m_system(system) { }

void MenuItemShortcut::setShortcut(const std::optional<Shortcut>& shortcut)
{
    if (!shortcut) {
        m_item.setKeyEquivalent({.text = "", .modifierMask = 0, .allowsAutomaticLocalization = true});
        return;
    }
    m_item.setKeyEquivalent({.text = shortcut->nsMenuItemKeyEquivalent(m_system.keyboardLayout).value_or(""),
        .modifierMask = shortcut->modifiers(),
        .allowsAutomaticLocalization = false});
}

void MenuItemShortcut::setShortcut(const Name& name)
{
    m_binding = std::make_shared<Binding>(Binding{*this, name});
    m_binding->show();
    m_observer = m_system.notifications.addObserver(std::string(shortcutByNameDidChange),
        [&mainLoop = m_system.mainLoop, weak = std::weak_ptr(m_binding), name](const Platform::Notification& notification) {
            const auto* const changed = std::any_cast<Name>(&notification.userInfo);
            if (changed == nullptr || !(*changed == name))
                return;
            mainLoop.post([weak] {
                if (const auto binding = weak.lock())
                    binding->show();
            });
        });
}

void MenuItemShortcut::setShortcut(std::nullopt_t)
{
    setShortcut(std::optional<Shortcut>());
    m_observer.release();
    m_binding.reset();
}

}  // namespace KeyboardShortcuts
