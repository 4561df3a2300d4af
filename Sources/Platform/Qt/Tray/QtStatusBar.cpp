#include "Platform/Qt/Tray/QtStatusBar.h"

#include <utility>

#include "Platform/Qt/Tray/QtMenu.h"
#include "Platform/Qt/Tray/QtStatusItem.h"

namespace Platform {

QtStatusBar::QtStatusBar(std::function<void(bool)> menuTrackingChanged)
    : m_menuTrackingChanged(std::move(menuTrackingChanged)), m_hosts([this] {
          for (auto* const item : m_items)
              item->show(m_hosts.kind());
      })
{
}

QtStatusBar::~QtStatusBar() = default;

std::unique_ptr<Menu> QtStatusBar::makeMenu()
{
    return std::make_unique<QtMenu>([this](bool isTracking) { menuTracking(isTracking); });
}

std::unique_ptr<StatusItem> QtStatusBar::makeStatusItem()
{
    auto item = std::make_unique<QtStatusItem>(m_items);
    if (m_hosts.kind() != TrayKind::unknown)
        item->show(m_hosts.kind());
    m_hosts.start();
    return item;
}

void QtStatusBar::menuTracking(bool isTracking)
{
    const bool wasTracking = m_trackedMenus > 0;
    m_trackedMenus += isTracking ? 1 : -1;
    if (wasTracking != (m_trackedMenus > 0))
        m_menuTrackingChanged(isTracking);
}

}  // namespace Platform
