#include "mime/mail_address.h"

#include <optional>

#include "foundation/text.h"
#include "mime/mailbox_grammar.h"
#include "regex/pattern.h"

namespace mcl {
namespace {

using namespace std::string_view_literals;

constexpr std::u16string_view kNameTrim = u"\"'\r\n\t "sv;
// NUL among them: decoded words leave zero bytes behind them.
constexpr std::u16string_view kBlanks = u" \t\r\n\0"sv;

std::u16string_view trim(std::u16string_view text, std::u16string_view characters)
{
    const size_t first = text.find_first_not_of(characters);
    if (first == std::u16string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(characters) - first + 1);
}

// A piece that no grammar could read: an address if it holds "@", a name if not. The blanks
// around it come from the split and go.
void addLonePiece(MailAddressList& list, std::u16string_view piece)
{
    piece = trim(piece, kBlanks);
    if (piece.empty()) return;
    if (piece.find(u'@') != std::u16string_view::npos)
        list.push_back({u"", std::u16string(piece)});
    else
        list.push_back({std::u16string(piece), u""});
}

// Either reading leaves quotes and blanks around a name ("Ann " before "<ann@x>"): they go.
void addPair(MailAddressList& list, std::u16string_view name, std::u16string address)
{
    name = trim(name, kNameTrim);
    if (name.empty() && address.empty()) return;
    list.push_back({std::u16string(name), std::move(address)});
}

constexpr std::u16string_view kAddressTrim = u"<>\"' \t\r\n\0"sv;

// A name followed by an address that has lost its "<" but kept its ">", as a decoded word
// leaves the text behind it ("Name\0\0jo@x.org>"): read before the grammar, which would take
// the name for part of the address.
std::optional<MailAddress> readLostBracket(std::u16string_view piece)
{
    piece = trim(piece, kBlanks);
    if (piece.empty() || piece.back() != u'>' || piece.find(u'<') != std::u16string_view::npos) return std::nullopt;
    size_t start = piece.find_last_of(kBlanks);
    if (start == std::u16string_view::npos) return std::nullopt;
    std::u16string_view address = trim(piece.substr(start + 1), kAddressTrim);
    if (address.find(u'@') == std::u16string_view::npos) return std::nullopt;
    return MailAddress{std::u16string(trim(piece.substr(0, start), kAddressTrim)), std::u16string(address)};
}

// An unquoted name the grammar refuses before an address in angle brackets ("jo@x <jo@x.org>").
std::optional<MailAddress> readUnquotedName(std::u16string_view piece)
{
    piece = trim(piece, kBlanks);
    size_t open = piece.rfind(u'<');
    if (open == std::u16string_view::npos || open == 0 || piece.back() != u'>') return std::nullopt;
    std::u16string_view inside = piece.substr(open + 1, piece.size() - open - 2);
    if (inside.find(u'@') == std::u16string_view::npos) return std::nullopt;
    return MailAddress{std::u16string(trim(piece.substr(0, open), kAddressTrim)), std::u16string(inside)};
}

// Cuts at the delimiters outside quotes and groups. Every quote flips the quoted state, escaped
// or not, and a colon opens a group wherever it stands, so the colon of a source route or of a
// comment holds the rest of the text together too: the grammar then reads the piece as a list.
std::vector<std::u16string_view> splitPieces(std::u16string_view text, std::u16string_view delimiters)
{
    std::vector<std::u16string_view> pieces;
    bool inQuotes = false;
    bool inGroup = false;
    size_t start = 0;
    for (size_t i = 0; i < text.size(); ++i) {
        const char16_t c = text[i];
        if (c == u'"') {
            inQuotes = !inQuotes;
        } else if (inQuotes) {
            continue;
        } else if (c == u':') {
            inGroup = true;
        } else if (c == u';' && inGroup) {
            inGroup = false;
        } else if (!inGroup && delimiters.find(c) != std::u16string_view::npos) {
            pieces.push_back(text.substr(start, i - start));
            start = i + 1;
        }
    }
    const std::u16string_view last = text.substr(start);
    if (last.find_first_not_of(u' ') != std::u16string_view::npos) pieces.push_back(last);
    return pieces;
}

}  // namespace

MailAddressList parseAddressList(std::u16string_view text, std::u16string_view delimiters)
{
    MailAddressList list;
    for (const std::u16string_view piece : splitPieces(text, delimiters)) {
        if (std::optional<MailAddress> damaged = readLostBracket(piece)) {
            addPair(list, damaged->displayName, std::move(damaged->address));
            continue;
        }
        const std::optional<MailAddressList> mailboxes = readMailboxes(piece);
        if (!mailboxes) {
            if (std::optional<MailAddress> lenient = readUnquotedName(piece))
                addPair(list, lenient->displayName, std::move(lenient->address));
            else
                addLonePiece(list, piece);
            continue;
        }
        for (const MailAddress& mailbox : *mailboxes) addPair(list, mailbox.displayName, mailbox.address);
    }
    if (list.empty()) addLonePiece(list, text);
    return list;
}

MailAddressList parseAddressListLoose(std::u16string_view text, std::u16string_view delimiters)
{
    MailAddressList list;
    std::vector<std::u16string> pieces;
    ty::splitTokens(std::u16string(text), std::u16string(delimiters), pieces, false);
    const rx::WPattern nameAndAddress(uR"re((.*)[\<\[\"](.*?)[\>\]\"])re");
    for (const std::u16string& piece : pieces) {
        const rx::MatchResult match = nameAndAddress.matchExact(piece);
        if (match)
            addPair(list, match.view(piece, 1), match.group(piece, 2));
        else
            addLonePiece(list, piece);
    }
    return list;
}

}  // namespace mcl
