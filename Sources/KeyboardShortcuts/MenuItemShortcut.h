// The hint of one menu item: the key equivalent of a shortcut, or of whatever shortcut is
// stored for a name, kept current. Main thread only.
#pragma once

#include <memory>
#include <optional>

#include "KeyboardShortcuts/KeyboardShortcuts.h"
#include "Platform/MainLoop.h"
#include "Platform/StatusBar.h"

namespace KeyboardShortcuts {

class MenuItemShortcut {
public:
    // What it shows the hint with. All of it must outlive the object, and so must the item.
    struct System {
        const KeyboardShortcuts& shortcuts;
        Platform::KeyboardLayout& keyboardLayout;
        Platform::NotificationCenter& notifications;
        Platform::MainLoop& mainLoop;
    };

    MenuItemShortcut(Platform::MenuItem&, const System&);
    MenuItemShortcut(const MenuItemShortcut&) = delete;
    MenuItemShortcut& operator=(const MenuItemShortcut&) = delete;

    // Nothing takes the hint away. The system must not move a user's shortcut to another
    // key, so only an item without a shortcut allows that.
    void setShortcut(const std::optional<Shortcut>&);

    // As above with the shortcut stored for the name, now and after each change: in a later
    // turn of the main loop. Nothing takes the hint away and ends that.
    void setShortcut(const Name&);
    void setShortcut(std::nullopt_t);

private:
    struct Binding {
        MenuItemShortcut& item;
        Name name;
        void show() const { item.setShortcut(item.m_system.shortcuts.getShortcut(name)); }
    };

    Platform::MenuItem& m_item;
    const System m_system;
    std::shared_ptr<Binding> m_binding;  // empties, so that tasks under way do nothing, with the name
    Platform::Token m_observer;
};

}  // namespace KeyboardShortcuts
