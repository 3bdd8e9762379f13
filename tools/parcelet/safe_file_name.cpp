#include "safe_file_name.h"

namespace cli {

std::string safeFileName(const std::string& name, const std::string& fallback)
{
    std::string safe;
    for (size_t i = 0; i < name.size(); ++i) {
        unsigned char c = static_cast<unsigned char>(name[i]);
        bool dots = c == '.' && i + 1 < name.size() && name[i + 1] == '.';
        if (c < 0x20 || c == 0x7F || c == '/' || c == '\\') {
            safe += '_';
        } else if (dots) {
            safe += '_';
            while (i + 1 < name.size() && name[i + 1] == '.') ++i;
        } else {
            safe += static_cast<char>(c);
        }
    }
    if (safe.empty() || safe == ".") return fallback;
    return safe;
}

std::filesystem::path unusedPath(const std::filesystem::path& folder, const std::string& name)
{
    std::filesystem::path candidate = folder / name;
    std::error_code error;
    if (!std::filesystem::exists(candidate, error)) return candidate;
    std::filesystem::path plain(name);
    std::string stem = plain.stem().string();
    std::string extension = plain.extension().string();
    for (int n = 1;; ++n) {
        candidate = folder / (stem + " (" + std::to_string(n) + ")" + extension);
        if (!std::filesystem::exists(candidate, error)) return candidate;
    }
}

}  // namespace cli
