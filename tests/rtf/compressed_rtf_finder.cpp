#include "compressed_rtf_finder.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <iterator>

namespace rtf_test {
namespace {

uint32_t littleEndian32(const std::string& bytes, size_t offset)
{
    const auto* p = reinterpret_cast<const unsigned char*>(bytes.data()) + offset;
    return uint32_t(p[0]) | uint32_t(p[1]) << 8 | uint32_t(p[2]) << 16 | uint32_t(p[3]) << 24;
}

std::string readFile(const std::filesystem::path& path)
{
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

}  // namespace

uint32_t compressedRtfCrc(std::string_view payload)
{
    static const std::array<uint32_t, 256> table = [] {
        std::array<uint32_t, 256> t{};
        for (uint32_t i = 0; i < 256; ++i) {
            uint32_t c = i;
            for (int bit = 0; bit < 8; ++bit) c = (c & 1) ? (c >> 1) ^ 0xEDB88320u : c >> 1;
            t[i] = c;
        }
        return t;
    }();
    uint32_t crc = 0;
    for (unsigned char byte : payload) crc = table[(crc ^ byte) & 0xFF] ^ (crc >> 8);
    return crc;
}

std::vector<FoundRtfBody> findCompressedRtfBodies(const std::filesystem::path& file)
{
    std::vector<FoundRtfBody> found;
    const std::string bytes = readFile(file);
    for (size_t magic = 8; magic + 8 <= bytes.size(); ++magic) {
        std::string_view tag(bytes.data() + magic, 4);
        if (tag != "LZFu" && tag != "MELA") continue;
        size_t start = magic - 8;
        uint64_t compressedSize = littleEndian32(bytes, start);
        uint64_t rawSize = littleEndian32(bytes, start + 4);
        if (compressedSize < 12 || start + 4 + compressedSize > bytes.size()) continue;
        if (rawSize == 0 || rawSize > (compressedSize - 12) * 17 / 2) continue;
        FoundRtfBody body;
        body.file = file;
        body.offset = start;
        body.container = bytes.substr(start, size_t(compressedSize) + 4);
        body.rawSize = uint32_t(rawSize);
        std::string_view payload(body.container.data() + 16, body.container.size() - 16);
        body.whole = tag == "MELA" || compressedRtfCrc(payload) == littleEndian32(body.container, 12);
        found.push_back(std::move(body));
    }
    return found;
}

std::vector<FoundRtfBody> findCorpusRtfBodies(const std::string& folder, const std::string& extension)
{
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(std::filesystem::path(PARCELET_CORPUS_DIR) / folder))
        if (entry.path().extension() == extension) files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    std::vector<FoundRtfBody> found;
    for (const auto& file : files) {
        std::vector<FoundRtfBody> bodies = findCompressedRtfBodies(file);
        std::move(bodies.begin(), bodies.end(), std::back_inserter(found));
    }
    return found;
}

}  // namespace rtf_test
