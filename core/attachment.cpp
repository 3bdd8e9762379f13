#include "core/attachment.h"

#include <algorithm>

#include "core/base_reader.h"
#include "core/mail_item.h"
#include "core/mail_property.h"
#include "foundation/stream.h"

namespace mcl {

namespace {

constexpr uint32_t kAttachDataBinary = 0x37010102;
constexpr uint32_t kAttachDataObject = 0x3701000D;

// Text of a value up to its first NUL, read as wide whatever the record's type.
std::u16string wideValue(const MailProperty* property)
{
    const auto* chars = reinterpret_cast<const char16_t*>(property->bytes());
    size_t limit = static_cast<size_t>(property->size() / 2);
    return std::u16string(chars, std::find(chars, chars + limit, u'\0'));
}

std::u16string lowerAscii(std::u16string text)
{
    for (char16_t& c : text)
        if (c >= u'A' && c <= u'Z') c = static_cast<char16_t>(c + 32);
    return text;
}

}  // namespace

Attachment::Attachment(Attachments* list, MailProperties* table, uint32_t rowId)
    : BaseObject(u"Attachment", list), properties(table), id(rowId)
{
    MailProperty* cidRecord = properties->findProperty(0x3712001E, id);
    if (!cidRecord || cidRecord->size() == 0) cidRecord = properties->findProperty(0x3713001E, id);
    if (cidRecord && cidRecord->size() != 0 && cidRecord->bytes()) cid = wideValue(cidRecord);

    MailProperty* dataObject = properties->findMasked(kAttachDataObject, 0xFFFFFFFF, id);
    if (MailProperty* method = properties->findProperty(0x37050003, id)) {
        switch (method->valueU32()) {
        case 5: type = AttachEmbeddedMsg; break;
        case 6:
            type = dataObject && properties->findProperty(0x001A001E, dataObject->id()) ? AttachEmbeddedMsg
                                                                                        : AttachOLE;
            break;
        default: type = cid.empty() ? AttachByValue : AttachEmbeddedByValue; break;
        }
    } else if (dataObject) {
        type = properties->findProperty(0x001A001F, dataObject->id()) ? AttachEmbeddedMsg : AttachOLE;
    } else {
        type = AttachByValue;
    }

    name = properties->getString(0x3001001F, id);
    fileName = properties->getString(0x3707001F, id);
    if (fileName.empty()) fileName = properties->getString(0x3704001F, id);
    if (fileName.empty() && lowerAscii(properties->getString(0x370E001F, id)) == u"multipart/signed")
        fileName = u"SignedMessage.eml";

    if (type == AttachByValue || type == AttachOLE) {
        if (MailProperty* data = properties->findProperty(kAttachDataBinary, id)) size = data->size();
    }
    std::vector<MailProperty*> positions;
    properties->collect(positions, 0x370B0003, id, true, 1, 0xFFFFFFFF);
    if (!positions.empty()) renderingPosition = positions.front()->valueU32();
}

std::u16string Attachment::getFileName(bool exact) const
{
    if (exact) return fileName;
    if (!fileName.empty()) return fileName;
    if (!name.empty()) return name;
    return u"noname_attachment";
}

std::u16string Attachment::getName(bool exact) const
{
    if (exact) return name;
    if (!name.empty()) return name;
    if (!fileName.empty()) return fileName;
    return u"noname";
}

bool Attachment::save(const std::u16string& path)
{
    return type == AttachEmbeddedMsg ? saveEmbedded(path) : saveBin(path);
}

bool Attachment::saveBin(const std::u16string& path)
{
    clearError();
    MailProperty* data = properties->findProperty(kAttachDataBinary, id);
    ty::File file;
    if (!file.open(path, ty::FileWrite, ty::CreateAlways)) {
        setSystemError(static_cast<int>(file.keeper().error()->code()), u"mcl::Attachment::saveBin", 0);
        return false;
    }
    if (data && data->bytes() && data->size() > 0 &&
        file._write(data->bytes(), static_cast<int64_t>(data->size())) < 0) {
        setSystemError(static_cast<int>(file.keeper().error()->code()), u"mcl::Attachment::saveBin", 0);
    }
    file.close();
    return !hasError();
}

bool Attachment::saveEmbedded(const std::u16string& path)
{
    clearError();
    BaseObject* list = getParent();
    auto* item = list ? dynamic_cast<MailItem*>(list->getParent()) : nullptr;
    BaseReader* reader = item ? item->getReader() : nullptr;
    if (!reader) return false;
    bool saved = reader->saveEmbeddedMessage(this, properties, path);
    if (!saved) copyError(*reader);
    return saved;
}

uint32_t Attachment::getInternalIndex() const
{
    MailProperty* index = properties->findProperty(0xF0100102, id);
    return index ? index->valueU32() : 0xFFFFFFFF;
}

Attachments::Attachments(BaseObject* owner) : BaseObject(u"Attachments", owner) {}

Attachments::~Attachments()
{
    for (Attachment* member : members) delete member;
}

void Attachments::fill(MailProperties* properties)
{
    clearError();
    if (filled) return;
    filled = 1;
    std::vector<MailProperty*> rows;
    properties->collect(rows, kAttachmentRow, 0, false, 0, 0xFFFFFFFF);
    for (MailProperty* row : rows) {
        std::vector<MailProperty*> below;
        properties->collect(below, 0, row->id(), false, 0, 0xFFFFFFFF);
        if (!below.empty()) members.push_back(new Attachment(this, properties, row->id()));
    }
}

Attachment* Attachments::getAttachment(size_t index)
{
    clearError();
    if (index >= members.size()) {
        setError(u"Out of range", u"mcl::Attachments::getAttachment", 0, mul::E_FAIL_CODE);
        return nullptr;
    }
    return members[index];
}

}  // namespace mcl
