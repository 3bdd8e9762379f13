#pragma once
// Walks a whole compound file: every storage listed, every stream opened and read to its end.
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "storage/storage.h"

namespace storage_test {

struct WalkResult {
    uint32_t code = cfb::S_OK_CODE;               // the first failure, if any
    std::map<std::u16string, std::string> streams;  // by path, "a/b"
    std::map<std::u16string, std::vector<std::u16string>> listings;  // each storage's children in order
};

inline uint32_t walkStorage(cfb::Storage& storage, const std::u16string& path, WalkResult& result, int depth = 0)
{
    cfb::ElementEnumerator children;
    uint32_t code = storage.enumElements(children);
    if (cfb::failed(code)) return code;
    std::vector<std::u16string>& listing = result.listings[path];
    cfb::ElementInfo info;
    while (children.next(info) == cfb::S_OK_CODE) {
        listing.push_back(info.name);
        std::u16string childPath = path.empty() ? info.name : path + u"/" + info.name;
        if (info.type == cfb::ElementStorage) {
            if (depth > 1000) return cfb::STG_E_DOCFILECORRUPT;  // the reader bounds nesting; a guard for the test
            cfb::Storage child;
            code = storage.openStorage(info.name, child);
            if (cfb::failed(code)) return code;
            code = walkStorage(child, childPath, result, depth + 1);
            if (cfb::failed(code)) return code;
        } else {
            cfb::Stream stream;
            code = storage.openStream(info.name, stream);
            if (cfb::failed(code)) return code;
            std::string bytes(static_cast<size_t>(stream.size()), '\0');
            uint64_t done = 0;
            code = stream.read(bytes.data(), bytes.size(), done);
            if (cfb::failed(code)) return code;
            if (done != bytes.size() || info.size != bytes.size()) return cfb::STG_E_READFAULT;
            result.streams[childPath] = std::move(bytes);
        }
    }
    return cfb::S_OK_CODE;
}

inline WalkResult walkAll(cfb::Storage& root)
{
    WalkResult result;
    result.code = walkStorage(root, u"", result);
    return result;
}

}  // namespace storage_test
