// The end of each load of a message file: a page for items that aren't mail, made from their
// properties, and the HTML body turned from bytes into text by its charset.
#include <string>

#include "foundation/log.h"
#include "msg/msg_reader.h"
#include "msg/renderers.h"

namespace mcl {

namespace {

constexpr uint32_t kMessageClassTag = 0x001A001F;
constexpr uint32_t kPlainBodyTag = 0x1000001F;
constexpr uint32_t kHtmlBodyTag = 0x1013001F;
constexpr uint32_t kHtmlBodyBytesTag = 0x10130102;

struct LabelRow {
    const char16_t* label;
    uint32_t tag;
};

// Tags above 0x8000 are the raw property numbers these items are stored with; the named
// property map isn't consulted. Rows of the same label, and the To and Attendees rows, may
// print the same thing twice, and do.
constexpr LabelRow kTaskRows[] = {
    {u"\nSubject: ", 0x0037001E},    {u"\nDue: ", 0x801A0040},         {u"\nStart Date: ", 0x801B0040},
    {u"\nPriority: ", 0x00260003},   {u"\nImportance: ", 0x00170003},
};
constexpr LabelRow kContactRows[] = {
    {u"\nName: ", 0x3001001E},           {u"\nCompany: ", 0x3A16001E},       {u"\nAddress: ", 0x3A15001E},
    {u"\nOffice Location: ", 0x3A19001E}, {u"\nDepartment Name: ", 0x3A18001E}, {u"\nProfession: ", 0x3A46001E},
    {u"\nBusiness Phone: ", 0x3A08001E},  {u"\nHome Phone: ", 0x3A09001E},     {u"\nMobile Phone: ", 0x3A1C001E},
    {u"\nFax: ", 0x3A24001E},
};
constexpr LabelRow kAppointmentRows[] = {
    {u"\nSubject: ", 0x0037001E},    {u"\nLocation: ", 0x8005001F},   {u"\nLocation: ", 0x8007001F},
    {u"\nTo: ", 0x0E04001E},         {u"\nBegin Date: ", 0x80080040}, {u"\nBegin Date: ", 0x80060040},
    {u"\nEnd Date: ", 0x80070040},   {u"\nEnd Date: ", 0x80090040},   {u"\nAlarm Time: ", 0x80230003},
    {u"\nAttendees: ", 0x0E04001E},
};

template <size_t N>
void writeItemPage(mul::IRenderer& page, const MailProperties& props, const char16_t* title,
                   const LabelRow (&rows)[N], const std::u16string& notes)
{
    page.paragraph(title);
    for (const LabelRow& row : rows)
        if (const MailProperty* property = props.findProperty(row.tag))
            page.paragraph(row.label + property->toString());
    page.paragraph(u"\nNotes:\n" + notes);
}

}  // namespace

void MSGReader::bodyPostprocess(MailProperties* props)
{
    ty::TraceScope trace("mcl::MSGReader::bodyPostprocess");
    const MailProperty* classProperty = props->findProperty(kMessageClassTag);
    if (!classProperty) return;
    const std::u16string messageClass = classProperty->toString();
    std::u16string notes;
    if (const MailProperty* body = props->findProperty(kPlainBodyTag)) notes = body->toString();

    mul::TextRenderer page;
    if (messageClass == u"IPM.Task") {
        writeItemPage(page, *props, u"TASK", kTaskRows, notes);
    } else if (messageClass == u"IPM.Contact") {
        writeItemPage(page, *props, u"CONTACT", kContactRows, notes);
    } else if (messageClass == u"IPM.Appointment") {
        writeItemPage(page, *props, u"APPOINTMENT", kAppointmentRows, notes);
    } else if (messageClass == u"IPM.Activity") {
        page.paragraph(notes);
    } else {
        MailProperty* html = props->findProperty(kHtmlBodyBytesTag, 0);
        if (!html || propType(html->tag()) != PT_BINARY) return;
        convertHtmlBytes(html, props);
        return;
    }
    MailProperty* html = props->findProperty(kHtmlBodyTag);
    if (!html) html = props->addProperty(kHtmlBodyTag, 0, u"Body", std::u16string_view());
    html->setValue(page.renderedText());
}

}  // namespace mcl
