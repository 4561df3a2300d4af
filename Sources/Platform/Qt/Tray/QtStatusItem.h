// One icon in the tray. Main thread only; it must not outlive its bar.
#pragma once

#include <QString>
#include <QSystemTrayIcon>
#include <functional>
#include <memory>
#include <vector>

#include "Platform/Qt/Tray/QtMenu.h"
#include "Platform/Qt/Tray/TrayHosts.h"

namespace Platform {

class QtStatusItem final : public StatusItem, private StatusItemButton {
public:
    // Stays in `items` while it lives.
    explicit QtStatusItem(std::vector<QtStatusItem*>& items);
    ~QtStatusItem() override;
    QtStatusItem(const QtStatusItem&) = delete;
    QtStatusItem& operator=(const QtStatusItem&) = delete;

    // There is a host of that kind: shows the icon once it has an image.
    void show(TrayKind);

    StatusItemButton* button() override { return this; }
    void setMenu(Menu*) override;
    void setPanelMenu(Menu*) override;

private:
    void setImage(StatusItemImage, std::string_view accessibilityDescription) override;
    void setAction(std::function<void(const StatusItemClick&)> action) override { m_action = std::move(action); }
    void performClick(std::function<void()> closed) override;
    void clicked(QSystemTrayIcon::ActivationReason);
    bool isClosingClick() const;
    void updatePanelMenu();
    void showImage();
    void nameWindow() const;

    std::vector<QtStatusItem*>& m_items;
    QtMenu* m_menu = nullptr;
    QtMenu* m_panelMenu = nullptr;
    QtMenu* m_openedMenu = nullptr;
    bool m_hasImage = false;
    QString m_description;
    std::function<void(const StatusItemClick&)> m_action;
    TrayKind m_kind = TrayKind::unknown;
    std::unique_ptr<QSystemTrayIcon> m_icon;  // present once there is a host
};

}  // namespace Platform
