#include "mime/mime.h"

#include <algorithm>

#include "foundation/log.h"
#include "mime/ascii.h"
#include "mime/boundary_finder.h"
#include "mime/header_block.h"

CMime::~CMime() = default;

void CMime::clear()
{
    parts_.clear();
    root_ = first_ = last_ = nullptr;
    partCount_ = attachmentCount_ = inlineCount_ = 0;
}

int CMime::parse(const char* data, uint32_t size, uint32_t mode)
{
    ty::TraceScope trace("CMime::parse");
    clear();
    if (!data || size == 0) return 0;
    uint32_t consumed = 0;
    uint32_t passes = mode == kModeSinglePass || mode == kModeHeadersOnly ? 1 : kMaxPasses;
    mime::BoundaryFinder finder(data, size);
    for (; passes > 0 && consumed < size; --passes)
        if (parsePart(data, size, consumed, mode == kModeHeadersOnly, finder) != 1) break;
    trace.debug("parts = ", partCount_);
    return 1;
}

// One part from `consumed` on. 1 if a boundary ended its body, so that another part may follow;
// 0 if the data ended first or the part was lost.
int CMime::parsePart(const char* message, uint32_t size, uint32_t& consumed, bool headersOnly,
                     mime::BoundaryFinder& finder)
{
    const uint32_t base = consumed;
    const char* data = message + base;
    const size_t length = size - base;

    auto part = std::make_unique<CMimePart>();
    size_t i = 0;
    if (!mime::readHeaderBlock(data, length, *part, i)) return 0;
    if (i < length && data[i] == '\r') ++i;
    if (i < length && data[i] == '\n') ++i;

    const bool isRoot = root_ == nullptr;
    // The root and nested multiparts keep their header block in front of their body.
    if (!isRoot && !(part->flags & CMimePart::kAttachment) &&
        mime::startsWithIgnoreCase(part->contentType, "multipart/")) {
        part->bodyOffset = uint32_t(i);
        i = 0;
    }
    if (isRoot) {
        if (!mime::startsWithIgnoreCase(part->contentType, "message/")) {
            part->bodyOffset = uint32_t(i);
            i = 0;
        }
        if (part->contentType.empty()) part->contentType = "text/plain";
    }
    if (headersOnly) {
        if (isRoot) {
            root_ = part.get();
            parts_.push_back(std::move(part));
        }
        return 1;
    }

    // The part's own boundary first, then those of the parts before it, latest first. Since the
    // search starts at the header block of a multipart, its own "boundary=" is the first match:
    // the rest of that block then makes a part of its own, whose body is the preamble.
    part->prev = last_;
    const size_t start = i;
    size_t lastByte = length - 1;
    bool found = false;
    for (const CMimePart* candidate = part.get(); candidate && !found; candidate = candidate->prev) {
        std::string_view boundary = candidate->boundary;
        if (boundary.empty()) continue;
        size_t at = finder.find(boundary, base + start);
        if (at == mime::BoundaryFinder::npos) continue;
        at -= base;
        lastByte = at;
        while (lastByte > start && !mime::isLineBreak(data[lastByte])) --lastByte;
        consumed += uint32_t(at + boundary.size() + 1);
        found = true;
    }

    if (lastByte >= start) {
        part->body.assign(data + start, lastByte - start + 1);
        CMimePart& added = *part;
        addPart(std::move(part));
        // Back to the start of a line within what the body now holds.
        added.bodyOffset = std::min(added.bodyOffset, added.bodySize());
        while (added.bodyOffset > 0 && !mime::isLineBreak(added.body[added.bodyOffset - 1])) --added.bodyOffset;
        if (isRoot) root_ = &added;
    } else if (isRoot) {
        root_ = part.get();
        parts_.push_back(std::move(part));
    }
    return found ? 1 : 0;
}

void CMime::addPart(std::unique_ptr<CMimePart> part)
{
    if (part->flags & CMimePart::kAttachment) {
        ++attachmentCount_;
    } else if (!part->name.empty() ||
               (!part->contentType.empty() && !mime::startsWithIgnoreCase(part->contentType, "multipart/") &&
                !mime::startsWithIgnoreCase(part->contentType, "text/"))) {
        part->flags |= CMimePart::kInlineBinary;
        ++inlineCount_;
    }
    decodeBody(*part);
    // `prev` is the list's last already: the boundary search has followed it.
    if (last_)
        last_->next = part.get();
    else
        first_ = part.get();
    last_ = part.get();
    ++partCount_;
    parts_.push_back(std::move(part));
}
