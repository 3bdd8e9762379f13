#include "core/mail_item.h"

#include <algorithm>
#include <cstring>

#include "core/base_reader.h"
#include "foundation/log.h"
#include "foundation/time_picture.h"

namespace mcl {

namespace {

constexpr uint32_t kMessageFlags = 0x0E070003;
constexpr uint32_t kFixedListMarker = 0xF0130102;
constexpr uint32_t kMessageFlagUnsent = 0x8;
constexpr uint32_t kMessageFlagHasAttach = 0x10;

std::u16string textOf(const MailProperty* property) { return property ? property->toString() : std::u16string(); }

}  // namespace

MailItem::MailItem(BaseReader* itemReader, uint32_t initialLoaded)
    : BaseObject(u"MailItem"),
      loaded(initialLoaded),
      to(new Recipients(this)),
      cc(new Recipients(this)),
      bcc(new Recipients(this)),
      attachments(new Attachments(this)),
      properties(new MailProperties(this)),
      reader(itemReader)
{
    if (reader) reader->addRef();
}

MailItem::~MailItem()
{
    if (reader) reader->release();
    delete bcc;
    delete cc;
    delete to;
    delete properties;
    delete attachments;
}

std::u16string MailItem::getFileName() const { return reader ? reader->getFilePath() : std::u16string(); }
uint32_t MailItem::getFileType() const { return reader ? reader->getFileType() : 0; }

std::u16string MailItem::getPath()
{
    ty::TraceScope trace("mcl::MailItem::getPath");
    return textOf(properties->findProperty(0xF012001F));
}

std::u16string MailItem::getSubject()
{
    ty::TraceScope trace("mcl::MailItem::getSubject");
    MailProperty* subject = properties->findProperty(0x0037001F, 0);
    if (!subject) subject = properties->findProperty(0x0070001F, 0);
    return textOf(subject);
}

uint32_t MailItem::getSenderAddressType()
{
    ty::TraceScope trace("mcl::MailItem::getSenderAddressType");
    MailProperty* type = properties->findProperty(0x0064001F, 0);
    if (!type) type = properties->findProperty(0x0C1E001F, 0);
    if (!type || !type->bytes()) return AddressUnknown;
    return addressTypeFromText(type->toString());
}

std::u16string MailItem::getSenderAddress()
{
    ty::TraceScope trace("mcl::MailItem::getSenderAddress");
    MailProperty* address = properties->findProperty(0x0065001F, 0);
    if (!address) address = properties->findProperty(0x0C1F001F, 0);
    std::u16string text = textOf(address);
    return text.empty() ? text : stripAddress(std::move(text));
}

std::u16string MailItem::getSenderName()
{
    ty::TraceScope trace("mcl::MailItem::getSenderName");
    MailProperty* name = properties->findProperty(0x0042001F, 0);
    if (!name) name = properties->findProperty(0x0C1A001F, 0);
    std::u16string text = textOf(name);
    return text.empty() ? text : stripAddress(std::move(text));
}

std::u16string MailItem::getFrom()
{
    ty::TraceScope trace("mcl::MailItem::getFrom");
    std::u16string senderName = getSenderName();
    fromText = recipientText(senderName, getSenderAddress(), getSenderAddressType(), true);
    if (!fromText.empty()) {
        MailProperty* sentBy = properties->findProperty(0x3FF8001F);
        if (!sentBy) sentBy = properties->findProperty(0x3FFA001F);
        if (sentBy && sentBy->toString() != senderName)
            fromText = sentBy->toString() + u" on behalf of " + fromText;
    }
    return fromText;
}

MailProperty* MailItem::findBelowMarker(uint32_t tag)
{
    MailProperty* marker = properties->findProperty(kFixedListMarker, 0);
    return marker ? properties->findProperty(tag, marker->id()) : nullptr;
}

std::u16string MailItem::timeText(uint32_t tag)
{
    MailProperty* flags = properties->findProperty(kMessageFlags);
    if (flags && (flags->valueU32() & kMessageFlagUnsent)) return {};
    MailProperty* time = properties->findProperty(tag, 0);
    if (!time) time = findBelowMarker(tag);
    return textOf(time);
}

std::u16string MailItem::getSubmitTime()
{
    ty::TraceScope trace("mcl::MailItem::getSubmitTime");
    return timeText(0x00390040);
}

std::u16string MailItem::getDeliveryTime()
{
    ty::TraceScope trace("mcl::MailItem::getDeliveryTime");
    return timeText(0x0E060040);
}

uint32_t MailItem::getSize()
{
    ty::TraceScope trace("mcl::MailItem::getSize");
    MailProperty* size = properties->findProperty(0x0E080003);
    return size ? size->valueU32() : 0;
}

std::u16string MailItem::getEntryID()
{
    ty::TraceScope trace("mcl::MailItem::getEntryID");
    MailProperty* entry = properties->findProperty(0x0FFF0102, 0);
    if (!entry) entry = findBelowMarker(0x0FFF0102);
    return textOf(entry);
}

uint64_t MailItem::getNid()
{
    ty::TraceScope trace("mcl::MailItem::getNid");
    MailProperty* nid = properties->findProperty(0xF1200102);
    if (!nid) nid = findBelowMarker(0xF1200102);
    return nid && nid->size() == 8 ? nid->valueU64() : 0;
}

bool MailItem::hasAttachments()
{
    ty::TraceScope trace("mcl::MailItem::hasAttachments");
    MailProperty* flags = properties->findProperty(kMessageFlags);
    return flags && flags->bytes() && flags->size() >= 4 && (flags->valueU32() & kMessageFlagHasAttach);
}

bool MailItem::loadMissing(uint32_t want)
{
    uint32_t filter = want;
    return reader && reader->load(properties, &filter);
}

MailProperties* MailItem::getProperties()
{
    ty::TraceScope trace("mcl::MailItem::getProperties");
    if (reader && reader->isHeaderMode()) return properties;
    clearError();
    trace.debug("after clearError");
    trace.debug("_currFilter: ", loaded);
    trace.debug("filter: ", kLoadEverything);
    if (loaded != kLoadEverything && !loadMissing(kLoadEverything & ~loaded) && reader->hasError())
        copyError(*reader);
    if (hasError()) return nullptr;
    loaded = kLoadEverything;
    return properties;
}

void MailItem::fillRecipients()
{
    if (recipientsReady) return;
    distributeRecipients(*properties, reader ? &reader->addressDelimiters() : nullptr, *to, *cc, *bcc);
    recipientsReady = 1;
}

Recipients* MailItem::getTo()
{
    ty::TraceScope trace("mcl::MailItem::getTo");
    fillRecipients();
    return to;
}

Recipients* MailItem::getCC()
{
    ty::TraceScope trace("mcl::MailItem::getCC");
    fillRecipients();
    return cc;
}

Recipients* MailItem::getBCC()
{
    ty::TraceScope trace("mcl::MailItem::getBCC");
    fillRecipients();
    return bcc;
}

Attachments* MailItem::getAttachments()
{
    ty::TraceScope trace("mcl::MailItem::getAttachments");
    clearError();
    if (!(loaded & LoadAttachments)) {
        if (loadMissing(LoadAttachments))
            loaded |= LoadAttachments;
        else if (reader)
            copyError(*reader);
    }
    if (hasError()) return nullptr;
    attachments->fill(properties);
    return attachments;
}

bool MailItem::loadBody()
{
    ty::TraceScope trace("mcl::MailItem::loadBody");
    clearError();
    if (!(loaded & LoadBody)) {
        if (loadMissing(LoadBody) || !reader || !reader->hasError())
            loaded |= LoadBody;
        else
            copyError(*reader);
    }
    return !hasError();
}

bool MailItem::save(const std::u16string& path)
{
    ty::TraceScope trace("mcl::MailItem::save");
    clearError();
    constexpr uint32_t kBasicSections = LoadHeaders | LoadBody | LoadAttachments;
    if (loaded != kBasicSections) {
        uint32_t want = kBasicSections & ~loaded;
        if (loadMissing(want))
            loaded = want;  // only what was just fetched: a later getter may load a section again
        else if (reader)
            copyError(*reader);
    }
    if (!hasError() && reader && !reader->saveMessage(properties, path)) copyError(*reader);
    return !hasError();
}

uint32_t MailItem::presentationKind()
{
    MailProperty* messageClass = properties->findProperty(0x001A001F);
    if (!messageClass) return 0;
    std::u16string text = messageClass->toString();
    static const std::pair<const char16_t*, uint32_t> kinds[] = {
        {u"IPM.Task", 1},    {u"IPM.Appointment", 3}, {u"IPM.Contact", 2},
        {u"IPM.Activity", 4}, {u"IPM.DistList", 5},    {u"REPORT.IPM.Note.NDR", 6},
    };
    for (const auto& [name, kind] : kinds)
        if (text.find(name) != std::u16string::npos) return kind;
    return 0;
}

std::u16string presentationTime(const MailProperty* property)
{
    if (!property || propType(property->tag()) != PT_SYSTIME || !property->bytes()) return {};
    ty::SystemTime utc{};
    std::memcpy(&utc, property->bytes(), static_cast<size_t>(std::min<uint64_t>(sizeof utc, property->size())));
    std::optional<ty::SystemTime> local = ty::utcToLocal(utc);
    if (!local) return {};
    static const std::u16string datePicture = ty::userLongDatePicture();
    static const std::u16string timePicture = ty::userTimePicture();
    return ty::formatDate(*local, datePicture) + u" " + ty::formatTime(*local, timePicture);
}

}  // namespace mcl
