#include <limits>

#include "foundation/log.h"
#include "foundation/stream.h"
#include "foundation/utf.h"
#include "mime/mime.h"

int CMime::loadFile(const std::string& path, uint32_t mode)
{
    ty::TraceScope trace("CMime::loadFile");
    ty::File file;
    if (!file.open(ty::utf8ToWide(path), ty::FileRead, ty::OpenExisting)) return 0;
    // Offsets into a parsed message are 32 bits wide: a larger file counts as one of unknown size.
    int64_t size = file.getSize();
    if (size <= 0 || size > std::numeric_limits<uint32_t>::max()) return 0;
    std::string data;
    if (file.readAll(data) != size) return 0;
    return parse(data.data(), uint32_t(size), mode);
}

int CMime::saveFile(const std::string& path) const
{
    ty::TraceScope trace("CMime::saveFile");
    size_t size = serialize(nullptr, 0);
    if (size == 0) return 1;
    std::string bytes(size + 1, '\0');
    serialize(bytes.data(), bytes.size());
    ty::File file;
    if (!file.open(ty::utf8ToWide(path), ty::FileWrite, ty::CreateAlways)) return 0;
    return file._write(bytes.data(), int64_t(size)) == int64_t(size) ? 1 : 0;
}
