#pragma once
// Message files built in memory for the MSG reader's tests, and their loading.
#include <cstdint>
#include <initializer_list>
#include <string>
#include <vector>

#include "core/mail_property.h"
#include "msg/msg_reader.h"
#include "storage/compound_file_writer.h"

namespace msg_test {

// UTF-16 little-endian bytes, as string streams hold them.
inline std::string utf16(std::u16string_view text)
{
    std::string bytes;
    for (char16_t c : text) bytes += {static_cast<char>(c & 0xFF), static_cast<char>(c >> 8)};
    return bytes;
}

inline std::string le(uint64_t value, size_t width)
{
    std::string bytes;
    for (size_t i = 0; i < width; ++i) bytes += static_cast<char>(value >> (8 * i) & 0xFF);
    return bytes;
}

struct FixedEntry {
    uint16_t type;
    uint16_t id;
    uint64_t value;
};

// A fixed-size property list: `header` padded or cut to its size, then the entries.
inline std::string fixedList(size_t headerSize, const std::vector<FixedEntry>& entries, std::string header = {})
{
    header.resize(headerSize, '\0');
    for (const FixedEntry& e : entries) header += le(e.type, 2) + le(e.id, 2) + le(0, 4) + le(e.value, 8);
    return header;
}

// One load of a reader over `image` into a table of its own, which is no item's.
struct Loaded {
    mcl::MailProperties props;
    mcl::MSGReader* reader;
    bool ok;
    Loaded(const std::string& image, uint32_t filter) : reader(new mcl::MSGReader(u"memory.msg", image))
    {
        ok = reader->load(&props, &filter);
    }
    ~Loaded() { reader->release(); }
};

// Records below `parent` with the tag exactly (0: any tag), in table order.
inline std::vector<mcl::MailProperty*> below(const mcl::MailProperties& props, uint32_t tag, uint32_t parent)
{
    std::vector<mcl::MailProperty*> out;
    props.collect(out, tag, parent, false, 0, 0xFFFFFFFF);
    return out;
}

inline std::string bytesOf(const mcl::MailProperty* property)
{
    return std::string(reinterpret_cast<const char*>(property->bytes()), static_cast<size_t>(property->size()));
}

}  // namespace msg_test
