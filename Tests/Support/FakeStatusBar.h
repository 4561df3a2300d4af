// A tray of a test: icons and menus as data, and a user who clicks. A menu opens as on a
// real desktop: the delegate hears of it, then the loop turns (the test's part), then the
// user chooses an item or closes the menu.
//
// Lines: "statusBar.makeMenu 1", "statusBar.makeStatusItem 1", "statusItem 1 image plusViewfinder
// Tarnwick", "statusItem 1 action", "statusItem 1 menu 1" (0: none), "statusItem 1 panelMenu 1",
// "statusItem 1 performClick", "statusItem 1 remove", "menu 1 open", "menu 1 close",
// "menu 1 remove".
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "Platform/StatusBar.h"
#include "Support/CallLog.h"

namespace TestSupport {

class FakeMenuItem final : public Platform::MenuItem {
public:
    FakeMenuItem() = default;
    FakeMenuItem(std::string_view title, Platform::KeyEquivalent keyEquivalent, std::function<void()> action)
        : m_title(title), m_keyEquivalent(std::move(keyEquivalent)), m_action(std::move(action))
    {
    }

    const std::string& title() const { return m_title; }  // of a separator: "-"
    const Platform::KeyEquivalent& keyEquivalent() const { return m_keyEquivalent; }
    int keyEquivalentChanges() const { return m_keyEquivalentChanges; }
    const std::function<void()>& action() const { return m_action; }

    void setTitle(std::string_view title) override { m_title = title; }
    void setKeyEquivalent(const Platform::KeyEquivalent& keyEquivalent) override
    {
        m_keyEquivalent = keyEquivalent;
        ++m_keyEquivalentChanges;
    }

private:
    std::string m_title;
    Platform::KeyEquivalent m_keyEquivalent;
    int m_keyEquivalentChanges = 0;
    std::function<void()> m_action;
};

class FakeMenu;
class FakeStatusItem;

class FakeStatusBar : public Platform::StatusBar {
public:
    explicit FakeStatusBar(CallLog& log) : m_log(log) { }

    // Items made from now on have no button.
    void withholdButtons() { m_withholdsButtons = true; }

    // The icon in the bar; null where there is none, and where there are several.
    FakeStatusItem* item() const { return m_items.size() == 1 ? m_items.front() : nullptr; }
    std::size_t itemCount() const { return m_items.size(); }
    // The menu that is open; null where there is none.
    FakeMenu* openMenu() const;
    FakeMenu* newestMenu() const { return m_menus.empty() ? nullptr : m_menus.back(); }

    std::unique_ptr<Platform::Menu> makeMenu() override;
    std::unique_ptr<Platform::StatusItem> makeStatusItem() override;

private:
    friend class FakeMenu;
    friend class FakeStatusItem;

    CallLog& m_log;
    bool m_withholdsButtons = false;
    int m_madeItems = 0;
    int m_madeMenus = 0;
    std::vector<FakeStatusItem*> m_items;
    std::vector<FakeMenu*> m_menus;
};

class FakeMenu final : public Platform::Menu {
public:
    FakeMenu(FakeStatusBar&, int number);
    ~FakeMenu() override;

    int number() const { return m_number; }
    std::vector<std::string> titles() const;
    FakeMenuItem& item(std::size_t index) { return *m_items.at(index); }
    bool isOpen() const { return m_isOpen; }

    // As the user or a panel does.
    void open(std::function<void()> closed = nullptr);
    void close();
    void choose(std::size_t index);

    void setDelegate(Platform::MenuDelegate* delegate) override { m_delegate = delegate; }
    Platform::MenuItem& addItem(std::string_view title, const Platform::KeyEquivalent&, std::function<void()> action) override;
    void addSeparator() override;

private:
    FakeStatusBar& m_bar;
    const int m_number;
    Platform::MenuDelegate* m_delegate = nullptr;
    std::vector<std::unique_ptr<FakeMenuItem>> m_items;
    bool m_isOpen = false;
    std::function<void()> m_closed;
};

class FakeStatusItem final : public Platform::StatusItem, private Platform::StatusItemButton {
public:
    FakeStatusItem(FakeStatusBar&, int number);
    ~FakeStatusItem() override;

    FakeMenu* menu() const { return m_menu; }
    FakeMenu* panelMenu() const { return m_panelMenu; }
    const std::string& accessibilityDescription() const { return m_accessibilityDescription; }

    // What the user does.
    void click(const Platform::StatusItemClick& click = {});
    void rightClick() { click({.isRightMouseUp = true}); }

    Platform::StatusItemButton* button() override { return m_hasButton ? this : nullptr; }
    void setMenu(Platform::Menu*) override;
    void setPanelMenu(Platform::Menu*) override;

private:
    void setImage(Platform::StatusItemImage, std::string_view accessibilityDescription) override;
    void setAction(std::function<void(const Platform::StatusItemClick&)>) override;
    void performClick(std::function<void()> closed) override;
    void add(const std::string& what);

    FakeStatusBar& m_bar;
    const int m_number;
    const bool m_hasButton;
    FakeMenu* m_menu = nullptr;
    FakeMenu* m_panelMenu = nullptr;
    std::string m_accessibilityDescription;
    std::function<void(const Platform::StatusItemClick&)> m_action;
};

}  // namespace TestSupport
