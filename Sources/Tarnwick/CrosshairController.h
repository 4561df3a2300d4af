// The one central object: it owns both overlays, feeds them the pointer sixty times a
// second while one is shown, hides the cursor meanwhile, and connects the two global
// shortcuts and the status item to them. Also the model that the preferences and onboarding views observe.
// Main thread only. It must not outlive the system and the shortcuts it was made with.
#pragma once

#include <functional>
#include <memory>
#include <string_view>

#include "KeyboardShortcuts/KeyboardShortcuts.h"
#include "Platform/Platform.h"
#include "Tarnwick/CaptureQueue.h"
#include "Tarnwick/CrosshairOverlay.h"
#include "Tarnwick/HotKey.h"
#include "Tarnwick/LoupeOverlay.h"
#include "Tarnwick/PersistentSetting.h"
#include "Tarnwick/StatusItemAction.h"
#include "Tarnwick/StatusItemController.h"

namespace Tarnwick {

class CrosshairController {
public:
    // Without a factory the loupe's shortcut and action do nothing.
    CrosshairController(Platform::System&, KeyboardShortcuts::KeyboardShortcuts&, LoupeOverlayFactory = nullptr);
    ~CrosshairController();
    CrosshairController(const CrosshairController&) = delete;
    CrosshairController& operator=(const CrosshairController&) = delete;

    // Actions of the shortcuts and the menu. The first two toggle.
    void showCrosshair();
    void showLoupe();
    void showPreferences();

    // Harmless when the overlay is not shown.
    void dismissCrosshair();
    void dismissLoupe();

    bool showsCrosshair() const { return m_overlay != nullptr; }
    bool showsLoupe() const { return m_loupe != nullptr; }

    void setOnShowPreferences(std::function<void()> callback) { m_onShowPreferences = std::move(callback); }

    // Settings, read from the store at each call.
    bool showMenuBarItem() const { return m_showMenuBarItem.get(); }
    void setShowMenuBarItem(bool);
    bool onboardingCompleted() const { return m_onboardingCompleted.get(); }
    void setOnboardingCompleted(bool);
    StatusItemAction statusItemAction() const { return m_statusItemAction.get(); }
    void setStatusItemAction(StatusItemAction);

    // Posted before one of the settings is written here; no user info.
    static constexpr std::string_view objectWillChange = "CrosshairController_objectWillChange";

private:
    // What a callback that may outlive the controller holds.
    using WeakSelf = std::weak_ptr<CrosshairController*>;

    void wireUp();
    void showCrosshairOverlay();
    void showLoupeOverlay();
    void seedCrosshair(CrosshairOverlayWindow&, Platform::Point mouseLocation);
    std::function<void()> deferred(void (CrosshairController::*dismiss)());
    void startCursorPumpIfNeeded();
    void pumpTick();
    void stopCursorPumpIfIdle();
    void applyCursorVisibility();
    bool isIdle() const { return m_overlay == nullptr && m_loupe == nullptr; }
    template <typename Value> void change(PersistentSetting<Value>&, const Value&);

    Platform::System& m_system;
    KeyboardShortcuts::KeyboardShortcuts& m_keyboardShortcuts;
    const LoupeOverlayFactory m_makeLoupe;
    ShortcutNames m_names;
    PersistentSetting<bool> m_showMenuBarItem;
    PersistentSetting<bool> m_onboardingCompleted;
    PersistentSetting<StatusItemAction> m_statusItemAction;
    std::function<void()> m_onShowPreferences;

    CaptureQueue m_captureQueue;
    std::unique_ptr<CrosshairOverlayWindow> m_overlay;  // present exactly while shown
    std::unique_ptr<LoupeOverlay> m_loupe;              // the same
    bool m_cursorHidden = false;
    std::unique_ptr<Platform::Timer> m_cursorPump;  // present only while an overlay is
    std::shared_ptr<CrosshairController*> m_self;   // empties when this goes
    StatusItemController m_statusItem;
};

}  // namespace Tarnwick
