#include "Platform/Qt/Tray/TrayHosts.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QDBusVariant>
#include <QFile>
#include <QGuiApplication>
#include <QVariant>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <utility>

namespace Platform {
namespace {

const QString watcherService = QStringLiteral("org.kde.StatusNotifierWatcher");
const QString watcherPath = QStringLiteral("/StatusNotifierWatcher");
const QString watcherInterface = QStringLiteral("org.kde.StatusNotifierWatcher");
const QString hostRegistered = QStringLiteral("StatusNotifierHostRegistered");

// Without an address libdbus would start a bus of its own.
bool hasSessionBus()
{
    if (const auto* address = std::getenv("DBUS_SESSION_BUS_ADDRESS"); address != nullptr && *address != '\0')
        return !std::string_view(address).starts_with("autolaunch:");
    const auto* folder = std::getenv("XDG_RUNTIME_DIR");
    return folder != nullptr && QFile::exists(QFile::decodeName(folder) + QStringLiteral("/bus"));
}

xcb_atom_t atomOf(xcb_connection_t* connection, std::string_view name)
{
    const auto cookie = xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(name.size()), name.data());
    auto* const reply = xcb_intern_atom_reply(connection, cookie, nullptr);
    const xcb_atom_t atom = reply != nullptr ? reply->atom : static_cast<xcb_atom_t>(XCB_ATOM_NONE);
    std::free(reply);
    return atom;
}

}  // namespace

TrayHosts::TrayHosts(std::function<void()> found) : m_found(std::move(found)) { }

TrayHosts::~TrayHosts() = default;

void TrayHosts::start()
{
    if (std::exchange(m_isStarted, true))
        return;
    if (const auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>()) {
        m_x = x11->connection();
        m_manager = atomOf(m_x, "MANAGER");
        m_selection = atomOf(m_x, "_NET_SYSTEM_TRAY_S0");
        qGuiApp->installNativeEventFilter(this);
        m_isWatchingX = true;
    }
    if (watchBus())
        askWatcher();
    else
        watcherAnswered(false);
}

bool TrayHosts::watchBus()
{
    if (!hasSessionBus())
        return false;
    auto bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return false;
    m_busWatcher = std::make_unique<QDBusServiceWatcher>(watcherService, bus, QDBusServiceWatcher::WatchForRegistration);
    connect(m_busWatcher.get(), &QDBusServiceWatcher::serviceRegistered, this, &TrayHosts::askWatcher);
    bus.connect(watcherService, watcherPath, watcherInterface, hostRegistered, this, SLOT(askWatcher()));
    return true;
}

// The watcher may be there before the panel whose icons it keeps.
void TrayHosts::askWatcher()
{
    if (m_kind != TrayKind::unknown)
        return;
    auto question =
        QDBusMessage::createMethodCall(watcherService, watcherPath, QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"));
    question << watcherInterface << QStringLiteral("IsStatusNotifierHostRegistered");
    question.setAutoStartService(false);
    auto* const answer = new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(question), this);
    connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer] {
        answer->deleteLater();
        const QDBusPendingReply<QDBusVariant> reply = *answer;
        watcherAnswered(reply.isValid() && reply.value().variant().toBool());
    });
}

void TrayHosts::watcherAnswered(bool hasHost)
{
    if (m_kind != TrayKind::unknown)
        return;
    if (hasHost)
        found(TrayKind::dbus);
    else if (hasXEmbedHost())
        found(TrayKind::xembed);
    else
        sayThereIsNone();
}

// A new host tells all clients of the root window.
bool TrayHosts::nativeEventFilter(const QByteArray& eventType, void* message, qintptr*)
{
    if (eventType != "xcb_generic_event_t" || m_kind != TrayKind::unknown)
        return false;
    const auto* const event = static_cast<const xcb_generic_event_t*>(message);
    if ((event->response_type & 0x7f) != XCB_CLIENT_MESSAGE)
        return false;
    const auto* const told = reinterpret_cast<const xcb_client_message_event_t*>(event);
    if (told->type == m_manager && told->data.data32[1] == m_selection)
        QMetaObject::invokeMethod(
            this, [this] { watcherAnswered(false); }, Qt::QueuedConnection);
    return false;
}

bool TrayHosts::hasXEmbedHost() const
{
    if (m_x == nullptr)
        return false;
    auto* const reply = xcb_get_selection_owner_reply(m_x, xcb_get_selection_owner(m_x, m_selection), nullptr);
    const bool hasOwner = reply != nullptr && reply->owner != XCB_WINDOW_NONE;
    std::free(reply);
    return hasOwner;
}

void TrayHosts::found(TrayKind kind)
{
    m_kind = kind;
    if (std::exchange(m_busWatcher, nullptr) != nullptr)
        QDBusConnection::sessionBus().disconnect(watcherService, watcherPath, watcherInterface, hostRegistered, this, SLOT(askWatcher()));
    if (std::exchange(m_isWatchingX, false))
        qGuiApp->removeNativeEventFilter(this);
    m_found();
}

void TrayHosts::sayThereIsNone()
{
    if (std::exchange(m_saidThereIsNone, true))
        return;
    std::fputs("tarnwick: this desktop shows no tray icons now; the shortcuts work, and the icon appears once there is a tray\n", stderr);
}

}  // namespace Platform
