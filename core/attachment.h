#pragma once
// An item's attachments, read from the attachment rows of its table.
#include <cstdint>
#include <string>
#include <vector>

#include "core/types.h"
#include "foundation/base_object.h"

namespace mcl {

class Attachments;
class MailProperties;

class Attachment : public BaseObject {
public:
    Attachment(Attachments* list, MailProperties* properties, uint32_t rowId);

    // With `exact` false, falls back to the name and then to "noname_attachment".
    std::u16string getFileName(bool exact) const;
    // With `exact` false, falls back to the file name and then to "noname".
    std::u16string getName(bool exact) const;
    bool save(const std::u16string& path);
    // Writes the data as it stands; an attachment without data gives an empty file.
    bool saveBin(const std::u16string& path);
    // Hands an attached message to the reader that read the item.
    bool saveEmbedded(const std::u16string& path);
    // The attachment's number in its source, or 0xFFFFFFFF.
    uint32_t getInternalIndex() const;

    uint32_t getId() const { return id; }
    uint32_t getType() const { return type; }
    const std::u16string& getCid() const { return cid; }
    uint64_t getSize() const { return size; }
    uint32_t getRenderingPosition() const { return renderingPosition; }
    MailProperties* getProperties() const { return properties; }

private:
    MailProperties* properties;
    uint32_t id;
    uint32_t type = AttachNone;
    std::u16string name;
    std::u16string fileName;
    std::u16string cid;
    uint64_t size = 0;
    uint32_t renderingPosition = 0xFFFFFFFF;
};

class Attachments : public BaseObject {
public:
    explicit Attachments(BaseObject* owner = nullptr);
    ~Attachments() override;

    // Makes one attachment per non-empty attachment row at the root; runs once.
    void fill(MailProperties* properties);
    Attachment* getAttachment(size_t index);
    size_t count() const { return members.size(); }

private:
    std::vector<Attachment*> members;
    uint8_t filled = 0;
};

}  // namespace mcl
