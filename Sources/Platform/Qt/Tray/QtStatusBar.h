// The desktop's tray, over D-Bus (StatusNotifierItem) or XEmbed, whichever is there. Needs a
// QApplication. Main thread only.
#pragma once

#include <functional>
#include <vector>

#include "Platform/Qt/Tray/TrayHosts.h"
#include "Platform/StatusBar.h"

namespace Platform {

class QtStatusItem;

class QtStatusBar final : public StatusBar {
public:
    // `menuTrackingChanged` is told when the first menu that may hold the keyboard opens and
    // when the last one closes.
    explicit QtStatusBar(std::function<void(bool isTracking)> menuTrackingChanged);
    ~QtStatusBar() override;
    QtStatusBar(const QtStatusBar&) = delete;
    QtStatusBar& operator=(const QtStatusBar&) = delete;

    std::unique_ptr<Menu> makeMenu() override;
    std::unique_ptr<StatusItem> makeStatusItem() override;

private:
    friend class QtStatusItem;

    void menuTracking(bool isTracking);

    const std::function<void(bool)> m_menuTrackingChanged;
    int m_trackedMenus = 0;
    std::vector<QtStatusItem*> m_items;
    TrayHosts m_hosts;
};

}  // namespace Platform
