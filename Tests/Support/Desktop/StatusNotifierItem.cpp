#include "Support/Desktop/StatusNotifierItem.h"

#include <stdexcept>

namespace TestSupport {

using namespace Platform::Freedesktop;

namespace {

// Pixels of four bytes: opaqueness, red, green, blue.
long visiblePixelsOf(GVariant* bytes)
{
    gsize count = 0;
    const auto* data = static_cast<const unsigned char*>(g_variant_get_fixed_array(bytes, &count, 1));
    long visible = 0;
    for (gsize i = 0; i < count; i += 4)
        visible += data[i] > 127 ? 1 : 0;
    return visible;
}

StatusNotifierItem::Picture pictureFrom(GVariant* description)
{
    StatusNotifierItem::Picture picture;
    GVariant* bytes = nullptr;
    g_variant_get(description, "(ii@ay)", &picture.width, &picture.height, &bytes);
    const VariantPointer owned(bytes);
    picture.visiblePixels = visiblePixelsOf(bytes);
    return picture;
}

}  // namespace

StatusNotifierItem::StatusNotifierItem(std::shared_ptr<BusConnection> bus, const std::string& service, const std::string& path)
    : m_bus(std::move(bus)), m_object{service, path, "org.kde.StatusNotifierItem"}
{
}

std::string StatusNotifierItem::toolTip() const
{
    const auto value = m_bus->property(m_object, "ToolTip");
    const VariantPointer title(g_variant_get_child_value(value.get(), 2));
    return g_variant_get_string(title.get(), nullptr);
}

bool StatusNotifierItem::isMenu() const { return g_variant_get_boolean(m_bus->property(m_object, "ItemIsMenu").get()) != 0; }

std::vector<StatusNotifierItem::Picture> StatusNotifierItem::pictures() const
{
    const auto value = m_bus->property(m_object, "IconPixmap");
    std::vector<Picture> pictures;
    for (gsize i = 0; i < g_variant_n_children(value.get()); ++i) {
        const VariantPointer description(g_variant_get_child_value(value.get(), i));
        pictures.push_back(pictureFrom(description.get()));
    }
    return pictures;
}

TrayMenu StatusNotifierItem::menu() const
{
    const auto path = m_bus->property(m_object, "Menu");
    return {m_bus, m_object.service, g_variant_get_string(path.get(), nullptr)};
}

std::string StatusNotifierItem::text(const char* property) const { return g_variant_get_string(m_bus->property(m_object, property).get(), nullptr); }

void StatusNotifierItem::send(const char* click) const { m_bus->call(m_object, click, g_variant_new("(ii)", 5, 5)); }

}  // namespace TestSupport
