// Feeds arbitrary bytes to the EML reader as a message file and loads everything an item can
// give: headers, recipients, attachments, bodies as text.
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>

#include "core/mail_item.h"
#include "core/session.h"
#include "foundation/utf.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static const std::string path = "/dev/shm/parcelet-eml-fuzz-" + std::to_string(getpid()) + ".eml";
    std::FILE* file = std::fopen(path.c_str(), "wb");
    if (!file) return 0;
    std::fwrite(data, 1, size, file);
    std::fclose(file);
    mcl::Session session;
    if (mcl::MailItem* item = session.readFile(ty::utf8ToWide(path), false)) {
        item->getFrom();
        item->getTo();
        item->getSubmitTime();
        item->getProperties();
        if (mcl::Attachments* list = item->getAttachments())
            for (size_t i = 0; i < list->count(); ++i) list->getAttachment(i)->getFileName(false);
        item->getBodyText(BodyPlainText);
        item->getBodyText(BodyHTML);
        item->release();
    }
    return 0;
}
