#include "Tarnwick/CrosshairController.h"

#include <utility>

namespace Tarnwick {
namespace {

// 1/60 s.
constexpr std::chrono::nanoseconds pumpInterval{16'666'666};

}  // namespace

CrosshairController::CrosshairController(
    Platform::System& system, KeyboardShortcuts::KeyboardShortcuts& keyboardShortcuts, LoupeOverlayFactory makeLoupe)
    : m_system(system), m_keyboardShortcuts(keyboardShortcuts), m_makeLoupe(std::move(makeLoupe)), m_names(keyboardShortcuts),
      m_showMenuBarItem(system.userDefaults, "tarnwick.showMenuBarItem", true),
      m_onboardingCompleted(system.userDefaults, "tarnwick.onboardingCompleted", false),
      m_statusItemAction(system.userDefaults, "tarnwick.statusItemAction", StatusItemAction::menu), m_captureQueue(system.serialQueues),
      m_self(std::make_shared<CrosshairController*>(this)), m_statusItem(system, keyboardShortcuts, m_names, *this)
{
    wireUp();
}

CrosshairController::~CrosshairController()
{
    m_self.reset();
    m_overlay.reset();
    m_loupe.reset();
    applyCursorVisibility();
}

void CrosshairController::showCrosshair()
{
    if (m_overlay != nullptr)
        dismissCrosshair();
    else
        showCrosshairOverlay();
}

void CrosshairController::showLoupe()
{
    if (m_loupe != nullptr)
        dismissLoupe();
    else
        showLoupeOverlay();
}

void CrosshairController::showPreferences()
{
    if (m_onShowPreferences)
        m_onShowPreferences();
}

void CrosshairController::dismissCrosshair()
{
    if (m_overlay != nullptr)
        m_overlay->orderOut();
    m_overlay.reset();
    stopCursorPumpIfIdle();
    applyCursorVisibility();
}

void CrosshairController::dismissLoupe()
{
    if (m_loupe != nullptr)
        m_loupe->orderOut();
    m_loupe.reset();
    stopCursorPumpIfIdle();
    applyCursorVisibility();
}

void CrosshairController::setShowMenuBarItem(bool value)
{
    change(m_showMenuBarItem, value);
    m_statusItem.applyMenuBarItem();
}

void CrosshairController::setOnboardingCompleted(bool value) { change(m_onboardingCompleted, value); }

void CrosshairController::setStatusItemAction(StatusItemAction value)
{
    change(m_statusItemAction, value);
    m_statusItem.reinstallStatusItem();
}

template <typename Value> void CrosshairController::change(PersistentSetting<Value>& setting, const Value& value)
{
    m_system.notifications.post(objectWillChange);
    setting.set(value);
}

void CrosshairController::wireUp()
{
    // Before anything uses a name: the first use stores the name's default, and the
    // migration would take that for the user's own choice.
    LegacyHotKeyMigration::runIfNeeded(m_system.userDefaults, m_keyboardShortcuts, m_names);
    m_statusItem.applyMenuBarItem();

    const auto toggle = [self = WeakSelf(m_self)](void (CrosshairController::*action)()) {
        return [self, action] {
            if (const auto controller = self.lock())
                ((*controller)->*action)();
        };
    };
    m_keyboardShortcuts.onKeyDown(m_names.toggleCrosshair(), toggle(&CrosshairController::showCrosshair));
    m_keyboardShortcuts.onKeyDown(m_names.toggleLoupe(), toggle(&CrosshairController::showLoupe));
}

void CrosshairController::showCrosshairOverlay()
{
    auto overlay = std::make_unique<CrosshairOverlayWindow>(m_system, m_captureQueue, deferred(&CrosshairController::dismissCrosshair));
    if (const auto mouseLocation = m_system.pointer.location())
        seedCrosshair(*overlay, *mouseLocation);
    overlay->makeKeyAndOrderFront();
    m_overlay = std::move(overlay);
    startCursorPumpIfNeeded();
    applyCursorVisibility();
}

void CrosshairController::showLoupeOverlay()
{
    if (!m_makeLoupe)
        return;
    auto loupe = m_makeLoupe(deferred(&CrosshairController::dismissLoupe));
    if (const auto mouseLocation = m_system.pointer.location())
        loupe->updateCursor(*mouseLocation);
    loupe->makeKeyAndOrderFront();
    m_loupe = std::move(loupe);
    startCursorPumpIfNeeded();
    applyCursorVisibility();
}

void CrosshairController::seedCrosshair(CrosshairOverlayWindow& overlay, Platform::Point mouseLocation)
{
    const auto frame = overlay.frame();
    auto& view = overlay.contentView();
    view.setMouse({mouseLocation.x - frame.x, mouseLocation.y - frame.y});
    view.setNeedsDisplay();
    view.scheduleStripRefresh(overlay.windowNumber());
}

// An overlay asks to be dismissed from inside its own event handlers, which must have
// returned before it goes.
std::function<void()> CrosshairController::deferred(void (CrosshairController::*dismiss)())
{
    return [&mainLoop = m_system.mainLoop, self = WeakSelf(m_self), dismiss] {
        mainLoop.post([self, dismiss] {
            if (const auto controller = self.lock())
                ((*controller)->*dismiss)();
        });
    };
}

void CrosshairController::startCursorPumpIfNeeded()
{
    if (m_cursorPump != nullptr)
        return;
    m_cursorPump = m_system.mainLoop.repeatingTimer(pumpInterval, deferred(&CrosshairController::pumpTick));
}

void CrosshairController::pumpTick()
{
    const auto mouseLocation = m_system.pointer.location();
    if (!mouseLocation)
        return;
    if (m_overlay != nullptr)
        seedCrosshair(*m_overlay, *mouseLocation);
    if (m_loupe != nullptr)
        m_loupe->updateCursor(*mouseLocation);
}

void CrosshairController::stopCursorPumpIfIdle()
{
    if (isIdle())
        m_cursorPump.reset();
}

void CrosshairController::applyCursorVisibility()
{
    const bool shouldHide = !isIdle();
    if (shouldHide == m_cursorHidden)
        return;
    if (shouldHide)
        m_system.cursor.hide();
    else
        m_system.cursor.show();
    m_cursorHidden = shouldHide;
}

}  // namespace Tarnwick
