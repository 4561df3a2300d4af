#include "Platform/FatalError.h"

#include <cstdio>
#include <cstdlib>

namespace Platform {

void fatalError(std::string_view operation, std::string_view value)
{
    std::fprintf(stderr, "tarnwick: fatal error: %.*s: %.*s\n", static_cast<int>(operation.size()), operation.data(), static_cast<int>(value.size()),
        value.data());
    std::abort();
}

}  // namespace Platform
