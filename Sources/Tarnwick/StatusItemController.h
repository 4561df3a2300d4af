// The program's icon in the status bar: makes and removes it as the settings want, builds
// its menu, keeps titles and shortcut hints current, and decides what a click does. Part
// of the crosshair controller, which owns it. Main thread only.
#pragma once

#include <memory>
#include <optional>

#include "KeyboardShortcuts/MenuItemShortcut.h"
#include "Platform/Platform.h"
#include "Tarnwick/HotKey.h"

namespace Tarnwick {

class CrosshairController;

class StatusItemController final : private Platform::MenuDelegate {
public:
    StatusItemController(Platform::System&, KeyboardShortcuts::KeyboardShortcuts&, ShortcutNames&, CrosshairController&);
    ~StatusItemController() override;
    StatusItemController(const StatusItemController&) = delete;
    StatusItemController& operator=(const StatusItemController&) = delete;

    // Makes or removes the icon where the setting and the bar differ; an icon that is there
    // and shall be is left as it is.
    void applyMenuBarItem();

    // Makes the icon and its menu anew, because the click actions are wired differently.
    void reinstallStatusItem();

private:
    // A menu item whose title and hint change.
    struct ToggleItem {
        ToggleItem(Platform::MenuItem& menuItem, const KeyboardShortcuts::MenuItemShortcut::System& system)
            : item(menuItem), shortcut(menuItem, system)
        {
        }

        Platform::MenuItem& item;
        KeyboardShortcuts::MenuItemShortcut shortcut;
    };

    // All of it goes together with a new icon, never with a hidden one.
    struct StatusMenu {
        std::unique_ptr<Platform::Menu> menu;
        std::optional<ToggleItem> showCrosshair;
        std::optional<ToggleItem> showLoupe;
    };

    void installStatusItem();
    void removeStatusItem() { m_statusItem.reset(); }
    void buildMenu();
    void addToggleItem(std::optional<ToggleItem>&, std::string_view title, void (CrosshairController::*action)());
    std::function<void()> action(void (CrosshairController::*)());
    void wireButton(Platform::StatusItem&);
    void refreshShortcutsInMenu();
    void menuWillOpen() override;
    void statusItemClicked(const Platform::StatusItemClick&);
    bool openMenuOnce();

    Platform::System& m_system;
    KeyboardShortcuts::KeyboardShortcuts& m_keyboardShortcuts;
    ShortcutNames& m_names;
    CrosshairController& m_controller;

    std::unique_ptr<StatusMenu> m_statusMenu;
    std::unique_ptr<Platform::StatusItem> m_statusItem;  // present exactly while the icon is installed; ends before its menu
    std::shared_ptr<StatusItemController*> m_self;       // empties when this goes
};

}  // namespace Tarnwick
