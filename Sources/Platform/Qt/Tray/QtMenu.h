// A menu of the status bar as a QMenu: this program opens it itself, or a panel shows a
// copy of it that it gets over D-Bus. Main thread only.
#pragma once

#include <QMenu>
#include <QPointer>
#include <QTimer>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "Platform/StatusBar.h"

namespace Platform {

class QtMenu final : public Menu {
public:
    // `trackingChanged` is told when a menu that may hold the keyboard opens and closes.
    explicit QtMenu(std::function<void(bool isTracking)> trackingChanged);
    ~QtMenu() override;
    QtMenu(const QtMenu&) = delete;
    QtMenu& operator=(const QtMenu&) = delete;

    void setDelegate(MenuDelegate* delegate) override { m_delegate = delegate; }
    MenuItem& addItem(std::string_view title, const KeyEquivalent&, std::function<void()> action) override;
    void addSeparator() override { m_menu->addSeparator(); }

    // Opens it by the icon (empty: by the pointer) and returns at once; one that is open
    // stays. `closed` is called once, from inside the call where the menu cannot open.
    void popUp(const QRect& icon, std::function<void()> closed);
    // A press outside the menu closes it and still reaches what is there, which may be the
    // icon. True when such a press came just now at this place; its click is then used up.
    bool takeClosingClick();
    // Closes what popUp() opened, and calls nobody back.
    void dismiss();

    QMenu* qtMenu() { return m_menu.get(); }

private:
    class Item;

    struct Press {
        std::chrono::steady_clock::time_point time;
        QPoint place;
    };

    void aboutToShow();
    void aboutToHide();
    void setTracking(bool);

    const std::function<void(bool)> m_trackingChanged;
    MenuDelegate* m_delegate = nullptr;
    std::function<void()> m_closed;
    bool m_isTracking = false;
    std::optional<Press> m_closingPress;
    // Not every panel tells when it closes the menu that it draws.
    QTimer m_longestTracking;
    std::unique_ptr<QMenu> m_menu;
    std::vector<std::unique_ptr<Item>> m_items;
};

}  // namespace Platform
