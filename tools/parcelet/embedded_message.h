#pragma once
// The messages attached to a message, reached by their numbers in the attachment lists.
#include <string>

#include "core/mail_item.h"

namespace cli {

// The message `attachment` holds, as an item of its own; null when it holds none or the item's
// reader can't lay one out. The caller releases it.
mcl::MailItem* embeddedMessage(mcl::MailItem& item, const mcl::Attachment& attachment);

// Follows numbers such as "2.1" (1-based, one a level) down from `item`. Null with `error` set
// when a number names no attached message.
mcl::MailItem* embeddedMessageAt(mcl::MailItem& item, const std::string& numbers, std::string& error);

}  // namespace cli
