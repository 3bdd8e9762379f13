#include "core/prop_tags.h"

#include <algorithm>
#include <iterator>

namespace mcl {

namespace data = prop_tags_data;

std::optional<uint32_t> propTagByName(std::string_view name)
{
    const auto* end = std::end(data::kByName);
    const auto* it = std::lower_bound(std::begin(data::kByName), end, name,
                                      [](const data::NameEntry& entry, std::string_view key) { return entry.name < key; });
    if (it == end || it->name != name)
        return std::nullopt;
    return it->tag;
}

std::string_view propTagName(uint32_t tag)
{
    const auto* end = std::end(data::kByTag);
    const auto* it = std::lower_bound(std::begin(data::kByTag), end, tag,
                                      [](const data::TagEntry& entry, uint32_t key) { return entry.tag < key; });
    if (it == end || it->tag != tag)
        return {};
    return it->name;
}

std::size_t propTagNameCount()
{
    return data::kCount;
}

} // namespace mcl
