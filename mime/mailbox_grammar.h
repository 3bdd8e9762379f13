#pragma once
// The address grammar of RFC 5322, obsolete forms included, over a piece of an address list.
#include <optional>
#include <string_view>

#include "mime/mail_address.h"

namespace mcl {

// The mailboxes of the text, read as an address list: a mailbox gives one pair, a group its
// members, an empty member nothing. Display names come as written (quotes undone, one blank
// for each run of white space and comments); a mailbox without one takes the text of the
// comments around it, as "joe@x (Joe Bloggs)" means and mail programs show it. Addresses lose
// source routes, comments and folding; one that lacks its local part or domain comes as
// written. Nothing when the text is no address list.
std::optional<MailAddressList> readMailboxes(std::u16string_view text);

}  // namespace mcl
