#pragma once
// Builds TNEF streams for the tests: attributes with a zero checksum (never compared) and MAPI
// property lists in the encoding the attributes carry.
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string>

namespace tnef_test {

inline std::string le(uint64_t value, int width)
{
    std::string bytes;
    for (int i = 0; i < width; ++i) bytes += static_cast<char>((value >> (8 * i)) & 0xFF);
    return bytes;
}
inline std::string u16(uint16_t value) { return le(value, 2); }
inline std::string u32(uint32_t value) { return le(value, 4); }
inline std::string u64(uint64_t value) { return le(value, 8); }
// A literal with its NUL bytes, less the terminator.
template <size_t N>
std::string raw(const char (&text)[N]) { return std::string(text, N - 1); }

// Level 1 is the message, 2 an attachment; the id's high half is the attribute's own type.
inline std::string attribute(uint8_t level, uint32_t id, const std::string& data)
{
    return char(level) + u32(id) + u32(uint32_t(data.size())) + data + u16(0);
}
inline std::string stream(std::initializer_list<std::string> attributes)
{
    std::string bytes = u32(0x223E9F78) + u16(0x0102);
    for (const std::string& a : attributes) bytes += a;
    return bytes;
}
// The variable-length form: a count, then each value's size and bytes padded to 4.
inline std::string counted(std::initializer_list<std::string> values)
{
    std::string bytes = u32(uint32_t(values.size()));
    for (const std::string& v : values) bytes += u32(uint32_t(v.size())) + v + std::string((4 - v.size() % 4) % 4, '\0');
    return bytes;
}

// A count, then type, id, `head` (a named property's set and name) and value of each entry.
class PropertyList {
public:
    PropertyList& add(uint16_t type, uint16_t id, const std::string& value, const std::string& head = "")
    {
        ++count_;
        body_ += u16(type) + u16(id) + head + value;
        return *this;
    }
    std::string bytes() const { return u32(count_) + body_; }

private:
    uint32_t count_ = 0;
    std::string body_;
};

constexpr uint32_t kAttSubject = 0x00018004, kAttMessageClass = 0x00078008, kAttBody = 0x0002800C,
                   kAttDateSent = 0x00038005, kAttMsgProps = 0x00069003, kAttAttachRendering = 0x00069002,
                   kAttAttachTitle = 0x00018010, kAttAttachData = 0x0006800F, kAttAttachment = 0x00069005;

}  // namespace tnef_test
