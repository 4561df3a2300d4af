#include "Platform/X11/Keys/KeyGrabs.h"

namespace Platform::X11 {

std::vector<KeyCombination> grabKeys(Connection& connection, xcb_window_t window, std::span<const KeyCombination> combinations)
{
    std::vector<xcb_void_cookie_t> cookies;
    cookies.reserve(combinations.size());
    for (const auto& [keycode, modifiers] : combinations) {
        cookies.push_back(xcb_grab_key_checked(connection, 0, window, modifiers, keycode, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC));
    }
    std::vector<KeyCombination> refused;
    for (std::size_t i = 0; i < cookies.size(); ++i) {
        if (adopt(xcb_request_check(connection, cookies[i])))
            refused.push_back(combinations[i]);
    }
    return refused;
}

void ungrabKeys(Connection& connection, xcb_window_t window, std::span<const KeyCombination> combinations)
{
    for (const auto& [keycode, modifiers] : combinations)
        xcb_ungrab_key(connection, keycode, window, modifiers);
    connection.flush();
}

std::vector<KeyCombination> lockVariants(const KeyCombination& combination, std::uint16_t locks)
{
    std::vector<KeyCombination> variants;
    forEachSubset(locks, [&](std::uint16_t locked) {
        variants.push_back({combination.keycode, static_cast<std::uint16_t>(combination.modifiers | locked)});
    });
    return variants;
}

}  // namespace Platform::X11
