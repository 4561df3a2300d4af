// What the figures were measured on, as lines of "what: which".
#pragma once

#include <string>
#include <vector>

namespace Benchmarks {

std::vector<std::string> describeMachine();

}  // namespace Benchmarks
