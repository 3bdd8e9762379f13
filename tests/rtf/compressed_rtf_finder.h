#pragma once
// Finds compressed RTF bodies in container files by their 16-byte header alone, for tests that
// need real bodies before the containers themselves can be read.
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace rtf_test {

struct FoundRtfBody {
    std::filesystem::path file;
    size_t offset = 0;
    std::string container;  // header and payload, as a reader would hand them over
    uint32_t rawSize = 0;
    // The header's CRC matches the payload: the bytes lie in the file in one piece. A body that
    // the container split (small streams of a compound file) fails this.
    bool whole = false;
};

// The CRC-32 of compressed RTF: the usual reflected polynomial 0xEDB88320, started at 0 and
// not inverted at the end.
uint32_t compressedRtfCrc(std::string_view payload);

// Every place where "LZFu" or "MELA" stands at offset 8 of a header whose sizes fit the file and
// the format: at least the 12 header bytes after the first field, and no more raw bytes than
// 17 per 2 payload bytes.
std::vector<FoundRtfBody> findCompressedRtfBodies(const std::filesystem::path& file);

// The bodies of every file with the extension in a corpus folder, in file name order.
std::vector<FoundRtfBody> findCorpusRtfBodies(const std::string& folder, const std::string& extension);

}  // namespace rtf_test
