#include "corpus.h"

#include <algorithm>
#include <fstream>
#include <iterator>

namespace bench {

std::vector<std::filesystem::path> corpusFiles(const std::string& folder)
{
    std::vector<std::filesystem::path> files;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(std::filesystem::path(PARCELET_CORPUS_DIR) / folder, error))
        if (entry.is_regular_file()) files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    return files;
}

std::string readBytes(const std::filesystem::path& path)
{
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
}

}  // namespace bench
