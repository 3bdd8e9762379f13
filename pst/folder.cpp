#include "pst/folder.h"

#include "pst/little_endian.h"
#include "pst/reader.h"
#include "pst/stored_text.h"

namespace PST {

namespace {

constexpr uint32_t kDisplayName = 0x3001;
constexpr uint32_t kContentCount = 0x3602;
constexpr uint32_t kUnreadCount = 0x3603;
constexpr uint32_t kHasSubfolders = 0x360A;
constexpr uint32_t kHierarchyTable = 13;
constexpr uint32_t kContentsTable = 14;
constexpr uint64_t kNodeTypeBits = 31;

}  // namespace

Folder::Folder(std::unique_ptr<Block> block) : block_(std::move(block))
{
    if (block_) reader_ = block_->reader();
}

Folder::Folder(Reader* reader, uint64_t nodeId) : reader_(reader)
{
    const DescIndex::DescIndexNode* node = reader && reader->descIndex() ? reader->descIndex()->find(nodeId) : nullptr;
    if (node) block_ = std::make_unique<Block>(reader, node, nullptr, KindFolder);
}

Folder::~Folder() = default;

uint64_t Folder::nodeId() const
{
    if (!block_) return 0;
    return block_->desc() ? block_->desc()->id : block_->nodeId();
}

const std::u16string& Folder::getName()
{
    if (name_.empty() && block_) name_ = storedText(block_->findItem(kDisplayName));
    return name_;
}

uint32_t Folder::numberOf(uint32_t propertyId) const
{
    const BlockItem* item = block_ ? block_->findItem(propertyId) : nullptr;
    if (!item || item->value.size() < 4) return 0;
    return loadU32(reinterpret_cast<const uint8_t*>(item->value.data()));
}

bool Folder::hasSubfolders() const { return numberOf(kHasSubfolders) != 0; }
uint32_t Folder::getUnreadCount() const { return numberOf(kUnreadCount); }
uint32_t Folder::getMessageCount() const { return numberOf(kContentCount); }

Block* Folder::table(std::unique_ptr<Block>& slot, bool& fetched, uint32_t lowBits)
{
    if (fetched || !block_ || !reader_ || !reader_->descIndex()) return slot.get();
    fetched = true;
    const uint64_t tableId = (nodeId() & ~kNodeTypeBits) | lowBits;
    if (const DescIndex::DescIndexNode* node = reader_->descIndex()->find(tableId))
        slot = std::make_unique<Block>(reader_, node, nullptr, KindFolder);
    return slot.get();
}

Block* Folder::getHierarchy() { return table(hierarchy_, hierarchyFetched_, kHierarchyTable); }
Block* Folder::getContents() { return table(contents_, contentsFetched_, kContentsTable); }

uint64_t Folder::getMessageId(uint32_t index)
{
    if (index >= getMessageCount()) return 0;
    Block* contents = getContents();
    if (!contents || index >= contents->rowIds().size()) return 0;
    return contents->rowIds()[index].rowId;
}

std::unique_ptr<PST::TreeNode> Folder::getMessageNode(uint32_t index)
{
    const uint64_t id = getMessageId(index);
    if (id == 0 || !reader_) return nullptr;
    return std::make_unique<PST::TreeNode>(reader_, id);
}

uint32_t Folder::getSubfolderCount()
{
    Block* hierarchy = getHierarchy();
    return hierarchy ? static_cast<uint32_t>(hierarchy->rowIds().size()) : 0;
}

std::unique_ptr<Folder> Folder::getSubfolder(uint32_t index)
{
    Block* hierarchy = getHierarchy();
    if (!hierarchy || index >= hierarchy->rowIds().size()) return nullptr;
    return std::make_unique<Folder>(reader_, hierarchy->rowIds()[index].rowId);
}

Folder* Folder::firstChild() const
{
    // The links live in the tree base and the tables are fetched here on first need, so the
    // accessor the tree declares const builds through the folder itself, which is never const.
    return const_cast<Folder*>(this)->loadChildren();
}

Folder* Folder::loadChildren()
{
    // The tables don't change while the file is open, so the children are built once.
    if (childrenLoaded_) return ty::TreeNode<Folder>::firstChild();
    childrenLoaded_ = true;
    if (!placed_) {
        placed_ = std::make_shared<PlacedFolders>();
        placed_->insert(nodeId());
    }
    Block* hierarchy = getHierarchy();
    if (!hierarchy) return nullptr;
    for (const RowIndexEntry& row : hierarchy->rowIds()) {
        if (!placed_->insert(row.rowId).second) continue;
        auto* child = new Folder(reader_, row.rowId);
        child->placed_ = placed_;
        appendChild(child);
    }
    return ty::TreeNode<Folder>::firstChild();
}

}  // namespace PST
