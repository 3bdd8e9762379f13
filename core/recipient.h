#pragma once
// Recipients of a message, and the lists To, CC and BCC worked out from the table.
#include <cstdint>
#include <string>
#include <vector>

#include "core/types.h"
#include "foundation/base_object.h"

namespace mcl {

class MailProperties;

// 1 if the text holds "EX", else 2 if it holds "SMTP", else 0; case is kept.
uint32_t addressTypeFromText(std::u16string_view text);
// Takes off surrounding blanks, then each pair of quotes or brackets once, in a fixed order.
std::u16string stripAddress(std::u16string text);
// "name <address>", or whichever of the two there is; an Exchange address is never shown.
std::u16string recipientText(std::u16string name, std::u16string address, uint32_t type, bool strip);

class Recipient : public BaseObject {
public:
    Recipient(std::u16string name, std::u16string address, uint32_t addressType);
    Recipient(std::u16string name, std::u16string address, const std::u16string& addressTypeText);

    // A parentless copy.
    Recipient* clone() const;
    std::u16string toString() const;

    const std::u16string& getName() const { return name; }
    const std::u16string& getAddress() const { return address; }
    uint32_t getAddressType() const { return addressType; }

private:
    std::u16string name;
    std::u16string address;
    uint32_t addressType;
};

class Recipients : public BaseObject {
public:
    explicit Recipients(BaseObject* owner = nullptr);
    ~Recipients() override;

    // Takes a free recipient as it is, or a copy of one that another list holds if
    // `copyIfOwned`; an owned one is otherwise left alone.
    void add(Recipient* recipient, bool copyIfOwned);
    std::u16string toString(char16_t separator) const;
    size_t count() const { return members.size(); }
    Recipient* at(size_t index) const { return members[index]; }
    bool empty() const { return members.empty(); }

private:
    std::vector<Recipient*> members;
};

// Sorts the table's recipient rows into the three lists by the display texts; a row that
// matches none ends in To. Does nothing if any list already has members. Without the
// reader's delimiters there are no display texts to match.
void distributeRecipients(const MailProperties& properties, const std::u16string* delimiters, Recipients& to,
                          Recipients& cc, Recipients& bcc);

}  // namespace mcl
