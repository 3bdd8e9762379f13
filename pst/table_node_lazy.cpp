#include "pst/table_node_lazy.h"

#include <array>
#include <string>

#include "pst/desc_index.h"
#include "pst/index.h"
#include "pst/positioned_read.h"

namespace PST {

namespace {

constexpr uint32_t kPageErrorLevel = 4;
constexpr uint32_t kCorruptCode = static_cast<uint32_t>(-5);

}  // namespace

template <class T>
TableNodeLazy<T>::TableNodeLazy(const FormatAdapter& adapter, ty::IOS& source, uint64_t pageOffset, uint64_t pageId,
                                uint64_t startKey, uint64_t endKey)
    : adapter_(&adapter), source_(&source), pageOffset_(pageOffset), pageId_(pageId), startKey_(startKey), endKey_(endKey)
{
}

template <class T>
bool TableNodeLazy<T>::fail(const char16_t* text)
{
    std::u16string source = u"PST::TableNodeLazy<";
    source += ty::TypeDesciber<T>::typeName();
    source += u">::buildImpl";
    keeper_.setError(text, std::move(source), kPageErrorLevel, kCorruptCode);
    return false;
}

template <class T>
bool TableNodeLazy<T>::buildImpl()
{
    if (endKey_ < startKey_) return fail(u"Start and end pointers are invalid. File may be corrupted.");
    uint64_t previous = startKey_;
    std::array<uint8_t, kPageSize> bytes{};
    if (readAtPosition(*source_, pageOffset_, bytes.data(), kPageSize) != kPageSize)
        return fail(u"Can't read whole block. File may be corrupted.");
    ty::Buffer page(bytes.data(), kPageSize);
    const Layout& layout = adapter_->layout();
    uint8_t count = bytes[layout.pageEntryCountOffset];
    if (count > layout.pageEntryLimit) return fail(u"Items count out of limit. File may be corrupted.");
    if (static_cast<uint64_t>(adapter_->readAt(page, layout.pageBackLinkOffset)) != pageId_)
        return fail(u"Invalid backlink. File may be corrupted.");
    level_ = bytes[layout.pageLevelOffset];
    // Each page must stand below its parent's level: a page that names itself or an ancestor
    // as its child would otherwise lead lookups down forever.
    if (this->parent() && level_ >= this->parent()->level_) return fail(u"Table data invalid. File may be corrupted.");
    page._seek(0, ty::SeekBegin);

    if (level_ != 0) {
        for (uint32_t i = 0; i < count; ++i) {
            PageEntry entry;
            adapter_->readPageEntry(page, entry);
            uint64_t childEnd = endKey_;
            if (i + 1 < count) {
                PageEntry following;
                int64_t done = adapter_->readPageEntry(page, following);
                page._seek(-done, ty::SeekCurrent);
                childEnd = following.key;
            }
            if (entry.key >= endKey_ || entry.key < previous) return fail(u"Table data invalid. File may be corrupted.");
            previous = entry.key;
            if (i == 0 && startKey_ != 0 && entry.key != startKey_)
                return fail(u"Invalid table first entry data. File may be corrupted.");
            this->appendChild(new TableNodeLazy(*adapter_, *source_, entry.offset, entry.pageId, entry.key, childEnd));
        }
        return true;
    }
    for (uint32_t i = 0; i < count; ++i) {
        T record;
        record.read(*adapter_, page);
        if (record.checkDataConsistency(startKey_, endKey_, previous, i)) entries_.push_back(record);
    }
    return true;
}

template <class T>
bool TableNodeLazy<T>::build()
{
    if (!tried_) {
        tried_ = true;
        built_ = buildImpl();
    }
    return built_;
}

template <class T>
TableNodeLazy<T>* TableNodeLazy<T>::descend(uint64_t key, TableNodeLazy* node)
{
    // Each step goes one level down, and levels fall strictly, so this ends.
    while (node) {
        if (node->startKey_ > key) return nullptr;
        while (node->next() && node->next()->startKey_ <= key) node = node->next();
        node->build();
        if (!node->firstChild()) return node;
        node = node->firstChild();
    }
    return nullptr;
}

template <class T>
const T* TableNodeLazy<T>::find(uint64_t key)
{
    TableNodeLazy* leaf = descend(key, this->firstChild());
    for (const T& record : leaf ? leaf->entries_ : entries_)
        if (record.key() == key) return &record;
    return nullptr;
}

template class TableNodeLazy<Index::IndexNode>;
template class TableNodeLazy<DescIndex::DescIndexNode>;

}  // namespace PST
