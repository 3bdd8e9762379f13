#include "pst/standalone_reader.h"

#include <cstdio>
#include <cstring>
#include <stdexcept>

#include "core/mail_item.h"
#include "foundation/log.h"
#include "foundation/utf.h"
#include "foundation/win_time.h"
#include "pst/little_endian.h"
#include "rtf/rtf_body_import.h"

namespace mcl {

namespace {

constexpr uint32_t kSevereLevel = 3;
constexpr uint32_t kNotImplementedCode = 0x80004001;
constexpr uint32_t kCompressedRtfTag = 0x10090102;
constexpr uint32_t kHtmlBytesTag = 0x10130102;
constexpr uint32_t kAttachmentNumberTag = 0x0E210003;
constexpr uint32_t kAttachObjectTag = 0x3701000D;
constexpr uint32_t kAttachBinaryTag = 0x37010102;
constexpr uint32_t kAttachDataId = 0x3701;
constexpr uint32_t kAttachmentTypeTag = 0x0FFE0003;
constexpr uint32_t kEmbeddedObjectType = 5;
constexpr uint32_t kBinaryDataType = 7;
constexpr uint32_t kEmbeddedLoad = 0x87;
constexpr uint32_t kSectionsAlwaysLoaded = 0x83;  // headers, bodies, all properties
constexpr size_t kEntryNodeIdOffset = 20;
constexpr size_t kEntryKeyOffset = 4;
constexpr int kMaxEmbeddingDepth = 16;

std::u16string hexLabel(uint32_t tag)
{
    char text[9];
    std::snprintf(text, sizeof text, "%08x", tag);
    return std::u16string(text, text + 8);
}

int hexDigit(char16_t c)
{
    if (c >= u'0' && c <= u'9') return c - u'0';
    if (c >= u'a' && c <= u'f') return c - u'a' + 10;
    if (c >= u'A' && c <= u'F') return c - u'A' + 10;
    return -1;
}

uint32_t entryNodeId(const MailProperty* entry)
{
    if (!entry || !entry->bytes() || entry->size() < kEntrySize) return 0;
    return PST::loadU32(entry->bytes() + kEntryNodeIdOffset);
}

}  // namespace

BaseReader* createPSTStandaloneReader(const std::u16string& path) { return new PSTStandaloneReader(path); }

PSTStandaloneReader::PSTStandaloneReader(const std::u16string& path)
    : PSTStandaloneReader(u"PSTStandaloneReader", path)
{
}

PSTStandaloneReader::PSTStandaloneReader(const std::u16string& className, const std::u16string& path)
    : BaseReader(className, path, FilePST)
{
}

PSTStandaloneReader::~PSTStandaloneReader()
{
    currentMessage.reset();
    store.reset();
    pst.close();
}

uint32_t PSTStandaloneReader::setHeaderMode(uint32_t value)
{
    const uint32_t before = pst.headersOnly();
    pst.setHeadersOnly(value);
    return before;
}

const std::u16string& PSTStandaloneReader::addressDelimiters() const
{
    static const std::u16string delimiters = u";";
    return delimiters;
}

uint32_t PSTStandaloneReader::isHeaderMode() const { return pst.headersOnly(); }

uint32_t PSTStandaloneReader::namedPropertyIdByNumber(const Guid& guid, uint32_t number)
{
    std::string wanted(reinterpret_cast<const char*>(guid.data()), guid.size());
    for (int shift = 0; shift < 32; shift += 8) wanted += static_cast<char>(number >> shift);
    for (const auto& [id, named] : pst.nameMap())
        if (named.kind == PST::NamedProperty::Numeric && named.payload == wanted) return named.propertyId;
    return 0;
}

uint32_t PSTStandaloneReader::namedPropertyIdByName(const std::u16string& name)
{
    std::string wanted;
    for (char16_t c : name) wanted += {static_cast<char>(c & 0xFF), static_cast<char>(c >> 8)};
    for (const auto& [id, named] : pst.nameMap())
        if (named.kind == PST::NamedProperty::String && named.payload == wanted) return named.propertyId;
    return 0;
}

bool PSTStandaloneReader::takeSevereError(const ty::ErrorKeeper& keeper)
{
    if (!keeper.hasError() || keeper.error()->kind() < kSevereLevel) return false;
    setError(keeper.error()->text(), keeper.error()->source(), 0, mul::E_FAIL_CODE);
    return true;
}

bool PSTStandaloneReader::doInit()
{
    ty::TraceScope trace("mcl::PSTStandaloneReader::doInit");
    pst.open(getFilePath());
    if (takeSevereError(pst)) return false;
    store = pst.getStore();
    if (takeSevereError(pst) || !store) return false;
    if (takeSevereError(store->keeper()) || (store->block() && takeSevereError(*store->block()))) return false;
    rootFolder = store->getRootFolder();
    if (takeSevereError(store->keeper())) return false;
    // Every later step starts from the root: a store without one can't be read at all.
    if (!rootFolder) {
        setError(u"No root folder. File may be corrupted.", u"mcl::PSTStandaloneReader::doInit", 0, mul::E_FAIL_CODE);
        return false;
    }
    if (rootFolder->block() && takeSevereError(*rootFolder->block())) return false;
    currentFolder = rootFolder;
    resetPosition();
    return true;
}

void PSTStandaloneReader::resetPosition()
{
    currentMessage.reset();
    position = 0;
}

bool PSTStandaloneReader::doLoad(MailProperties* props, uint32_t* filter)
{
    if (*filter & LoadDirect) {
        scanMode = 1;
        *filter &= ~LoadDirect;
        return scan();
    }
    const uint32_t saved = pst.headersOnly();
    pst.setHeadersOnly(*filter == LoadListing ? 1 : 0);
    if (!loadMessage(props, *filter)) return false;
    pst.setHeadersOnly(saved);
    return true;
}

bool PSTStandaloneReader::scan()
{
    // The walk for messages outside any folder has no start page, so it stops before it
    // begins, and later steps answer from the scan's end.
    scanPage = scanStart;
    return false;
}

bool PSTStandaloneReader::loadMessage(MailProperties* props, uint32_t filter)
{
    if (!currentMessage) {
        position = 0;
        if (currentFolder) currentMessage = currentFolder->getMessageNode(0);
    }
    std::unique_ptr<PST::TreeNode> named;
    PST::TreeNode* node = currentMessage.get();
    if (MailProperty* nodeId = props->findProperty(kNodeIdTag)) {
        named = pst.createNode(nodeId->valueU64());
        node = named.get();
    } else if (MailProperty* entry = props->findProperty(kEntryIdTag)) {
        named = pst.createNode(entryNodeId(entry));
        node = named.get();
    }
    if (!node) return false;
    // Damage inside the message's block only shortens what it offers.
    if (takeSevereError(node->keeper())) return false;
    if (!props->findProperty(kNodeIdTag) && node->desc() && node->desc()->id > 0) {
        const uint64_t id = node->desc()->id;
        props->addProperty(kNodeIdTag, 0, u"EntryID", &id, sizeof id);
    }
    fillItem(node, props, 0, filter);
    decodeMultibyteStrings(props);
    addEntry(props, node->nodeId());
    return true;
}

bool PSTStandaloneReader::doLoadByNid(MailProperties* props, uint32_t* filter, uint64_t nid)
{
    const uint32_t saved = pst.headersOnly();
    pst.setHeadersOnly(0);
    std::unique_ptr<PST::TreeNode> node = pst.createNode(nid);
    if (!node) {
        setError(u"No message with such id exists", u"mcl::PSTStandaloneReader::doLoadByNid", 0, mul::E_FAIL_CODE);
        return false;
    }
    const bool filled = fillItem(node.get(), props, 0, *filter);
    decodeMultibyteStrings(props);
    addEntry(props, node->nodeId());
    pst.setHeadersOnly(saved);
    return filled;
}

bool PSTStandaloneReader::doLoadByID(MailProperties* props, uint32_t* filter, const std::u16string& id)
{
    return loadByEntryText(props, *filter, id, true);
}

bool PSTStandaloneReader::loadByEntryText(MailProperties* props, uint32_t filter, const std::u16string& id,
                                          bool clearHeaderMode)
{
    const char16_t* source = u"mcl::PSTStandaloneReader::doLoadByID";
    std::string entry(kEntrySize, '\0');
    bool valid = id.size() >= 2 * kEntrySize;
    // Only the first 24 bytes have a use; digits beyond them are not read.
    for (size_t i = 0; valid && i < kEntrySize; ++i) {
        const int high = hexDigit(id[2 * i]);
        const int low = hexDigit(id[2 * i + 1]);
        valid = high >= 0 && low >= 0;
        entry[i] = static_cast<char>(high << 4 | low);
    }
    if (!valid) {
        setError(u"Invalid message id", source, 0, mul::E_FAIL_CODE);
        return false;
    }
    const uint32_t saved = pst.headersOnly();
    if (clearHeaderMode) pst.setHeadersOnly(0);
    std::unique_ptr<PST::TreeNode> node =
        pst.createNode(PST::loadU32(reinterpret_cast<const uint8_t*>(entry.data()) + kEntryNodeIdOffset));
    if (!node) {
        setError(u"No message with such id exists", source, 0, mul::E_FAIL_CODE);
        return false;
    }
    if (!props->findProperty(kEntryIdTag)) props->addProperty(kEntryIdTag, 0, u"EntryID", entry.data(), entry.size());
    if (!props->findProperty(kFolderPathTag) && node->desc() && node->desc()->parentId != 0) {
        // A narrow walk: down the first branch that has subfolders, along siblings otherwise.
        PST::Folder* folder = rootFolder;
        const uint64_t wanted = node->desc()->parentId;
        while (folder && folder->nodeId() != wanted)
            folder = folder->hasSubfolders() ? folder->firstChild() : folder->next();
        if (folder) addFolderPath(props, 0, folder);
    }
    const bool filled = fillItem(node.get(), props, 0, filter);
    decodeMultibyteStrings(props);
    if (clearHeaderMode) pst.setHeadersOnly(saved);
    return filled;
}

bool PSTStandaloneReader::doLoadIds(std::vector<uint64_t>& ids)
{
    if (!currentFolder) return true;
    const uint32_t count = currentFolder->getMessageCount();
    for (uint32_t i = 0; i < count; ++i) {
        const uint64_t id = currentFolder->getMessageId(i);
        // Past the table's rows every index gives 0: the rest can't give more.
        if (id == 0 && currentFolder->getContents() && i >= currentFolder->getContents()->rowIds().size()) break;
        if (id != 0) ids.push_back(id);
    }
    return true;
}

bool PSTStandaloneReader::doNext()
{
    if (scanMode) return scanPage != nullptr;
    if (!currentFolder) return false;
    const uint32_t count = currentFolder->getMessageCount();
    if (count == 0) return false;
    if (++position < count) {
        currentMessage = currentFolder->getMessageNode(position);
        return currentMessage != nullptr;
    }
    resetPosition();
    return false;
}

bool PSTStandaloneReader::doSaveEmbeddedMessage(Attachment* attachment, MailProperties* props, const std::u16string&)
{
    const char16_t* source = u"mcl::PSTStandaloneReader::doSaveEmbeddedMessage";
    if (!attachment || !props || !props->findProperty(kAttachObjectTag, attachment->getId())) {
        setError(u"No data to save", source, 0, mul::E_FAIL_CODE);
        return false;
    }
    setError(u"Saving messages from a store is not supported yet", source, 0, kNotImplementedCode);
    return false;
}

bool PSTStandaloneReader::doSaveMessage(MailProperties*, const std::u16string&)
{
    setError(u"Saving messages from a store is not supported yet", u"mcl::PSTStandaloneReader::doSaveMessage", 0,
             kNotImplementedCode);
    return false;
}

int32_t PSTStandaloneReader::doGetItemCount() { return 0; }

FolderTree* PSTStandaloneReader::folderTree() { return this; }

std::u16string PSTStandaloneReader::getCurrentFolderName()
{
    return currentFolder ? currentFolder->getName() : std::u16string();
}

void PSTStandaloneReader::moveToRoot()
{
    currentFolder = rootFolder;
    resetPosition();
}

bool PSTStandaloneReader::moveUp()
{
    if (!currentFolder || currentFolder == rootFolder) return false;
    currentFolder = currentFolder->parent();
    resetPosition();
    return true;
}

bool PSTStandaloneReader::changeDir(const std::u16string& name)
{
    if (!currentFolder) return false;
    for (PST::Folder* child = currentFolder->firstChild(); child; child = child->next()) {
        if (child->getName() != name) continue;
        currentFolder = child;
        resetPosition();
        return true;
    }
    return false;
}

int32_t PSTStandaloneReader::collectDir(std::vector<std::u16string>& names)
{
    if (!currentFolder) return 0;
    int32_t count = 0;
    for (PST::Folder* child = currentFolder->firstChild(); child; child = child->next(), ++count)
        names.push_back(child->getName());
    return count;
}

int32_t PSTStandaloneReader::countDir()
{
    return currentFolder ? static_cast<int32_t>(currentFolder->getMessageCount()) : 0;
}

int32_t PSTStandaloneReader::countDirUnread()
{
    return currentFolder ? static_cast<int32_t>(currentFolder->getUnreadCount()) : 0;
}

int32_t PSTStandaloneReader::countSubfolders()
{
    if (!currentFolder || !currentFolder->hasSubfolders()) return 0;
    return static_cast<int32_t>(currentFolder->getSubfolderCount());
}

bool PSTStandaloneReader::hasSubfolders() { return currentFolder && currentFolder->hasSubfolders(); }

std::string PSTStandaloneReader::entryOf(uint64_t nodeId) const
{
    std::string entry(kEntrySize, '\0');
    if (store) std::memcpy(entry.data() + kEntryKeyOffset, store->recordKey().data(), store->recordKey().size());
    for (int i = 0; i < 4; ++i) entry[kEntryNodeIdOffset + i] = static_cast<char>(nodeId >> (8 * i));
    return entry;
}

std::u16string PSTStandaloneReader::entryTextOf(uint64_t nodeId) const
{
    static const char16_t digits[] = u"0123456789ABCDEF";
    std::u16string text;
    for (unsigned char byte : entryOf(nodeId)) text += {digits[byte >> 4], digits[byte & 15]};
    return text;
}

std::u16string PSTStandaloneReader::folderPath(PST::Folder* folder)
{
    std::u16string path;
    if (folder) {
        path = folder->getName();
        for (PST::Folder* above = folder->parent(); above; above = above->parent()) path = above->getName() + u"/" + path;
    }
    return u"/" + path;
}

void PSTStandaloneReader::addFolderPath(MailProperties* props, uint32_t parent, PST::Folder* folder)
{
    props->addProperty(kFolderPathTag, parent, u"Folder", folderPath(folder));
}

void PSTStandaloneReader::addEntry(MailProperties* props, uint64_t nodeId)
{
    if (props->findProperty(kEntryIdTag)) return;
    const std::string entry = entryOf(nodeId);
    props->addProperty(kEntryIdTag, 0, u"EntryID", entry.data(), entry.size());
}

bool PSTStandaloneReader::fillItem(PST::TreeNode* node, MailProperties* props, uint32_t parent, uint32_t flags)
{
    if (!(flags & (LoadHeaders | LoadBody | LoadListing))) {
        if (flags & LoadAttachments) loadAttachments(node, props, parent);
        return true;
    }
    if (!props->findProperty(kFolderPathTag)) addFolderPath(props, parent, currentFolder);
    // A node without properties is no message.
    if (!loadProperties(node, props, parent, flags)) return false;
    if (flags == LoadListing) return true;
    loadRecipients(node, props, parent);
    convertHtmlBody(props, parent);
    if (flags & LoadAttachments) loadAttachments(node, props, parent);
    return true;
}

MailProperty* PSTStandaloneReader::addItem(MailProperties* props, uint32_t parent, const PST::BlockItem& item)
{
    if (item.value.empty()) return nullptr;
    const uint32_t type = item.type & 0xFFFF;
    const uint32_t tag = item.id << 16 | type;
    const char* bytes = item.value.data();
    size_t size = item.value.size();
    const bool marked = static_cast<uint8_t>(bytes[0]) < 32;
    ty::SystemTime time{};
    if (type == PT_UNICODE && size >= 5 && marked) {
        bytes += 4;
        size -= 4;
    } else if (type == PT_STRING8) {
        decodeEnabled = 1;
        if (size > 2 && marked) {
            bytes += 2;
            size -= 2;
        }
    } else if (type == PT_SYSTIME) {
        // A time that can't be a date stays all zero.
        if (size >= 8)
            if (auto converted = ty::fileTimeToSystemTime(PST::loadU64(reinterpret_cast<const uint8_t*>(bytes))))
                time = *converted;
        bytes = reinterpret_cast<const char*>(&time);
        size = sizeof time;
    }
    return props->addProperty(tag, parent, pst.headersOnly() ? std::u16string() : hexLabel(tag), bytes, size);
}

bool PSTStandaloneReader::loadProperties(PST::TreeNode* node, MailProperties* props, uint32_t parent, uint32_t flags)
{
    const std::vector<PST::ItemRow>& rows = node->rows();
    if (rows.empty()) return false;
    for (const auto& [id, item] : rows[0]) {
        MailProperty* added = addItem(props, parent, item);
        if (!added || pst.headersOnly() || added->tag() != kCompressedRtfTag) continue;
        ty::Buffer stream(item.value.data(), static_cast<int64_t>(item.value.size()));
        try {
            importRtfBody(stream, parent, added->name(), *props);
        } catch (const std::out_of_range&) {
            // A damaged RTF body leaves the message without it; the rest of the message stands.
        }
    }
    // The row brings the headers, the bodies and the other properties along: the item stops
    // asking for them.
    if (auto* item = dynamic_cast<MailItem*>(props->getParent())) item->setLoaded(flags | kSectionsAlwaysLoaded);
    return true;
}

bool PSTStandaloneReader::loadRecipients(PST::TreeNode* node, MailProperties* props, uint32_t parent)
{
    if (!node->block()) return false;
    std::unique_ptr<PST::TreeNode> tree = node->block()->getRecipientTree();
    if (!tree || !tree->block()) return false;
    for (const PST::ItemRow& row : tree->block()->rows()) {
        MailProperty* recipient = props->addProperty(kRecipientRow, parent, u"Recipient");
        for (const auto& [id, item] : row) addItem(props, recipient->id(), item);
    }
    return true;
}

void PSTStandaloneReader::loadAttachments(PST::TreeNode* node, MailProperties* props, uint32_t parent)
{
    if (!node->block()) return;
    std::unique_ptr<PST::TreeNode> tree = node->block()->getAttachmentTree();
    if (!tree) return;
    uint32_t number = 0;
    for (PST::TreeNode* child = tree->firstChild(); child; child = child->next(), ++number) {
        MailProperty* attachment = props->addProperty(kAttachmentRow, parent, u"Attachment");
        props->addProperty(kAttachmentNumberTag, attachment->id(), u"Attachment number", &number, sizeof number);
        PST::TreeNode* embedded = child->firstChild();
        loadAttachmentProperties(child, props, attachment->id(), embedded != nullptr);
        if (!embedded || embeddingDepth >= kMaxEmbeddingDepth) continue;
        MailProperty* object = props->addProperty(kAttachObjectTag, attachment->id(), u"PR_ATTACH_DATA_OBJ");
        ++embeddingDepth;
        fillItem(embedded, props, object->id(), kEmbeddedLoad);
        --embeddingDepth;
    }
}

void PSTStandaloneReader::loadAttachmentProperties(PST::TreeNode* attachment, MailProperties* props, uint32_t parent,
                                                   bool hasEmbedded)
{
    const std::vector<PST::ItemRow>& rows = attachment->rows();
    if (rows.empty()) return;
    for (const auto& [id, item] : rows[0]) {
        if (hasEmbedded && item.id == kAttachDataId) continue;
        MailProperty* added = addItem(props, parent, item);
        if (!added) continue;
        if (added->tag() == kAttachBinaryTag) {
            props->addProperty(kAttachmentTypeTag, parent, u"Attachment type", &kBinaryDataType, sizeof kBinaryDataType);
            continue;
        }
        if (added->tag() != kAttachObjectTag) continue;
        const bool oleObject = addOleObject(added, props, parent);
        props->addProperty(kAttachmentTypeTag, parent, u"Attachment type", &kEmbeddedObjectType,
                           sizeof kEmbeddedObjectType);
        if (oleObject || embeddingDepth >= kMaxEmbeddingDepth) continue;
        PST::IndexId2Node* subnodes = attachment->block() ? attachment->block()->subnodes() : nullptr;
        PST::TreeNode message(std::make_unique<PST::Block>(&pst, item.value, subnodes, PST::KindUnknown));
        ++embeddingDepth;
        fillItem(&message, props, added->id(), kEmbeddedLoad);
        --embeddingDepth;
    }
}

void PSTStandaloneReader::convertHtmlBody(MailProperties* props, uint32_t parent)
{
    MailProperty* html = props->findProperty(kHtmlBytesTag, parent);
    if (!html || html->tag() != kHtmlBytesTag || !html->bytes()) return;
    convertHtmlBytes(html, props);
}

}  // namespace mcl
