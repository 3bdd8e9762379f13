#include "mime/mailbox_grammar.h"

#include <string>

namespace mcl {
namespace {

// White space of folded fields, and NUL, which decoded words leave behind them.
bool isBlank(char16_t c)
{
    return c == u' ' || c == u'\t' || c == u'\r' || c == u'\n' || c == u'\0';
}

// atext, with every character above ASCII taken in, as RFC 6532 does.
bool isAtomChar(char16_t c)
{
    constexpr std::u16string_view kSpecials = u"()<>[]:;@\\,.\"";
    return c > u' ' && c != 0x7F && kSpecials.find(c) == std::u16string_view::npos;
}

// A recursive-descent reader with one position that only moves forward, but for the white space
// after a domain, which is read twice at most. Comments nest by a counter, not by recursion.
class MailboxScanner {
public:
    explicit MailboxScanner(std::u16string_view text) : text_(text) {}

    std::optional<MailAddressList> addressList()
    {
        MailAddressList out;
        for (;;) {
            if (!address(out)) return std::nullopt;
            if (atEnd()) return out;
            if (!at(u',')) return std::nullopt;
            ++pos_;
        }
    }

private:
    // Words read once as both a display name and a local part: what follows them tells which.
    struct Words {
        std::u16string phrase;  // words with one blank where white space or comments stood
        std::u16string local;   // words as written and dots, nothing between them
        size_t count = 0;       // words and dots
        bool adjacent = false;  // two words without a dot between them: no local part
        size_t start = 0;       // the source span of the words
        size_t end = 0;
    };

    bool atEnd() const { return pos_ >= text_.size(); }
    bool at(char16_t c) const { return !atEnd() && text_[pos_] == c; }

    // An address: a group, a mailbox, or nothing (an empty member of an obsolete list).
    bool address(MailAddressList& out)
    {
        std::u16string comments;
        Words words;
        if (!readWords(words, &comments)) return false;
        if (words.count == 0 && (atEnd() || at(u','))) return true;
        if (at(u':')) {
            ++pos_;
            return groupMembers(out) && skipCfws();
        }
        return mailbox(words, comments, out);
    }

    // The members after a group's ":" up to its ";"; a group still open at the end counts as closed.
    bool groupMembers(MailAddressList& out)
    {
        for (;;) {
            std::u16string comments;
            Words words;
            if (!readWords(words, &comments)) return false;
            const bool empty = words.count == 0 && (atEnd() || at(u',') || at(u';'));
            if (!empty && !mailbox(words, comments, out)) return false;
            if (atEnd()) return true;
            if (at(u';')) {
                ++pos_;
                return true;
            }
            if (!at(u',')) return false;
            ++pos_;
        }
    }

    // The rest of a mailbox after its words: an angle address, or "@" and a domain. Without a
    // display name the comments before and after it stand for one.
    bool mailbox(const Words& words, std::u16string& comments, MailAddressList& out)
    {
        std::u16string address;
        bool named = false;
        if (at(u'<')) {
            if (!angleAddress(address)) return false;
            named = words.count > 0;
        } else if (at(u'@') && !words.adjacent) {
            if (!addrSpecRest(words, address)) return false;
        } else {
            return false;
        }
        if (!skipCfws(&comments)) return false;
        out.push_back({named ? words.phrase : comments, std::move(address)});
        return true;
    }

    // "<" [source route] address ">"; also "<>", and an address without "@" as written.
    bool angleAddress(std::u16string& address)
    {
        ++pos_;
        // A source route "@a,@b:" is dropped; "@a" not followed by "," or ":" lacks its local part.
        for (;;) {
            if (!skipCfws()) return false;
            if (!at(u'@')) break;
            const size_t start = pos_++;
            std::u16string host;
            if (!readDomain(host)) return false;
            const size_t hostEnd = pos_;
            if (!skipCfws()) return false;
            if (at(u':')) {
                ++pos_;
                break;
            }
            if (!at(u',')) {
                address = text_.substr(start, hostEnd - start);
                return closeAngle();
            }
            while (at(u',')) {
                ++pos_;
                if (!skipCfws()) return false;
            }
        }
        Words words;
        if (!readWords(words, nullptr)) return false;
        if (at(u'@') && !words.adjacent) {
            if (!addrSpecRest(words, address)) return false;
        } else if (words.count > 0) {
            address = text_.substr(words.start, words.end - words.start);
        }
        return closeAngle();
    }

    bool closeAngle()
    {
        if (!skipCfws() || !at(u'>')) return false;
        ++pos_;
        return true;
    }

