#pragma once
// The reader of a message stored as a compound file (.msg). It walks the storages and streams
// and writes one property for each stream or fixed-size value, so that the tree of properties
// mirrors the tree of storages: recipients and attachments are rows, an attached message's
// properties lie below its attachment.
#include <cstdint>
#include <optional>
#include <string>

#include "core/base_reader.h"
#include "msg/named_property_map.h"
#include "storage/storage.h"

namespace mcl {

class Attachment;
class MailItem;

class MSGReader : public BaseReader {
public:
    explicit MSGReader(const std::u16string& path);
    // Reads the message from `image` instead of the file; the path only names it.
    MSGReader(const std::u16string& path, std::string image);

    const std::u16string& addressDelimiters() const override;
    uint32_t namedPropertyIdByNumber(const Guid& guid, uint32_t number) override;
    uint32_t namedPropertyIdByName(const std::u16string& name) override;
    bool doInit() override;
    bool doLoad(MailProperties* props, uint32_t* filter) override;
    bool doLoadByID(MailProperties* props, uint32_t* filter, const std::u16string& id) override;
    bool doNext() override;
    bool doSaveEmbeddedMessage(Attachment* attachment, MailProperties* props, const std::u16string& path) override;
    bool doSaveMessage(MailProperties* props, const std::u16string& path) override;
    int32_t doGetItemCount() override;
    void afterLoad(MailProperties* props, uint32_t filter) override;

    // Opens the file (or the image) and walks it from the root. Returns the walk's code; a
    // failure is recorded with "Can't open specified file" or "Can't read specified file contents".
    uint32_t OpenStorage(const std::u16string& path, MailProperties* props, uint32_t filter);
    // Adds the children of `storage` below `parent` as the filter asks. A child that can't be
    // opened throws. Returns the code of a listing that failed, or 0.
    uint32_t ReadStorage(cfb::Storage& storage, uint32_t parent, MailProperties* props, uint32_t filter,
                         uint32_t headerSize);
    // The tag text of a stream or storage name: what follows its last "_", or "" for none.
    static std::u16string getPropTag(const std::u16string& name);
    // Reads a value of `size` bytes (fewer for the numeric types) into `property`.
    void ReadPropVal(cfb::Stream& stream, uint64_t size, uint16_t type, MailProperty* property);
    // Records the OLE object that an attachment's storage holds, below `parent`: "OLE Object"
    // (0xF011000D), "MailStream" (0xF0140102), "OLE Object width" (0xF1110003) and "OLE Object
    // height" (0xF1100003). A storage without an object class holds no object (an attached
    // message) and records nothing. Never fails loudly: returns whether an object was recorded.
    static bool ReadOLEStorage(cfb::Storage& storage, uint32_t parent, MailProperties* props);
    // The same for the bytes of a storage, as a TNEF stream carries an attached object.
    static bool ReadOLEStorage(std::string bytes, uint32_t parent, MailProperties* props);
    // The name of the first child of `storage` whose name holds `wanted`: 0 if found,
    // 0x80004005 if not, or the listing's code.
    static uint32_t findStreamByName(cfb::Storage& storage, const std::u16string& wanted, std::u16string& name);
    // Makes a page for tasks, contacts, appointments and journal entries, and turns an HTML body
    // stored as bytes into text by its charset.
    void bodyPostprocess(MailProperties* props);

    // The name behind a named property's id (0x8000 and up), as NamedPropertyMap::nameOf gives it.
    std::u16string namedPropertyName(uint32_t propertyId) const { return names_.nameOf(propertyId); }
    // An attached message as an item of its own, whose getters then read it as they read a
    // message: the records below the attachment's 0x3701000D record, copied up to the root.
    // Null when the attachment holds no message; the caller releases the item.
    MailItem* embeddedMessage(const Attachment& attachment);

private:
    uint32_t openRoot(const std::u16string& path, cfb::Storage& root);
    void readFixedList(cfb::Storage& storage, const cfb::ElementInfo& child, uint32_t parent, MailProperties* props,
                       bool listing, uint32_t headerSize);
    void readPropertyStream(cfb::Storage& storage, const cfb::ElementInfo& child, uint32_t tag, uint32_t parent,
                            MailProperties* props);

    std::optional<std::string> image_;
    NamedPropertyMap names_;
};

// The session's factory for "application/msg".
BaseReader* createMSGReader(const std::u16string& path);

}  // namespace mcl
