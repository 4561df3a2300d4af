#include "Platform/Qt/Tray/QtMenu.h"

#include <QAction>
#include <QApplication>
#include <QCursor>
#include <QScreen>
#include <QString>
#include <utility>

#include "Platform/Qt/Tray/KeySequence.h"
#include "Platform/Qt/Tray/MenuPlace.h"

namespace Platform {
namespace {

constexpr std::chrono::seconds longestPanelMenu{30};

// From a press on the icon to the word that it was clicked.
constexpr std::chrono::milliseconds longestClick{500};

// An ampersand would underline the character after it.
QString textOf(std::string_view title)
{
    return QString::fromUtf8(title.data(), static_cast<qsizetype>(title.size())).replace(QLatin1Char('&'), QLatin1String("&&"));
}

}  // namespace

class QtMenu::Item final : public MenuItem {
public:
    explicit Item(QAction& action) : m_action(action) { }

    void setTitle(std::string_view title) override { m_action.setText(textOf(title)); }
    void setKeyEquivalent(const KeyEquivalent& keyEquivalent) override { m_action.setShortcut(keySequenceOf(keyEquivalent)); }

private:
    QAction& m_action;
};

QtMenu::QtMenu(std::function<void(bool)> trackingChanged) : m_trackingChanged(std::move(trackingChanged)), m_menu(std::make_unique<QMenu>())
{
    m_longestTracking.setSingleShot(true);
    QObject::connect(&m_longestTracking, &QTimer::timeout, m_menu.get(), [this] { setTracking(false); });
    QObject::connect(m_menu.get(), &QMenu::aboutToShow, m_menu.get(), [this] { aboutToShow(); });
    QObject::connect(m_menu.get(), &QMenu::aboutToHide, m_menu.get(), [this] { aboutToHide(); });
}

QtMenu::~QtMenu()
{
    dismiss();
    m_menu->disconnect();
    setTracking(false);
}

MenuItem& QtMenu::addItem(std::string_view title, const KeyEquivalent& keyEquivalent, std::function<void()> action)
{
    auto* const qtAction = m_menu->addAction(textOf(title));
    // A panel tells of a choice before the menu's end, if it tells of that at all.
    QObject::connect(qtAction, &QAction::triggered, m_menu.get(), [this] { setTracking(false); });
    // Queued, because the action may destroy the menu.
    QObject::connect(
        qtAction, &QAction::triggered, m_menu.get(), [action = std::move(action)] { action(); }, Qt::QueuedConnection);
    m_items.push_back(std::make_unique<Item>(*qtAction));
    m_items.back()->setKeyEquivalent(keyEquivalent);
    return *m_items.back();
}

void QtMenu::popUp(const QRect& icon, std::function<void()> closed)
{
    if (m_menu->isVisible())
        return;
    m_closed = std::move(closed);
    const auto pointer = QCursor::pos();
    const auto* const screen = QGuiApplication::screenAt(pointer);
    m_menu->popup(screen != nullptr ? menuPlace(pointer, icon, m_menu->sizeHint(), screen->geometry(), screen->availableGeometry()) : pointer);
    if (!m_menu->isVisible())
        aboutToHide();
}

void QtMenu::dismiss()
{
    m_closed = nullptr;
    m_menu->hide();
}

void QtMenu::aboutToShow()
{
    setTracking(true);
    m_longestTracking.start(longestPanelMenu);
    if (m_delegate != nullptr)
        m_delegate->menuWillOpen();
}

bool QtMenu::takeClosingClick()
{
    const auto press = std::exchange(m_closingPress, std::nullopt);
    return press && std::chrono::steady_clock::now() - press->time <= longestClick &&
        (QCursor::pos() - press->place).manhattanLength() <= QApplication::startDragDistance();
}

void QtMenu::aboutToHide()
{
    const auto pointer = QCursor::pos();
    if (QGuiApplication::mouseButtons() != Qt::NoButton && !m_menu->geometry().contains(pointer))
        m_closingPress = Press{.time = std::chrono::steady_clock::now(), .place = pointer};
    setTracking(false);
    if (const auto closed = std::exchange(m_closed, nullptr))
        closed();
}

void QtMenu::setTracking(bool isTracking)
{
    m_longestTracking.stop();
    if (std::exchange(m_isTracking, isTracking) != isTracking)
        m_trackingChanged(isTracking);
}

}  // namespace Platform
