// Whether the desktop has a place for tray icons, and of which kind. Qt decides once, at
// the first touch of a QSystemTrayIcon, which kind it speaks for the rest of the process's
// life; so nobody may touch one before this knows. Waits for what the session bus and the
// X server tell by themselves, never by asking again. Main thread only.
#pragma once

#include <xcb/xcb.h>

#include <QAbstractNativeEventFilter>
#include <QObject>
#include <functional>
#include <memory>

class QDBusServiceWatcher;

namespace Platform {

enum class TrayKind {
    unknown,  // no host was seen yet
    dbus,     // StatusNotifierItem; the host draws the menu of a right click
    xembed,   // an X window of ours inside the host's; all clicks reach it
};

class TrayHosts final : public QObject, private QAbstractNativeEventFilter {
    Q_OBJECT

public:
    // `found` is called once, when kind() is no longer unknown. Where there is no host at the
    // start, one line on standard error says so. Nothing happens before start().
    explicit TrayHosts(std::function<void()> found);
    ~TrayHosts() override;

    void start();
    TrayKind kind() const { return m_kind; }

private Q_SLOTS:
    void askWatcher();

private:
    bool watchBus();
    void watcherAnswered(bool hasHost);
    bool nativeEventFilter(const QByteArray& eventType, void* message, qintptr* result) override;
    bool hasXEmbedHost() const;
    void found(TrayKind);
    void sayThereIsNone();

    const std::function<void()> m_found;
    TrayKind m_kind = TrayKind::unknown;
    bool m_isStarted = false;
    bool m_saidThereIsNone = false;
    bool m_isWatchingX = false;
    xcb_connection_t* m_x = nullptr;
    xcb_atom_t m_manager = XCB_ATOM_NONE;
    xcb_atom_t m_selection = XCB_ATOM_NONE;
    std::unique_ptr<QDBusServiceWatcher> m_busWatcher;
};

}  // namespace Platform
