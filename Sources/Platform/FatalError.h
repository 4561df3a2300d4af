// For programming errors and states in which going on would be wrong: one line
// on standard error that names the operation and the value, then abort(). The
// window system gives back cursor, grabs and windows of a dead client.
#pragma once

#include <string_view>

namespace Platform {

[[noreturn]] void fatalError(std::string_view operation, std::string_view value);

}  // namespace Platform
