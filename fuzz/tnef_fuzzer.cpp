// Feeds arbitrary bytes to the TNEF parser as a stream held in memory, and lists the
// attachments of the table it fills.
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>

#include "core/attachment.h"
#include "core/mail_property.h"
#include "tnef/tnef_parser.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    mcl::MailProperties table;
    ty::Buffer input(data, static_cast<int64_t>(size));
    std::string name;
    try {
        mcl::TNEFParser::parse(name, input, &table, 0);
    } catch (const std::out_of_range&) {
        // A compressed RTF body that can't be decoded: the reader frame reports it as an error.
    }
    mcl::Attachments attachments;
    attachments.fill(&table);
    for (size_t i = 0; i < attachments.count(); ++i) attachments.getAttachment(i)->getFileName(false);
    return 0;
}
