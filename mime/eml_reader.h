#pragma once
// Reads one Internet message file (EML, MHT, MHTML) into a property table.
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "core/base_reader.h"
#include "mime/header_decoder.h"
#include "mime/mime.h"

namespace mcl {

class EMLReader : public BaseReader, public HeaderDecoder {
public:
    explicit EMLReader(const std::u16string& path);
    ~EMLReader() override;

    const std::u16string& addressDelimiters() const override;
    bool doInit() override;
    bool doLoad(MailProperties* props, uint32_t* filter) override;
    bool doLoadByID(MailProperties* props, uint32_t* filter, const std::u16string& id) override;
    bool doNext() override { return false; }
    bool doSaveEmbeddedMessage(Attachment* attachment, MailProperties* props, const std::u16string& path) override;
    bool doSaveMessage(MailProperties* props, const std::u16string& path) override;
    int32_t doGetItemCount() override { return 1; }

    // 0 a body or a part of no use as attachment, 1 an attachment (or a named text part),
    // 2 an attachment with a content id, 3 an embedded message.
    uint32_t classifyPart(const CMimePart& part) const;

private:
    bool addProperties(MailProperties* props, uint32_t filter);
    bool readAndParse(uint32_t parseMode);
    bool addHeader(CMimePart* root, MailProperties* props);
    bool addPropertiesFromParser(MailProperties* props, uint32_t filter, bool skipRoot);
    uint32_t addPartHead(MailProperties* props, CMimePart& part);
    void addPartProperties(CMimePart& part, uint32_t parentId, MailProperties* props, uint32_t flags);
    std::u16string partText(const CMimePart& part, std::string_view bytes) const;

    std::unique_ptr<CMime> parser;
    uint8_t headerOnlyParse = 0;
    std::vector<CMimePart*> doneParts;
    uint32_t fileSize = 0;
};

// The property tag a part's content type stands for: a body, an attachment row, or a header.
uint32_t tagForType(std::string_view contentType);
bool isBodyTag(uint32_t tag);

// The session's maker of EML readers.
BaseReader* createEmlReader(const std::u16string& path);

}  // namespace mcl
