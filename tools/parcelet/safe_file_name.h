#pragma once
// File names for saving attachments into a folder: nothing that leaves the folder, and
// nothing that replaces a file already there.
#include <filesystem>
#include <string>

namespace cli {

// The name with separators, control characters and ".." runs turned into "_"; a name left
// empty, or "." alone, becomes `fallback`.
std::string safeFileName(const std::string& name, const std::string& fallback);
// `name` in `folder`, or "stem (n).ext" with the first n that names no existing file.
std::filesystem::path unusedPath(const std::filesystem::path& folder, const std::string& name);

}  // namespace cli
