// Feeds arbitrary bytes to the MSG reader as a message file in memory and asks the loaded item
// for everything a host can: its header fields, all properties, recipients and attachments. The
// same bytes also go to the entry point for an attached OLE object's storage.
#include <cstddef>
#include <cstdint>
#include <string>

#include "core/mail_item.h"
#include "msg/msg_reader.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    std::string bytes(reinterpret_cast<const char*>(data), size);
    auto* reader = new mcl::MSGReader(u"fuzz.msg", bytes);
    auto* item = new mcl::MailItem(reader, mcl::LoadHeaders);
    reader->release();  // the item holds the reader now
    uint32_t filter = mcl::LoadHeaders;
    if (reader->load(item->getHeaderProperties(), &filter)) {
        item->getSubject();
        item->getFrom();
        item->getSubmitTime();
        item->getTo();
        item->getCC();
        if (mcl::MailProperties* all = item->getProperties())
            for (size_t i = 0; i < all->count(); ++i) all->at(i)->toString();
        if (mcl::Attachments* attachments = item->getAttachments())
            for (size_t i = 0; i < attachments->count(); ++i) attachments->getAttachment(i)->getFileName(false);
    }
    item->release();

    mcl::MailProperties objects;
    mcl::MSGReader::ReadOLEStorage(bytes, 1, &objects);
    return 0;
}
