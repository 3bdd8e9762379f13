#include "pst/store.h"

#include "pst/little_endian.h"
#include "pst/node_ids.h"
#include "pst/reader.h"
#include "pst/stored_text.h"

namespace PST {

namespace {

constexpr uint32_t kDisplayName = 0x3001;
constexpr uint32_t kRecordKey = 0x0FF9;
constexpr uint32_t kRootFolderEntry = 0x35E0;
constexpr size_t kEntrySize = 24;
constexpr size_t kEntryNodeIdOffset = 20;
constexpr uint32_t kFatalLevel = 4;
constexpr uint32_t kCorruptCode = static_cast<uint32_t>(-5);

}  // namespace

Store::Store(std::unique_ptr<Block> block) : TreeNode(std::move(block))
{
    if (!this->block()) return;
    if (this->block()->kind() != KindStore) {
        keeper().setError(u"Invalid block type (Store block expected). File may be corrupted", u"PST::Store::Store",
                          kFatalLevel, kCorruptCode);
        return;
    }
    blockKind_ = this->block()->kind();
    name_ = storedText(this->block()->findItem(kDisplayName));
    const BlockItem* key = this->block()->findItem(kRecordKey);
    if (key && key->value.size() == recordKey_.size()) key->value.copy(reinterpret_cast<char*>(recordKey_.data()), recordKey_.size());
}

Store::~Store() = default;

Folder* Store::getRootFolder()
{
    if (rootFolder_ || !block() || !reader() || !reader()->descIndex()) return rootFolder_.get();
    DescIndex& nodes = *reader()->descIndex();
    if (const BlockItem* entry = block()->findItem(kRootFolderEntry)) {
        uint64_t nodeId = 0;
        if (entry->value.size() >= kEntrySize)
            nodeId = loadU32(reinterpret_cast<const uint8_t*>(entry->value.data()) + kEntryNodeIdOffset);
        auto folderBlock = std::make_unique<Block>(reader(), nodes.find(nodeId), nullptr, KindFolder);
        if (folderBlock->hasError()) {
            keeper().setError(folderBlock->error());
            return nullptr;
        }
        rootFolder_ = std::make_unique<Folder>(std::move(folderBlock));
        return rootFolder_.get();
    }
    if (const DescIndex::DescIndexNode* node = nodes.find(NID_ROOT_FOLDER))
        rootFolder_ = std::make_unique<Folder>(std::make_unique<Block>(reader(), node, nullptr, KindFolder));
    return rootFolder_.get();
}

}  // namespace PST
