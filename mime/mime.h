#pragma once
// A tolerant scanner of Internet messages, written for damaged mail rather than as a grammar. It
// turns a message into a flat list of parts in the order found: first the part that carries the
// message's own headers, then one for each body between boundary texts. Boundary text is looked
// for anywhere in the data, multipart entities keep their raw header block in front of their
// body, and the scan stops after 100 parts. The list can be written back out, with losses.
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "mime/mime_part.h"

namespace mime {
class BoundaryFinder;
}

class CMime {
public:
    static constexpr uint32_t kMaxPasses = 100;
    // Parse modes: a single pass, and a single pass that stops after the headers.
    static constexpr uint32_t kModeSinglePass = 1;
    static constexpr uint32_t kModeHeadersOnly = 8;

    CMime() = default;
    virtual ~CMime();
    CMime(const CMime&) = delete;
    CMime& operator=(const CMime&) = delete;

    // Clears, then splits the data into parts. Mode 1 or 8 makes a single pass, and 8 stores the
    // root's headers only: no body and no part in the list; any other mode up to 100 passes, the
    // data after the hundredth part being ignored. 0 for null data or size 0, otherwise 1 however
    // little was found.
    int parse(const char* data, uint32_t size, uint32_t mode);
    // Reads the whole file at a UTF-8 path and parses it. 0 if it can't be opened, is empty or of
    // unknown size, or isn't read whole.
    int loadFile(const std::string& path, uint32_t mode);
    // Writes serialize()'s bytes, exactly as many as its measuring pass counted. 1 on success and
    // for an empty message (no file is made then), 0 if the file can't be created or written.
    int saveFile(const std::string& path) const;
    // Writes each part as its headers (sorted by name without regard to case), a blank line and
    // its body, and "--" with the root's boundary between parts, and a NUL at the end. A decoded
    // base-64 body is encoded again, a decoded quoted-printable body is left out, and no closing
    // delimiter is written. With a null buffer it only measures, counting the NUL and a margin
    // for each base-64 body. 0 for an empty list or no root.
    size_t serialize(char* buffer, size_t capacity) const;
    // Undoes the transfer encoding of a part once. Quoted-printable decodes the whole body, a
    // stored header block included; base-64 decodes the content after `bodyOffset`, unless it
    // holds a byte that is no base-64 text, and then the body stays as it is though marked
    // decoded. 1, or 0 when memory runs out.
    int decodeBody(CMimePart& part);
    // Frees the parts and zeroes every member but initialSetting().
    void clear();

    CMimePart* root() const { return root_; }
    uint32_t partCount() const { return partCount_; }
    CMimePart* first() const { return first_; }
    CMimePart* last() const { return last_; }
    uint32_t attachmentCount() const { return attachmentCount_; }
    uint32_t inlineCount() const { return inlineCount_; }
    uint32_t initialSetting() const { return initialSetting_; }

private:
    int parsePart(const char* message, uint32_t size, uint32_t& consumed, bool headersOnly,
                  mime::BoundaryFinder& finder);
    void addPart(std::unique_ptr<CMimePart> part);

    CMimePart* root_ = nullptr;
    uint32_t partCount_ = 0;
    CMimePart* first_ = nullptr;
    CMimePart* last_ = nullptr;
    uint32_t attachmentCount_ = 0;
    uint32_t inlineCount_ = 0;
    uint32_t initialSetting_ = 3;
    // Every part found, in the list or held as the root only.
    std::vector<std::unique_ptr<CMimePart>> parts_;
};
