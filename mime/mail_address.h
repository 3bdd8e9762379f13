#pragma once
// Address lists of mail headers ("To", "From", display lists of stored messages) as pairs of
// display name and address.
#include <string>
#include <string_view>
#include <vector>

namespace mcl {

struct MailAddress {
    std::u16string displayName;
    std::u16string address;

    friend bool operator==(const MailAddress&, const MailAddress&) = default;
};

using MailAddressList = std::vector<MailAddress>;

// Splits at the delimiters outside quotes and outside a group ("team: a@x, b@y;" stays whole)
// and reads each piece by the mailbox grammar; a group gives its members. A piece the grammar
// can't read becomes an address if it holds "@" and a name if not, and so does the whole text
// when nothing else came of it. ";" separates nothing unless it is one of the delimiters.
MailAddressList parseAddressList(std::u16string_view text, std::u16string_view delimiters);

// For display lists such as "Ann <a@x>; Bob [b@y]": splits at every delimiter, and reads each
// piece as a name followed by an address in "<>", "[]" or quotes, or else as above.
MailAddressList parseAddressListLoose(std::u16string_view text, std::u16string_view delimiters);

}  // namespace mcl
