#include "Platform/UserDefaults.h"

namespace Platform {
}  // namespace Platform
