#include "Support/FakeStatusBar.h"

#include <algorithm>
#include <utility>

namespace TestSupport {

FakeMenu* FakeStatusBar::openMenu() const
{
    const auto found = std::find_if(m_menus.begin(), m_menus.end(), [](const FakeMenu* menu) { return menu->isOpen(); });
    return found != m_menus.end() ? *found : nullptr;
}

std::unique_ptr<Platform::Menu> FakeStatusBar::makeMenu() { return std::make_unique<FakeMenu>(*this, ++m_madeMenus); }

std::unique_ptr<Platform::StatusItem> FakeStatusBar::makeStatusItem() { return std::make_unique<FakeStatusItem>(*this, ++m_madeItems); }

FakeMenu::FakeMenu(FakeStatusBar& bar, int number) : m_bar(bar), m_number(number)
{
    m_bar.m_menus.push_back(this);
    m_bar.m_log.add("statusBar.makeMenu " + std::to_string(number));
}

FakeMenu::~FakeMenu()
{
    std::erase(m_bar.m_menus, this);
    m_bar.m_log.add("menu " + std::to_string(m_number) + " remove");
}

std::vector<std::string> FakeMenu::titles() const
{
    std::vector<std::string> titles;
    for (const auto& item : m_items)
        titles.push_back(item->title());
    return titles;
}

void FakeMenu::open(std::function<void()> closed)
{
    m_bar.m_log.add("menu " + std::to_string(m_number) + " open");
    m_isOpen = true;
    m_closed = std::move(closed);
    if (m_delegate != nullptr)
        m_delegate->menuWillOpen();
}

void FakeMenu::close()
{
    m_bar.m_log.add("menu " + std::to_string(m_number) + " close");
    m_isOpen = false;
    if (const auto closed = std::exchange(m_closed, nullptr))
        closed();
}

void FakeMenu::choose(std::size_t index)
{
    const auto action = m_items.at(index)->action();
    close();
    action();
}

Platform::MenuItem& FakeMenu::addItem(std::string_view title, const Platform::KeyEquivalent& keyEquivalent, std::function<void()> action)
{
    m_items.push_back(std::make_unique<FakeMenuItem>(title, keyEquivalent, std::move(action)));
    return *m_items.back();
}

void FakeMenu::addSeparator() { m_items.push_back(std::make_unique<FakeMenuItem>("-", Platform::KeyEquivalent(), nullptr)); }

FakeStatusItem::FakeStatusItem(FakeStatusBar& bar, int number) : m_bar(bar), m_number(number), m_hasButton(!bar.m_withholdsButtons)
{
    m_bar.m_items.push_back(this);
    m_bar.m_log.add("statusBar.makeStatusItem " + std::to_string(number));
}

FakeStatusItem::~FakeStatusItem()
{
    std::erase(m_bar.m_items, this);
    add("remove");
}

void FakeStatusItem::add(const std::string& what) { m_bar.m_log.add("statusItem " + std::to_string(m_number) + " " + what); }

void FakeStatusItem::click(const Platform::StatusItemClick& click)
{
    if (m_menu != nullptr)
        m_menu->open();
    else if (m_action)
        m_action(click);
}

void FakeStatusItem::setMenu(Platform::Menu* menu)
{
    m_menu = static_cast<FakeMenu*>(menu);
    add("menu " + std::to_string(m_menu != nullptr ? m_menu->number() : 0));
}

void FakeStatusItem::setPanelMenu(Platform::Menu* menu)
{
    m_panelMenu = static_cast<FakeMenu*>(menu);
    add("panelMenu " + std::to_string(m_panelMenu != nullptr ? m_panelMenu->number() : 0));
}

void FakeStatusItem::setImage(Platform::StatusItemImage, std::string_view accessibilityDescription)
{
    m_accessibilityDescription = accessibilityDescription;
    add("image plusViewfinder " + m_accessibilityDescription);
}

void FakeStatusItem::setAction(std::function<void(const Platform::StatusItemClick&)> action)
{
    m_action = std::move(action);
    add("action");
}

void FakeStatusItem::performClick(std::function<void()> closed)
{
    add("performClick");
    if (m_menu != nullptr)
        m_menu->open(std::move(closed));
    else
        closed();
}

}  // namespace TestSupport
