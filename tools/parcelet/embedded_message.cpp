#include "embedded_message.h"

#include <sstream>

#include "msg/msg_reader.h"

namespace cli {

mcl::MailItem* embeddedMessage(mcl::MailItem& item, const mcl::Attachment& attachment)
{
    // Only the MSG reader keeps an attached message's records below its attachment.
    auto* reader = dynamic_cast<mcl::MSGReader*>(item.getReader());
    if (!reader || attachment.getType() != AttachEmbeddedMsg) return nullptr;
    return reader->embeddedMessage(attachment);
}

mcl::MailItem* embeddedMessageAt(mcl::MailItem& item, const std::string& numbers, std::string& error)
{
    std::istringstream levels(numbers);
    std::string number;
    mcl::MailItem* current = nullptr;
    std::string reached;
    while (std::getline(levels, number, '.')) {
        mcl::MailItem& parent = current ? *current : item;
        reached += (reached.empty() ? "" : ".") + number;
        mcl::Attachments* attachments = parent.getAttachments();
        size_t index = 0;
        if (!number.empty() && number.find_first_not_of("0123456789") == std::string::npos && number.size() < 9)
            index = std::stoul(number);
        mcl::MailItem* next = nullptr;
        if (attachments && index >= 1 && index <= attachments->count())
            next = embeddedMessage(parent, *attachments->getAttachment(index - 1));
        if (current) current->release();
        current = next;
        if (!current) {
            error = "attachment " + reached + " is no attached message";
            return nullptr;
        }
    }
    if (!current) error = "no attachment number given";
    return current;
}

}  // namespace cli
