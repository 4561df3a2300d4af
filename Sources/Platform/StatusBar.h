// The part of the desktop where programs show a small icon each (a tray, a panel, a menu
// bar), and the menu of such an icon. Main thread only; every callback arrives there.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "Platform/KeyCodes.h"

namespace Platform {

// The hint beside a menu item. It only shows; it does not make the key do anything.
struct KeyEquivalent {
    // UTF-8, as Shortcut::nsMenuItemKeyEquivalent() gives: a character, or one of the private
    // block from U+F700 on for keys that type none. Empty for no hint.
    std::string text;
    std::uint32_t modifierMask = ModifierFlag::command;  // ModifierFlag
    // Whether the system may move the hint to another key that is easier to reach on the
    // user's layout. No desktop here does.
    bool allowsAutomaticLocalization = true;

    friend bool operator==(const KeyEquivalent&, const KeyEquivalent&) = default;
};

// Belongs to its menu.
class MenuItem {
public:
    virtual ~MenuItem() = default;

    virtual void setTitle(std::string_view) = 0;
    virtual void setKeyEquivalent(const KeyEquivalent&) = 0;
};

class MenuDelegate {
public:
    virtual ~MenuDelegate() = default;

    // The menu is about to be shown, by this program or by the desktop's panel. A panel may
    // also just ask in advance.
    virtual void menuWillOpen() = 0;
};

// Destroying a menu closes it. A menu that is open may be destroyed, but not from inside
// one of its own calls.
class Menu {
public:
    virtual ~Menu() = default;

    // The delegate must outlive the menu or be taken back with null.
    virtual void setDelegate(MenuDelegate*) = 0;

    // `action` runs when the user chooses the item, after the menu has closed. Valid as
    // long as the menu.
    virtual MenuItem& addItem(std::string_view title, const KeyEquivalent&, std::function<void()> action) = 0;
    virtual void addSeparator() = 0;
};

// What went up over the icon, and which keys were held. Where the modifiers do not travel
// with the click, the implementation asks for them.
struct StatusItemClick {
    bool isRightMouseUp = false;
    std::uint32_t modifierFlags = 0;  // ModifierFlag
};

enum class StatusItemImage { plusViewfinder };

class StatusItemButton {
public:
    virtual ~StatusItemButton() = default;

    virtual void setImage(StatusItemImage, std::string_view accessibilityDescription) = 0;

    // Called on a left or right click while no menu is attached to the item.
    virtual void setAction(std::function<void(const StatusItemClick&)>) = 0;

    // Does what a click does: opens the attached menu at the icon, or at the pointer where
    // the desktop tells no place. `closed` is called once the menu has closed again and
    // before a chosen item's action; never after the item is gone; and from inside the
    // call where no menu is attached.
    virtual void performClick(std::function<void()> closed) = 0;
};

// Destroying it takes the icon away and closes the menu that it opened.
class StatusItem {
public:
    virtual ~StatusItem() = default;

    // Null where the system gives the item none.
    virtual StatusItemButton* button() = 0;

    // While a menu is attached, every click opens it and the button's action is not called.
    // Null detaches. The menu must be detached or the item destroyed before the menu goes.
    virtual void setMenu(Menu*) = 0;

    // The menu for panels that keep the right button to themselves and draw the menu in its
    // own way (those over D-Bus): they open it on a right click without telling of a click.
    // Other panels never open it by themselves. The same rule of lifetime.
    virtual void setPanelMenu(Menu*) = 0;
};

class StatusBar {
public:
    virtual ~StatusBar() = default;

    virtual std::unique_ptr<Menu> makeMenu() = 0;

    // As wide as its picture. The icon appears as soon as the desktop has a place for it,
    // and again whenever that place comes back.
    virtual std::unique_ptr<StatusItem> makeStatusItem() = 0;
};

}  // namespace Platform
