#include "Platform/X11/Capture/CaptureServer.h"

#include <xcb/composite.h>
#include <xcb/damage.h>
#include <xcb/shape.h>
#include <xcb/shm.h>
#include <xcb/xfixes.h>

#include <algorithm>

namespace Platform::X11 {

std::unique_ptr<CaptureServer> CaptureServer::open(const std::string& displayName, CanvasMemory memory)
{
    auto connection = Connection::open(displayName);
    if (!connection)
        return nullptr;
    return std::unique_ptr<CaptureServer>(new CaptureServer(std::move(connection), memory));
}

CaptureServer::CaptureServer(std::unique_ptr<Connection> connection, CanvasMemory memory)
    : m_connection(std::move(connection)), m_canvasMemory(memory)
{
    for (auto* extension : {&xcb_composite_id, &xcb_render_id, &xcb_shape_id, &xcb_shm_id, &xcb_xfixes_id, &xcb_damage_id})
        xcb_prefetch_extension_data(*m_connection, extension);
    m_hasShape = m_connection->has(xcb_shape_id);
    m_hasSharedMemory = m_connection->has(xcb_shm_id);
    m_hasFixes = m_connection->has(xcb_xfixes_id);
    m_hasDamage = m_connection->has(xcb_damage_id);
    if (m_connection->has(xcb_composite_id) && m_connection->has(xcb_render_id) && m_connection->hasUsualPixels())
        negotiate();
}

void CaptureServer::negotiate()
{
    constexpr int namesPixmaps = 2;  // COMPOSITE 0.2
    constexpr int fillsSolid = 10;   // RENDER 0.10
    auto& c = *m_connection;
    const auto compositeCookie = xcb_composite_query_version(c, 0, 4);
    const auto renderCookie = xcb_render_query_version(c, 0, 11);
    const auto formatsCookie = xcb_render_query_pict_formats(c);
    const auto sharedMemoryCookie = m_hasSharedMemory ? xcb_shm_query_version(c) : xcb_shm_query_version_cookie_t();
    if (m_hasFixes)
        xcb_discard_reply(c, xcb_xfixes_query_version(c, 5, 0).sequence);
    if (m_hasDamage)
        xcb_discard_reply(c, xcb_damage_query_version(c, 1, 1).sequence);
    const auto composite = adopt(xcb_composite_query_version_reply(c, compositeCookie, nullptr));
    const auto render = adopt(xcb_render_query_version_reply(c, renderCookie, nullptr));
    const auto isNewEnough = [](const auto& version, unsigned minor) {
        return version && (version->major_version > 0 || version->minor_version >= minor);
    };
    readFormats(formatsCookie);
    if (const auto shared = m_hasSharedMemory ? adopt(xcb_shm_query_version_reply(c, sharedMemoryCookie, nullptr)) : nullptr)
        m_hasSharedPixmaps =
            m_canvasMemory == CanvasMemory::shared && shared->shared_pixmaps != 0 && shared->pixmap_format == XCB_IMAGE_FORMAT_Z_PIXMAP;
    m_canCapture = isNewEnough(composite, namesPixmaps) && isNewEnough(render, fillsSolid) && formatOf(c.screen().root_visual) != 0;
}

void CaptureServer::readFormats(xcb_render_query_pict_formats_cookie_t cookie)
{
    const auto formats = adopt(xcb_render_query_pict_formats_reply(*m_connection, cookie, nullptr));
    if (!formats)
        return;
    for (auto screens = xcb_render_query_pict_formats_screens_iterator(formats.get()); screens.rem > 0; xcb_render_pictscreen_next(&screens)) {
        for (auto depths = xcb_render_pictscreen_depths_iterator(screens.data); depths.rem > 0; xcb_render_pictdepth_next(&depths)) {
            const auto* visuals = xcb_render_pictdepth_visuals(depths.data);
            for (int i = 0; i < xcb_render_pictdepth_visuals_length(depths.data); ++i)
                m_formats.emplace_back(visuals[i].visual, visuals[i].format);
        }
    }
    std::sort(m_formats.begin(), m_formats.end());
}

xcb_render_pictformat_t CaptureServer::formatOf(xcb_visualid_t visual) const
{
    const auto found = std::lower_bound(m_formats.begin(), m_formats.end(), std::pair<xcb_visualid_t, xcb_render_pictformat_t>(visual, 0));
    return found != m_formats.end() && found->first == visual ? found->second : 0;
}

}  // namespace Platform::X11