    // "@" and a domain after the words of a local part. Without either half the address is the
    // text as written.
    bool addrSpecRest(const Words& words, std::u16string& address)
    {
        const size_t start = words.count > 0 ? words.start : pos_;
        ++pos_;
        std::u16string host;
        if (!readDomain(host)) return false;
        if (words.local.empty() || host.empty())
            address = text_.substr(start, pos_ - start);
        else
            address = words.local + u'@' + host;
        return true;
    }

    // A dot-atom, atoms with white space or comments around their dots, or a domain literal;
    // the white space after it is left unread. With no domain the position stays after the "@".
    bool readDomain(std::u16string& host)
    {
        const size_t afterAt = pos_;
        if (!skipCfws()) return false;
        if (at(u'[')) return domainLiteral(host);
        size_t end = afterAt;
        for (;;) {
            if (atEnd() || !isAtomChar(text_[pos_])) {
                if (!host.empty()) return false;  // a dot with no atom after it
                pos_ = afterAt;
                return true;
            }
            const size_t start = pos_;
            while (!atEnd() && isAtomChar(text_[pos_])) ++pos_;
            host += text_.substr(start, pos_ - start);
            end = pos_;
            if (!skipCfws()) return false;
            if (!at(u'.')) break;
            ++pos_;
            host += u'.';
            if (!skipCfws()) return false;
        }
        pos_ = end;
        return true;
    }

    // "[" dtext "]" as written, white space left out.
    bool domainLiteral(std::u16string& host)
    {
        for (;;) {
            if (atEnd()) return false;
            const char16_t c = text_[pos_++];
            if (c == u'\\' && !atEnd()) {
                host += c;
                host += text_[pos_++];
                continue;
            }
            if (!isBlank(c)) host += c;
            if (c == u']') return true;
        }
    }

    // word *(word / "." / CFWS), stopping before anything else with the white space before it
    // read. Comments before the first word go to `leadingComments` when given.
    bool readWords(Words& words, std::u16string* leadingComments)
    {
        bool lastWasWord = false;
        for (;;) {
            const size_t before = pos_;
            if (!skipCfws(words.count == 0 ? leadingComments : nullptr)) return false;
            const bool spaced = pos_ > before;
            if (atEnd()) return true;
            const size_t start = pos_;
            const char16_t c = text_[pos_];
            std::u16string item;
            if (c == u'"') {
                if (!quotedString(item)) return false;
            } else if (c == u'.') {
                item = u".";
                ++pos_;
            } else if (isAtomChar(c)) {
                while (!atEnd() && isAtomChar(text_[pos_])) ++pos_;
                item = text_.substr(start, pos_ - start);
            } else {
                return true;
            }
            const bool isWord = c != u'.';
            if (spaced && words.count > 0) words.phrase += u' ';
            words.phrase += item;
            words.local += text_.substr(start, pos_ - start);
            words.adjacent = words.adjacent || (isWord && lastWasWord);
            lastWasWord = isWord;
            if (words.count++ == 0) words.start = start;
            words.end = pos_;
        }
    }

    // From the opening quote: the content with quoted pairs undone and the line breaks of folds left out.
    bool quotedString(std::u16string& value)
    {
        ++pos_;
        for (;;) {
            if (atEnd()) return false;
            char16_t c = text_[pos_++];
            if (c == u'"') return true;
            if (c == u'\\' && !atEnd())
                c = text_[pos_++];
            else if (c == u'\r' || c == u'\n')
                continue;
            value += c;
        }
    }

    // White space and comments. False for a comment still open at the end.
    bool skipCfws(std::u16string* comments = nullptr)
    {
        for (;;) {
            while (!atEnd() && isBlank(text_[pos_])) ++pos_;
            if (!at(u'(')) return true;
            if (!comment(comments)) return false;
        }
    }

    // From its "(": the text inside, nested comments as written, quoted pairs undone, folds
    // left out, appended to `comments` after a blank.
    bool comment(std::u16string* comments)
    {
        std::u16string body;
        size_t depth = 0;
        for (;;) {
            if (atEnd()) return false;
            const char16_t c = text_[pos_++];
            if (c == u'\\' && !atEnd()) {
                body += text_[pos_++];
                continue;
            }
            if (c == u'(' && depth++ == 0) continue;
            if (c == u')' && --depth == 0) break;
            if (c != u'\r' && c != u'\n') body += c;
        }
        if (comments) {
            if (!comments->empty()) *comments += u' ';
            *comments += body;
        }
        return true;
    }

    std::u16string_view text_;
    size_t pos_ = 0;
};

}  // namespace

std::optional<MailAddressList> readMailboxes(std::u16string_view text)
{
    return MailboxScanner(text).addressList();
}

}  // namespace mcl
