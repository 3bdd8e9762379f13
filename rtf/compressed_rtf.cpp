#include "rtf/compressed_rtf.h"

#include <cstring>
#include <stdexcept>

namespace mcl {
namespace {

constexpr uint64_t kWindowSize = 4096;

// Line feed before carriage return in the fourth piece: that is the order the stored streams were
// written against, so references into it must see it so.
constexpr char kDictionary[] =
    "{\\rtf1\\ansi\\mac\\deff0\\deftab720{\\fonttbl;}"
    "{\\f0\\fnil \\froman \\fswiss \\fmodern \\fscript "
    "\\fdecor MS Sans SerifSymbolArialTimes New RomanCourier"
    "{\\colortbl\\red0\\green0\\blue0\n\r\\par "
    "\\pard\\plain\\f0\\fs20\\b\\i\\u\\tab\\tx";

// The byte 0x0C after "\fprq1" stands where "\f" was meant; readers of stored bodies have always
// received it so, and it stays.
constexpr char kCorruptDocument[] =
    "{\\rtf1\\ansi\\ansicpg1252\\deff0\\deflang1033{\\fonttbl{\\f0\\fnil\\fprq1\x0C"
    "charset0 Courier New;}{\\f1\\fswiss\\fcharset0 Arial;}}\\viewkind4\\pard\\f0\\fs20 "
    "<<ERROR:DATACORRUPTION\\cf0\\f1\\par}";

uint32_t readLittleEndian32(const std::string& bytes, size_t offset)
{
    const auto* p = reinterpret_cast<const unsigned char*>(bytes.data()) + offset;
    return uint32_t(p[0]) | uint32_t(p[1]) << 8 | uint32_t(p[2]) << 16 | uint32_t(p[3]) << 24;
}

// A literal costs one payload byte for one byte of output and a reference two bytes for at most
// 17; control bytes yield nothing. So no payload can fill more than 17/2 of its length, and a raw
// size above that is a damaged header, not a reason to allocate up to 4 GiB.
bool rawSizeFits(uint64_t rawSize, uint64_t payloadSize)
{
    return rawSize <= payloadSize * 17 / 2;
}

class TokenInput {
public:
    explicit TokenInput(const std::string& bytes)
        : data_(reinterpret_cast<const unsigned char*>(bytes.data())), size_(bytes.size())
    {
    }
    bool exhausted() const { return position_ >= size_; }
    unsigned char next()
    {
        if (exhausted()) throw std::out_of_range("compressed RTF ends inside a token");
        return data_[position_++];
    }

private:
    const unsigned char* data_;
    size_t size_;
    size_t position_ = kCompressedRtfHeaderSize;
};

std::string storedContent(const std::string& container, uint64_t rawSize)
{
    size_t payloadSize = container.size() - kCompressedRtfHeaderSize;
    if (payloadSize > rawSize) throw std::out_of_range("stored RTF is longer than its raw size");
    std::string result(size_t(rawSize), '\0');
    std::memcpy(result.data(), container.data() + kCompressedRtfHeaderSize, payloadSize);
    return result;
}

std::string expandTokens(const std::string& container, uint64_t rawSize)
{
    const uint64_t dictionarySize = sizeof(kDictionary) - 1;
    const uint64_t end = dictionarySize + rawSize;
    std::string work(size_t(end), '\0');
    std::memcpy(work.data(), kDictionary, size_t(dictionarySize));

    TokenInput input(container);
    uint64_t pos = dictionarySize;
    uint64_t tokenCount = 0;
    unsigned control = 0;
    while (pos < end) {
        control = tokenCount % 8 == 0 ? input.next() : control >> 1;
        ++tokenCount;
        if ((control & 1) == 0) {
            if (input.exhausted()) break;
            work[size_t(pos++)] = char(input.next());
            continue;
        }
        unsigned b0 = input.next();
        unsigned b1 = input.next();
        uint64_t offset = uint64_t(b0) << 4 | b1 >> 4;
        uint64_t length = (b1 & 0x0F) + 2;
        // Unsigned on purpose: a reference at or past pos within the first window wraps far
        // beyond end and so counts as damage.
        uint64_t ref = (pos & ~(kWindowSize - 1)) + offset;
        if (ref >= pos) ref -= kWindowSize;
        for (uint64_t i = 0; i < length; ++i) {
            if (pos >= end || ref >= end) return std::string(corruptRtfDocument());
            work[size_t(pos++)] = work[size_t(ref++)];
        }
    }
    work.erase(0, size_t(dictionarySize));
    return work;
}

}  // namespace

std::string_view compressedRtfDictionary()
{
    return std::string_view(kDictionary, sizeof(kDictionary) - 1);
}

std::string_view corruptRtfDocument()
{
    return std::string_view(kCorruptDocument, sizeof(kCorruptDocument) - 1);
}

std::string decompressRtf(std::string compressed)
{
    if (compressed.size() < kCompressedRtfHeaderSize) return {};
    uint32_t compressedSize = readLittleEndian32(compressed, 0);
    uint32_t rawSize = readLittleEndian32(compressed, 4);
    uint32_t magic = readLittleEndian32(compressed, 8);
    if (uint64_t(compressedSize) != uint64_t(compressed.size()) - 4) return {};
    if (magic != kUncompressedRtfMagic && magic != kCompressedRtfMagic) return {};
    if (!rawSizeFits(rawSize, compressed.size() - kCompressedRtfHeaderSize))
        return std::string(corruptRtfDocument());
    if (magic == kUncompressedRtfMagic) return storedContent(compressed, rawSize);
    return expandTokens(compressed, rawSize);
}

}  // namespace mcl
