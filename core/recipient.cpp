#include "core/recipient.h"

#include "core/mail_property.h"
#include "foundation/log.h"
#include "foundation/text.h"

namespace mcl {

uint32_t addressTypeFromText(std::u16string_view text)
{
    if (text.find(u"EX") != std::u16string_view::npos) return AddressExchange;
    if (text.find(u"SMTP") != std::u16string_view::npos) return AddressSMTP;
    return AddressUnknown;
}

std::u16string stripAddress(std::u16string text)
{
    if (text.empty()) return text;
    if (text.front() == u' ' || text.back() == u' ') {
        size_t first = text.find_first_not_of(u' ');
        text = first == std::u16string::npos ? std::u16string() : text.substr(first, text.find_last_not_of(u' ') - first + 1);
    }
    static const char16_t pairs[][2] = {{u'"', u'"'}, {u'\'', u'\''}, {u'(', u')'},
                                        {u'[', u']'}, {u'{', u'}'},   {u'<', u'>'}};
    for (const auto& pair : pairs) {
        if (text.size() > 2 && text.front() == pair[0] && text.back() == pair[1])
            text = text.substr(1, text.size() - 2);
    }
    return text;
}

std::u16string recipientText(std::u16string name, std::u16string address, uint32_t type, bool strip)
{
    if (strip) {
        name = stripAddress(std::move(name));
        address = stripAddress(std::move(address));
    }
    for (char16_t& c : name) {
        if (c == 7 || c == 8 || (c >= 10 && c <= 13)) c = u' ';
    }
    if (type == AddressExchange && !name.empty()) return name;
    if (name.empty()) return address;
    if (address.empty() || address == name) return name;
    return name + u" <" + address + u">";
}

Recipient::Recipient(std::u16string displayName, std::u16string emailAddress, uint32_t type)
    : BaseObject(u"Recipient"),
      name(stripAddress(std::move(displayName))),
      address(stripAddress(std::move(emailAddress))),
      addressType(type)
{
    ty::TraceScope trace("mcl::Recipient::Recipient");
    trace.debug("name = ", name, ", addr = ", address);
}

Recipient::Recipient(std::u16string displayName, std::u16string emailAddress, const std::u16string& typeText)
    : BaseObject(u"Recipient"),
      name(stripAddress(std::move(displayName))),
      address(stripAddress(std::move(emailAddress))),
      addressType(addressTypeFromText(typeText))
{
    ty::TraceScope trace("mcl::Recipient::Recipient");
    trace.debug("name = ", name, ", addr = ", address, ", addr_type = ", typeText);
}

Recipient* Recipient::clone() const
{
    return new Recipient(name, address, addressType);
}

std::u16string Recipient::toString() const
{
    return recipientText(name, address, addressType, false);
}

Recipients::Recipients(BaseObject* owner) : BaseObject(u"Recipients", owner) {}

Recipients::~Recipients()
{
    for (Recipient* member : members) delete member;
}

void Recipients::add(Recipient* recipient, bool copyIfOwned)
{
    if (recipient->getParent()) {
        if (!copyIfOwned) return;
        recipient = recipient->clone();
    }
    recipient->setParent(this);
    members.push_back(recipient);
}

std::u16string Recipients::toString(char16_t separator) const
{
    std::u16string text;
    for (size_t i = 0; i < members.size(); ++i) {
        if (i) {
            text += separator;
            text += u' ';
        }
        text += members[i]->toString();
    }
    return text;
}

namespace {

bool occursIn(const std::u16string& part, const std::u16string& token)
{
    return !part.empty() && token.find(part) != std::u16string::npos;
}

void matchTokens(std::vector<std::u16string>& tokens, const std::vector<Recipient*>& pool, Recipients& list,
                 bool strict)
{
    std::vector<bool> used(tokens.size(), false);
    for (size_t t = 0; t < tokens.size(); ++t) {
        Recipient* chosen = nullptr;
        for (Recipient* candidate : pool) {
            if (candidate->getParent() == &list) continue;
            bool name = occursIn(candidate->getName(), tokens[t]);
            bool address = occursIn(candidate->getAddress(), tokens[t]);
            if (strict ? !(name && address) : !(name || address)) continue;
            chosen = candidate;
            if (!candidate->getParent()) break;
        }
        if (chosen) {
            list.add(chosen, true);
            used[t] = true;
        }
    }
    std::vector<std::u16string> left;
    for (size_t t = 0; t < tokens.size(); ++t)
        if (!used[t]) left.push_back(std::move(tokens[t]));
    tokens = std::move(left);
}

}  // namespace

void distributeRecipients(const MailProperties& properties, const std::u16string* delimiters, Recipients& to,
                          Recipients& cc, Recipients& bcc)
{
    if (!to.empty() || !cc.empty() || !bcc.empty()) return;
    std::vector<MailProperty*> rows;
    properties.collect(rows, kRecipientRow, 0, false, static_cast<int64_t>(properties.count()), 0xFFFFFFFF);
    std::vector<Recipient*> pool;
    for (MailProperty* row : rows) {
        pool.push_back(new Recipient(properties.getStringOrAny(0x3001001E, row->id()),
                                     properties.getStringOrAny(0x3003001E, row->id()),
                                     properties.getStringOrAny(0x3002001E, row->id())));
    }
    std::vector<std::u16string> tokens[3];
    if (delimiters) {
        const uint32_t displayTags[3] = {0x0E04001E, 0x0E03001E, 0x0E02001E};
        for (int i = 0; i < 3; ++i)
            ty::splitTokens(properties.getStringOrAny(displayTags[i], -1), *delimiters, tokens[i], true);
    }
    Recipients* lists[3] = {&to, &cc, &bcc};
    for (bool strict : {true, false})
        for (int i = 0; i < 3; ++i) matchTokens(tokens[i], pool, *lists[i], strict);
    for (Recipient* recipient : pool) to.add(recipient, false);  // a matched one stays where it is
}

}  // namespace mcl
