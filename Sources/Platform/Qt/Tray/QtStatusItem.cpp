#include "Platform/Qt/Tray/QtStatusItem.h"

#include <QApplication>
#include <QWidget>
#include <utility>

#include "Platform/Qt/Tray/TrayGlyph.h"

namespace Platform {
namespace {

// Over D-Bus they do not travel with a click; the X server knows them.
std::uint32_t heldModifierFlags()
{
    const auto held = QGuiApplication::queryKeyboardModifiers();
    const auto flag = [held](Qt::KeyboardModifier modifier, std::uint32_t value) { return held.testFlag(modifier) ? value : 0; };
    return flag(Qt::ControlModifier, ModifierFlag::control) | flag(Qt::ShiftModifier, ModifierFlag::shift) |
        flag(Qt::AltModifier, ModifierFlag::option) | flag(Qt::MetaModifier, ModifierFlag::command);
}

}  // namespace

QtStatusItem::QtStatusItem(std::vector<QtStatusItem*>& items) : m_items(items) { m_items.push_back(this); }

QtStatusItem::~QtStatusItem()
{
    std::erase(m_items, this);
    if (m_openedMenu != nullptr)
        m_openedMenu->dismiss();
}

void QtStatusItem::show(TrayKind kind)
{
    m_kind = kind;
    m_icon = std::make_unique<QSystemTrayIcon>();
    QObject::connect(
        m_icon.get(), &QSystemTrayIcon::activated, m_icon.get(), [this](auto reason) { clicked(reason); }, Qt::QueuedConnection);
    updatePanelMenu();
    if (m_hasImage)
        showImage();
}

void QtStatusItem::setMenu(Menu* menu)
{
    m_menu = static_cast<QtMenu*>(menu);
    updatePanelMenu();
}

void QtStatusItem::setPanelMenu(Menu* menu)
{
    m_panelMenu = static_cast<QtMenu*>(menu);
    updatePanelMenu();
}

// Over XEmbed Qt would open it on every right click, beside the action.
void QtStatusItem::updatePanelMenu()
{
    if (m_icon == nullptr || m_kind != TrayKind::dbus)
        return;
    auto* const menu = m_menu != nullptr ? m_menu : m_panelMenu;
    auto* const qtMenu = menu != nullptr ? menu->qtMenu() : nullptr;
    if (m_icon->contextMenu() != qtMenu)
        m_icon->setContextMenu(qtMenu);
}

void QtStatusItem::setImage(StatusItemImage, std::string_view accessibilityDescription)
{
    m_hasImage = true;
    m_description = QString::fromUtf8(accessibilityDescription.data(), static_cast<qsizetype>(accessibilityDescription.size()));
    if (m_icon != nullptr)
        showImage();
}

// Qt complains on standard error about an icon that is shown without a picture.
void QtStatusItem::showImage()
{
    m_icon->setToolTip(m_description);
    m_icon->setIcon(trayGlyphIcon());
    m_icon->show();
    nameWindow();
}

// The window that Qt gives to an XEmbed host has no name for screen readers.
void QtStatusItem::nameWindow() const
{
    const auto widgets = QApplication::topLevelWidgets();
    for (auto* const widget : widgets) {
        if (!widget->inherits("QSystemTrayIconSys"))
            continue;
        widget->setAccessibleName(m_description);
        widget->setWindowTitle(m_description);
    }
}

void QtStatusItem::clicked(QSystemTrayIcon::ActivationReason reason)
{
    // Over XEmbed the second of two quick clicks is told as a double click only.
    const bool isLeft = reason == QSystemTrayIcon::Trigger || reason == QSystemTrayIcon::DoubleClick;
    const bool isRight = reason == QSystemTrayIcon::Context;
    if (!isLeft && !isRight)
        return;
    if (isClosingClick())
        return;
    if (m_menu != nullptr)
        performClick(nullptr);
    else if (m_action)
        m_action({.isRightMouseUp = isRight, .modifierFlags = heldModifierFlags()});
}

// A panel gets the press, too, that closes a menu of ours, and tells of it as of any other.
bool QtStatusItem::isClosingClick() const
{
    auto* const menu = m_menu != nullptr ? m_menu : m_panelMenu;
    return m_kind == TrayKind::dbus && menu != nullptr && menu->takeClosingClick();
}

void QtStatusItem::performClick(std::function<void()> closed)
{
    if (m_menu == nullptr) {
        if (closed)
            closed();
        return;
    }
    m_openedMenu = m_menu;
    // Over D-Bus nobody tells where the icon is.
    const auto icon = m_icon != nullptr && m_kind == TrayKind::xembed ? m_icon->geometry() : QRect();
    m_menu->popUp(icon, [this, closed = std::move(closed)] {
        m_openedMenu = nullptr;
        if (closed)
            closed();
    });
}

}  // namespace Platform
