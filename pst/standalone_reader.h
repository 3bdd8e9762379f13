#pragma once
// The reader of personal-folder files (.pst, .ost) without any MAPI provider. It owns the
// parser, keeps a current folder and a message position for the host, and fills an item with
// a message's properties, recipients, attachments and embedded messages. Its second face is
// the folder tree the host walks.
//
// A message has three ids: its node id (the contents table's row id), its entry (4 zero bytes,
// the store's record key, the node id as u32: 24 bytes), and the entry as hexadecimal text.
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "core/base_reader.h"
#include "core/folder_tree.h"
#include "pst/folder.h"
#include "pst/reader.h"
#include "pst/store.h"

namespace mcl {

constexpr uint32_t kNodeIdTag = 0xF1200102;      // the message's node id, 8 bytes
constexpr uint32_t kEntryIdTag = 0x0FFF0102;     // the message's entry, 24 bytes
constexpr uint32_t kFolderPathTag = 0xF012001F;  // the path of the folder the message was read in
constexpr size_t kEntrySize = 24;

class PSTStandaloneReader : public BaseReader, public FolderTree {
public:
    explicit PSTStandaloneReader(const std::u16string& path);
    ~PSTStandaloneReader() override;

    uint32_t setHeaderMode(uint32_t value) override;
    const std::u16string& addressDelimiters() const override;
    uint32_t isHeaderMode() const override;
    uint32_t namedPropertyIdByNumber(const Guid& guid, uint32_t number) override;
    uint32_t namedPropertyIdByName(const std::u16string& name) override;
    bool doInit() override;
    bool doLoad(MailProperties* props, uint32_t* filter) override;
    bool doLoadByID(MailProperties* props, uint32_t* filter, const std::u16string& id) override;
    bool doLoadByNid(MailProperties* props, uint32_t* filter, uint64_t nid) override;
    bool doLoadIds(std::vector<uint64_t>& ids) override;
    bool doNext() override;
    bool doSaveEmbeddedMessage(Attachment* attachment, MailProperties* props, const std::u16string& path) override;
    bool doSaveMessage(MailProperties* props, const std::u16string& path) override;
    int32_t doGetItemCount() override;
    FolderTree* folderTree() override;
    virtual std::u16string getCurrentFolderName();

    void moveToRoot() override;
    bool moveUp() override;
    bool changeDir(const std::u16string& name) override;
    int32_t collectDir(std::vector<std::u16string>& names) override;
    int32_t countDir() override;
    int32_t countDirUnread() override;
    int32_t countSubfolders() override;
    bool hasSubfolders() override;

    // The message's entry, and the same as hexadecimal text.
    std::string entryOf(uint64_t nodeId) const;
    std::u16string entryTextOf(uint64_t nodeId) const;
    // "/" and the names from the root down, the root's own name included.
    static std::u16string folderPath(PST::Folder* folder);

    PST::Store* getStore() const { return store.get(); }
    PST::Folder* getRootFolder() const { return rootFolder; }
    PST::Folder* getCurrentFolder() const { return currentFolder; }
    uint32_t getPosition() const { return position; }

protected:
    PSTStandaloneReader(const std::u16string& className, const std::u16string& path);

    // Frees the current message and goes back to the start of the folder.
    virtual void resetPosition();
    // Loads the current message, or the one the item names (steps shared by both readers).
    bool loadMessage(MailProperties* props, uint32_t filter);
    bool loadByEntryText(MailProperties* props, uint32_t filter, const std::u16string& id, bool clearHeaderMode);
    // A held error of level 3 or above becomes this reader's error; true if there was one.
    bool takeSevereError(const ty::ErrorKeeper& keeper);

    bool fillItem(PST::TreeNode* node, MailProperties* props, uint32_t parent, uint32_t flags);

    PST::Reader pst;
    std::unique_ptr<PST::Store> store;
    PST::Folder* rootFolder = nullptr;
    PST::Folder* currentFolder = nullptr;
    std::unique_ptr<PST::TreeNode> currentMessage;
    uint32_t position = 0;

private:
    bool scan();
    MailProperty* addItem(MailProperties* props, uint32_t parent, const PST::BlockItem& item);
    bool loadProperties(PST::TreeNode* node, MailProperties* props, uint32_t parent, uint32_t flags);
    bool loadRecipients(PST::TreeNode* node, MailProperties* props, uint32_t parent);
    void loadAttachments(PST::TreeNode* node, MailProperties* props, uint32_t parent);
    void loadAttachmentProperties(PST::TreeNode* attachment, MailProperties* props, uint32_t parent, bool hasEmbedded);
    void convertHtmlBody(MailProperties* props, uint32_t parent);
    void addEntry(MailProperties* props, uint64_t nodeId);
    void addFolderPath(MailProperties* props, uint32_t parent, PST::Folder* folder);

    uint8_t scanMode = 0;
    // Where a scan for messages outside any folder stands in the node tree. Nothing gives it a
    // start page, so a scan ends at once.
    PST::TableNodeLazy<PST::DescIndex::DescIndexNode>* scanPage = nullptr;
    PST::TableNodeLazy<PST::DescIndex::DescIndexNode>* scanStart = nullptr;
    // Embedded messages may name each other in a damaged file; nesting stops here.
    int embeddingDepth = 0;
};

// The session's factory for "application/pst" with ContextVersion 3.
BaseReader* createPSTStandaloneReader(const std::u16string& path);

}  // namespace mcl
