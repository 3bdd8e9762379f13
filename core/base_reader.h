#pragma once
// The frame of every file reader: public wrappers that trace, catch and report around the
// format-specific do... operations, and what all readers share.
#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "core/mail_property.h"

namespace mcl {

class Attachment;
class FolderTree;

using Guid = std::array<uint8_t, 16>;

// A recipient as a reader found it: display name and address.
struct RecipientRecord {
    std::u16string displayName;
    std::u16string address;
};

class BaseReader : public BaseObject {
public:
    BaseReader(std::u16string className, std::u16string path, uint32_t fileType);
    ~BaseReader() override;

    // Slots in their order.
    virtual uint32_t setHeaderMode(uint32_t value);
    virtual const std::u16string& addressDelimiters() const;
    virtual uint32_t isHeaderMode() const;
    virtual uint32_t namedPropertyIdByNumber(const Guid& guid, uint32_t number);
    virtual uint32_t namedPropertyIdByName(const std::u16string& name);
    virtual bool doInit() = 0;
    virtual bool doLoad(MailProperties* props, uint32_t* filter) = 0;
    virtual bool doLoadByID(MailProperties* props, uint32_t* filter, const std::u16string& id) = 0;
    virtual bool doLoadByNid(MailProperties* props, uint32_t* filter, uint64_t nid);
    virtual bool doLoadIds(std::vector<uint64_t>& ids);
    virtual bool doNext() = 0;
    virtual bool doSaveEmbeddedMessage(Attachment* attachment, MailProperties* props, const std::u16string& path) = 0;
    virtual bool doSaveMessage(MailProperties* props, const std::u16string& path) = 0;
    virtual int32_t doGetItemCount() = 0;
    virtual uint32_t reserved() { return 0; }
    virtual FolderTree* folderTree();
    virtual void decodeMultibyteStrings(MailProperties* props);
    virtual void afterLoad(MailProperties* props, uint32_t filter);

    // Public wrappers.
    bool init();
    bool load(MailProperties* props, uint32_t* filter);
    bool loadByID(MailProperties* props, uint32_t* filter, const std::u16string& id);
    bool loadByNid(MailProperties* props, uint32_t* filter, uint64_t nid);
    bool loadIds(std::vector<uint64_t>& ids);
    bool next();
    bool saveEmbeddedMessage(Attachment* attachment, MailProperties* props, const std::u16string& path);
    bool saveMessage(MailProperties* props, const std::u16string& path);
    int32_t getCount();

    const std::u16string& getFilePath() const { return filePath; }
    uint32_t getFileType() const { return fileType; }
    uint32_t getAnsiCodePage() const { return ansiCodePage; }
    FolderTree* getCachedFolderTree() const { return cachedFolderTree; }
    void setCachedFolderTree(FolderTree* tree) { cachedFolderTree = tree; }

    // Adds a "Recipient" row with "Display name" and "Email address" below it for each record.
    bool addRecipientRows(const std::vector<RecipientRecord>& records, MailProperties* props, uint32_t parentId);
    // Opens an attached object's bytes as a compound file; see the definition for what is recorded.
    bool addOleObject(const MailProperty* sourceProperty, MailProperties* props, uint32_t parentId);
    // A narrow charset name for an HTML body, from the message's code page or its content type.
    std::string contentCharset(const MailProperties* props);
    // Turns an HTML body stored as bytes into wide text by the charset its page declares (the
    // declaration is taken out), or else by contentCharset.
    void convertHtmlBytes(MailProperty* html, const MailProperties* props);

protected:
    uint8_t decodeEnabled = 0;
    uint32_t decodedUpTo = 0;

private:
    template <class Call>
    bool guarded(const char* source, Call&& call);

    std::u16string filePath;
    uint32_t fileType;
    uint32_t ansiCodePage = 0;
    uint32_t conversionMode = 0;
    FolderTree* cachedFolderTree = nullptr;
};

}  // namespace mcl
