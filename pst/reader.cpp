#include "pst/reader.h"

#include "foundation/binary_reader.h"
#include "pst/block.h"
#include "pst/format_adapter32.h"
#include "pst/format_adapter64.h"
#include "pst/node_ids.h"
#include "pst/store.h"
#include "pst/tree_node.h"

namespace PST {

namespace {

constexpr uint32_t kSignature = 0x4E444221;  // "!BDN"
constexpr uint32_t kFatal = 4;
constexpr uint32_t kOpenFailedCode = static_cast<uint32_t>(-2);
constexpr uint32_t kCorruptCode = static_cast<uint32_t>(-5);

std::unique_ptr<FormatAdapter> adapterForFormat(uint8_t format)
{
    switch (format) {
    case 14:
    case 15: return std::make_unique<FormatAdapter32>();
    case 23: return std::make_unique<FormatAdapter64>();
    default: return nullptr;  // among others 36, the files with 4096-byte pages
    }
}

}  // namespace

Reader::Reader() = default;
Reader::~Reader() = default;

bool Reader::fail(const char16_t* text, uint32_t code)
{
    setError(text, u"PST::Reader::open", kFatal, code);
    return false;
}

bool Reader::open(const std::u16string& path)
{
    // A new open starts clean: what an earlier file left in the keeper says nothing of this one.
    clearError();
    if (file_.isOpen()) file_.close();
    file_.open(path, ty::FileRead, ty::OpenExisting);
    if (file_.keeper().hasError()) {
        setError(file_.keeper().error());
        return false;
    }
    if (!file_.isOpen()) return fail(u"Can't open file", kOpenFailedCode);
    path_ = path;
    ty::BinaryReader binary(file_);

    uint32_t signature = 0;
    file_._seek(0, ty::SeekBegin);
    binary.readUInt32(signature);
    if (signature != kSignature) return fail(u"PST signature invalid, corrupt file or unknown file format.", kCorruptCode);

    // Only the low byte of the version word is looked at: 0x0117 reads as 23.
    uint8_t format = 0;
    file_._seek(10, ty::SeekBegin);
    binary.readUInt8(format);
    std::unique_ptr<FormatAdapter> adapter = adapterForFormat(format);
    if (!adapter) return fail(u"Unknown PST index type. File may be corrupted or have unsupported format.", kCorruptCode);
    adapter_ = std::move(adapter);

    index_ = std::make_unique<Index>(*adapter_, file_);
    descIndex_ = std::make_unique<DescIndex>(*adapter_, file_);
    for (ty::ErrorKeeper* tree : {static_cast<ty::ErrorKeeper*>(&index_->keeper()), &descIndex_->keeper()}) {
        if (tree->hasError()) {
            setError(tree->error());
            return false;
        }
    }

    const Layout& layout = adapter_->layout();
    fileSize_ = adapter_->readAt(file_, layout.fileSizeOffset);
    openedFileSize_ = file_.getSize();
    if (fileSize_ != openedFileSize_)
        fail(u"Got invalid file size from header. File may be corrupted or have unsupported format.", kCorruptCode);

    encryptionMethod_ = 0;
    file_._seek(static_cast<int64_t>(layout.encryptionField), ty::SeekBegin);
    binary.readUInt8(encryptionMethod_);

    loadNameMap();
    return true;
}

void Reader::close()
{
    file_.close();
}

std::unique_ptr<Store> Reader::getStore()
{
    const DescIndex::DescIndexNode* node = descIndex_ ? descIndex_->find(NID_MESSAGE_STORE) : nullptr;
    if (!node) {
        setError(u"No NID_MESSAGE_STORE node. File may be corrupted.", u"PST::Reader::getStore", kFatal, kCorruptCode);
        return nullptr;
    }
    auto block = std::make_unique<Block>(this, node, nullptr, KindStore);
    return std::make_unique<Store>(std::move(block));
}

std::unique_ptr<TreeNode> Reader::createNode(uint64_t nodeId)
{
    const DescIndex::DescIndexNode* node = descIndex_ ? descIndex_->find(nodeId) : nullptr;
    if (!node) return nullptr;
    auto block = std::make_unique<Block>(this, node, nullptr, KindUnknown);
    if (block->kind() == KindStore) return std::make_unique<Store>(std::move(block));
    return std::make_unique<TreeNode>(std::move(block));
}

}  // namespace PST
