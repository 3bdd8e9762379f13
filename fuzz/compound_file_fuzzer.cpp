// Feeds arbitrary bytes to the compound file reader as a memory block and walks everything it
// offers: every storage listed and opened, every stream opened, read in pieces and by seeks.
#include <cstddef>
#include <cstdint>
#include <string>

#include "foundation/binary_reader.h"
#include "storage/storage.h"

namespace {

void readStream(cfb::Stream& stream)
{
    char buffer[4096];
    uint64_t done = 0;
    while (!cfb::failed(stream.read(buffer, sizeof buffer, done)) && done > 0) {
    }
    uint64_t position = 0;
    if (!cfb::failed(stream.seek(-3, ty::SeekEnd, position))) stream.read(buffer, 7, done);
    stream.seek(1, ty::SeekBegin, position);
    ty::BinaryReader reader(stream);
    uint32_t value = 0;
    reader.readUInt32(value);
    std::string rest;
    reader.readAll(rest);
    cfb::ElementInfo info;
    stream.stat(info);
}

void walk(cfb::Storage& storage)
{
    cfb::ElementEnumerator children;
    if (cfb::failed(storage.enumElements(children))) return;
    cfb::ElementInfo info;
    storage.stat(info);
    while (children.next(info) == cfb::S_OK_CODE) {
        if (info.type == cfb::ElementStorage) {
            cfb::Storage child;
            if (!cfb::failed(storage.openStorage(info.name, child))) walk(child);
        } else {
            cfb::Stream stream;
            if (!cfb::failed(storage.openStream(info.name, stream))) readStream(stream);
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    cfb::Storage root;
    if (!cfb::failed(cfb::openStorageMemory(std::string(reinterpret_cast<const char*>(data), size), root))) walk(root);
    return 0;
}
