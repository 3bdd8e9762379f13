#pragma once
// Reads a TNEF stream (the content of a winmail.dat) into a property table: the message's
// subject, class, body and property list, and one attachment row per attachment rendering with
// its title, data and property list. Every other attribute is read over.
//
// Lengths in the stream are trusted, with one limit: a length that runs past the end of its
// stream ends the walk, so nothing is read outside the stream and nothing larger than the
// stream is allocated.
#include <cstdint>
#include <string>

#include "core/mail_property.h"
#include "foundation/stream.h"
#include "tnef/tnef_object.h"

namespace mcl {

constexpr uint32_t kTNEFSignature = 0x223E9F78;

class TNEFParser {
public:
    // Fills `props` below parentId. False for a wrong signature (nothing written) or a property
    // list that can't be read (what was written stays); an attribute of an unknown level or one
    // that doesn't fit the stream ends the walk with true. `messageName` carries the name of an
    // embedded attachment between attributes. Narrow strings are stored as they stand, for the
    // reader's late conversion. A compressed RTF body that can't be decoded throws
    // std::out_of_range, as the RTF import does.
    static bool parse(std::string& messageName, ty::IOS& stream, MailProperties* props, uint32_t parentId);

    // Reads one attribute at the stream's position; false for a level other than 1 or 2, or an
    // attribute cut short by the end of the stream.
    static bool parseObject(TNEFObject& object, ty::IOS& stream);

    // Writes the MAPI property list in object.data as "TNEF Property" records below parentId;
    // false for a value type it doesn't know or a list cut short by the end of the data.
    static bool parseMAPIAttrs(std::string& messageName, TNEFObject& object, MailProperties* props,
                               uint32_t parentId);

    // Writes the attribute's bytes, unnamed and still narrow, under `tag`.
    static void addTNEFString(const std::string& messageName, uint32_t tag, TNEFObject& object,
                              MailProperties* props, uint32_t parentId);
};

}  // namespace mcl
