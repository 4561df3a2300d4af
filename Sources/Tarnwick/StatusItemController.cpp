#include "Tarnwick/StatusItemController.h"

#include <string_view>
#include <utility>

#include "Tarnwick/CrosshairController.h"

namespace Tarnwick {
namespace {

constexpr std::string_view showCrosshairTitle = "Show Crosshair";
constexpr std::string_view hideCrosshairTitle = "Hide Crosshair";
constexpr std::string_view showLoupeTitle = "Show Loupe";
constexpr std::string_view hideLoupeTitle = "Hide Loupe";
constexpr std::string_view preferencesTitle = "Preferences…";
constexpr std::string_view quitTitle = "Quit Tarnwick";
constexpr std::string_view accessibilityDescription = "Tarnwick";

}  // namespace

StatusItemController::StatusItemController(
    Platform::System& system, KeyboardShortcuts::KeyboardShortcuts& keyboardShortcuts, ShortcutNames& names, CrosshairController& controller)
    : m_system(system), m_keyboardShortcuts(keyboardShortcuts), m_names(names), m_controller(controller),
      m_self(std::make_shared<StatusItemController*>(this))
{
}

StatusItemController::~StatusItemController() = default;

void StatusItemController::applyMenuBarItem()
{
    const bool shouldShow = m_controller.showMenuBarItem();
    if (shouldShow && m_statusItem == nullptr)
        installStatusItem();
    else if (!shouldShow && m_statusItem != nullptr)
        removeStatusItem();
}

void StatusItemController::reinstallStatusItem()
{
    removeStatusItem();
    if (m_controller.showMenuBarItem())
        installStatusItem();
}

void StatusItemController::installStatusItem()
{
    auto statusItem = m_system.statusBar.makeStatusItem();
    buildMenu();
    wireButton(*statusItem);
    m_statusItem = std::move(statusItem);
}

void StatusItemController::buildMenu()
{
    m_statusMenu = std::make_unique<StatusMenu>();
    m_statusMenu->menu = m_system.statusBar.makeMenu();
    auto& menu = *m_statusMenu->menu;
    menu.setDelegate(this);
    addToggleItem(m_statusMenu->showCrosshair, showCrosshairTitle, &CrosshairController::showCrosshair);
    addToggleItem(m_statusMenu->showLoupe, showLoupeTitle, &CrosshairController::showLoupe);
    refreshShortcutsInMenu();
    menu.addSeparator();
    menu.addItem(preferencesTitle, {}, action(&CrosshairController::showPreferences));
    menu.addSeparator();
    menu.addItem(quitTitle, {.text = "q"}, [&application = m_system.application] { application.terminate(); });
}

void StatusItemController::addToggleItem(std::optional<ToggleItem>& toggle, std::string_view title, void (CrosshairController::*toggleAction)())
{
    auto& item = m_statusMenu->menu->addItem(title, {}, action(toggleAction));
    toggle.emplace(
        item, KeyboardShortcuts::MenuItemShortcut::System{m_keyboardShortcuts, m_system.keyboardLayout, m_system.notifications, m_system.mainLoop});
}

std::function<void()> StatusItemController::action(void (CrosshairController::*function)())
{
    return [&controller = m_controller, function] { (controller.*function)(); };
}

void StatusItemController::wireButton(Platform::StatusItem& statusItem)
{
    auto* const button = statusItem.button();
    if (button != nullptr)
        button->setImage(Platform::StatusItemImage::plusViewfinder, accessibilityDescription);
    if (m_controller.statusItemAction() == StatusItemAction::menu) {
        statusItem.setMenu(m_statusMenu->menu.get());
    } else if (button != nullptr) {
        button->setAction([this](const Platform::StatusItemClick& click) { statusItemClicked(click); });
        statusItem.setPanelMenu(m_statusMenu->menu.get());
    }
}

void StatusItemController::refreshShortcutsInMenu()
{
    auto& crosshair = *m_statusMenu->showCrosshair;
    auto& loupe = *m_statusMenu->showLoupe;
    crosshair.shortcut.setShortcut(m_names.toggleCrosshair());
    loupe.shortcut.setShortcut(m_names.toggleLoupe());
    crosshair.item.setTitle(m_controller.showsCrosshair() ? hideCrosshairTitle : showCrosshairTitle);
    loupe.item.setTitle(m_controller.showsLoupe() ? hideLoupeTitle : showLoupeTitle);
}

// The menu must not change while it is being opened.
void StatusItemController::menuWillOpen()
{
    m_system.mainLoop.post([weakSelf = std::weak_ptr(m_self)] {
        if (const auto self = weakSelf.lock())
            (*self)->refreshShortcutsInMenu();
    });
}

void StatusItemController::statusItemClicked(const Platform::StatusItemClick& click)
{
    const bool wantsMenu = click.isRightMouseUp || (click.modifierFlags & Platform::ModifierFlag::control) != 0;
    if (wantsMenu && openMenuOnce())
        return;
    switch (m_controller.statusItemAction()) {
    case StatusItemAction::menu:  // switched by another program: the icon is wired for another action
        return;
    case StatusItemAction::crosshair:
        m_controller.showCrosshair();
        return;
    case StatusItemAction::loupe:
        m_controller.showLoupe();
        return;
    }
}

// Attached for this once only, so that the next click reaches the action again.
bool StatusItemController::openMenuOnce()
{
    if (m_statusMenu == nullptr || m_statusItem == nullptr || m_statusItem->button() == nullptr)
        return false;
    m_statusItem->setMenu(m_statusMenu->menu.get());
    m_statusItem->button()->performClick([&statusItem = *m_statusItem] { statusItem.setMenu(nullptr); });
    return true;
}

}  // namespace Tarnwick
