#include "core/file_type.h"

#include <cstdint>

#include "foundation/compound_file_signature.h"
#include "foundation/stream.h"
#include "foundation/text.h"

namespace mcl {

namespace {

constexpr uint32_t kPstMagic = 0x4E444221;   // "!BDN"
constexpr uint32_t kTnefMagic = 0x223E9F78;

std::u16string upperAscii(std::u16string text)
{
    for (char16_t& c : text)
        if (c >= u'a' && c <= u'z') c = static_cast<char16_t>(c - 32);
    return text;
}

std::u16string typeByExtension(const std::u16string& path)
{
    std::u16string dir, name, ext;
    ty::splitPath(path, dir, name, ext);
    ext = upperAscii(ext);
    if (ext == u"MSG" && ty::isCompoundFile(path)) return kTypeMsg;
    if (ext == u"EML" || ext == u"MHT" || ext == u"MHTML" || ext == u"MSG") return kTypeEml;
    if (ext == u"PST" || ext == u"OST") return kTypePst;
    if (ext == u"TNEF" || upperAscii(name) + u"." + ext == u"WINMAIL.DAT") return kTypeTnef;
    return kTypeUnknown;
}

}  // namespace

std::u16string detectFileType(const std::u16string& path, bool ignoreExtension)
{
    if (!ignoreExtension) return typeByExtension(path);
    if (ty::isCompoundFile(path)) return kTypeMsg;
    ty::File file;
    uint8_t head[4];
    if (!file.open(path, ty::FileRead, ty::OpenExisting) || file._read(head, 4) != 4) return typeByExtension(path);
    uint32_t magic = head[0] | head[1] << 8 | head[2] << 16 | static_cast<uint32_t>(head[3]) << 24;
    if (magic == kPstMagic) return kTypePst;
    if (magic == kTnefMagic) return kTypeTnef;
    return head[0] != 0 ? kTypeEml : kTypeUnknown;
}

}  // namespace mcl
