#pragma once
// The shared sample files the benchmark cases run over.
#include <filesystem>
#include <string>
#include <vector>

namespace bench {

// The files of one corpus folder ("eml", "msg", ...), sorted by name.
std::vector<std::filesystem::path> corpusFiles(const std::string& folder);
std::string readBytes(const std::filesystem::path& path);

}  // namespace bench
