// The window managers that a suite of parameterised tests runs under.
#pragma once

#include <gtest/gtest.h>
#include <ostream>

#include "Support/Desktop/WindowManager.h"

namespace TestSupport {

inline void PrintTo(WindowManagerKind kind, std::ostream* stream) { *stream << nameOf(kind); }

inline auto everyWindowManager()
{
    using enum WindowManagerKind;
    return testing::Values(none, openbox, openboxWithPicom, xfwm4, xfwm4WithCompositor, i3, kwin);
}

inline std::string nameOfParameter(const testing::TestParamInfo<WindowManagerKind>& info) { return nameOf(info.param); }

}  // namespace TestSupport
