// The other programs of the benchmark lie in its own folder.
#pragma once

#include <filesystem>
#include <string>

namespace Benchmarks {

inline std::string besideThisProgram(const std::string& name) { return std::filesystem::read_symlink("/proc/self/exe").replace_filename(name); }

}  // namespace Benchmarks
