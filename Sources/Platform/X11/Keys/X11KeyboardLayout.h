// What keys type, from the layouts that the X server has at the moment. Main thread only.
#pragma once

#include <memory>
#include <string>

#include "Platform/KeyboardLayout.h"

struct xkb_context;

namespace Platform::X11 {

class X11KeyboardLayout final : public KeyboardLayout {
public:
    // No connection is kept: each question makes its own (a few milliseconds), so an
    // idle program hears nothing of the keyboard. Without a server nothing is known.
    explicit X11KeyboardLayout(std::string displayName = {});
    ~X11KeyboardLayout() override;

    std::optional<std::string> displayText(std::uint16_t virtualKeyCode) override;

private:
    struct ContextDeleter {
        void operator()(xkb_context*) const;
    };

    const std::string m_displayName;
    const std::unique_ptr<xkb_context, ContextDeleter> m_context;
};

}  // namespace Platform::X11
