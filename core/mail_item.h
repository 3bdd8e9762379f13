#pragma once
// One message as the rest of the system sees it: the table, the recipient and attachment
// lists, and a counted reference on the reader that loads more of it on demand.
#include <cstdint>
#include <string>

#include "core/attachment.h"
#include "core/mail_property.h"
#include "core/recipient.h"
#include "core/types.h"

namespace mcl {

class BaseReader;

class MailItem : public BaseObject {
public:
    MailItem(BaseReader* reader, uint32_t loaded);
    ~MailItem() override;

    std::u16string getFileName() const;
    uint32_t getFileType() const;
    std::u16string getPath();
    std::u16string getSubject();
    uint32_t getSenderAddressType();
    std::u16string getSenderAddress();
    std::u16string getSenderName();
    // "name <address>", with "X on behalf of " in front when another person sent it.
    std::u16string getFrom();
    // Empty for an unsent message.
    std::u16string getSubmitTime();
    std::u16string getDeliveryTime();
    uint32_t getSize();
    std::u16string getEntryID();
    uint64_t getNid();
    // Answers from the message flags without loading attachments.
    bool hasAttachments();
    MailProperties* getHeaderProperties() { return properties; }
    // Loads everything not loaded yet; in header mode, the table as it stands.
    MailProperties* getProperties();
    Recipients* getTo();
    Recipients* getCC();
    Recipients* getBCC();
    Attachments* getAttachments();
    // Loads the bodies if they haven't been loaded.
    bool loadBody();
    // The stored body of a type (0 plain, 1 RTF, 2 HTML); an HTML body has its links pointed at
    // the attachments' saved names once the attachments are loaded.
    MailProperty* getBodyProp(int32_t type);
    // RTF in sync wins, then HTML, then plain text.
    int32_t getProperBodyType();
    // A body as text; plain text is made from the HTML body when the message has none.
    std::u16string getBodyText(int32_t type);
    // Writes a body to a file, with the attachments an HTML body links to saved beside it.
    bool exportBody(int32_t type, const std::u16string& fullPath);
    // Points an HTML body's links at the attachments' saved names.
    std::u16string& formatHtmlBodyLinks(std::u16string& html);
    // Saves through the reader that read the message, in its format.
    bool save(const std::u16string& path);
    // 1 task, 2 contact, 3 appointment, 4 journal, 5 distribution list, 6 non-delivery report, 0 other.
    uint32_t presentationKind();

    BaseReader* getReader() const { return reader; }
    uint32_t getLoaded() const { return loaded; }
    // A reader that loads more than it was asked for says so here.
    void setLoaded(uint32_t sections) { loaded = sections; }

private:
    std::u16string timeText(uint32_t tag);
    MailProperty* findBelowMarker(uint32_t tag);
    bool loadMissing(uint32_t want);
    void fillRecipients();

    std::u16string htmlBodyText(MailProperty* property) const;

    uint8_t htmlLinksPending = 1;
    uint32_t loaded;
    std::u16string rtfText;
    std::u16string fromText;
    uint8_t recipientsReady = 0;
    Recipients* to;
    Recipients* cc;
    Recipients* bcc;
    Attachments* attachments;
    MailProperties* properties;
    BaseReader* reader;
};

// The name an attachment is linked and saved under beside an exported HTML body.
std::u16string attachmentLinkName(const std::u16string& fileName, const std::u16string& cid, uint32_t index);
// From the last "." to the end, or empty.
std::u16string fileExtension(const std::u16string& name);
// Puts a backslash before each character a pattern treats specially ("]" excepted).
std::u16string quoteForPattern(const std::u16string& text);

// A date property as the message pages show it: in local time, by the user's long date and
// time pictures; empty for anything that isn't a date.
std::u16string presentationTime(const MailProperty* property);

}  // namespace mcl
