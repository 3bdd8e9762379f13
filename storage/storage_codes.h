#pragma once
// Result codes of the compound file reader. They are the HRESULT values the Windows structured
// storage service returns in the same situations, so a caller can record them as they stand.
#include <cstdint>
#include <string>

namespace cfb {

constexpr uint32_t S_OK_CODE = 0;
constexpr uint32_t S_FALSE_CODE = 1;                        // "no more elements", "not a compound file"
constexpr uint32_t STG_E_INVALIDFUNCTION = 0x80030001;      // a seek before the start of a stream
constexpr uint32_t STG_E_FILENOTFOUND = 0x80030002;         // no such file, or no child of that name
constexpr uint32_t STG_E_PATHNOTFOUND = 0x80030003;
constexpr uint32_t STG_E_TOOMANYOPENFILES = 0x80030004;
constexpr uint32_t STG_E_ACCESSDENIED = 0x80030005;         // also a folder given as a file
constexpr uint32_t STG_E_INVALIDHANDLE = 0x80030006;        // an operation on a storage or stream not open
constexpr uint32_t STG_E_INSUFFICIENTMEMORY = 0x80030008;
constexpr uint32_t STG_E_READFAULT = 0x8003001E;            // the file system refused a read
constexpr uint32_t STG_E_FILEALREADYEXISTS = 0x80030050;    // a file with no compound file signature
constexpr uint32_t STG_E_INVALIDPARAMETER = 0x80030057;
constexpr uint32_t STG_E_INVALIDHEADER = 0x800300FB;        // the signature, but a header this reader refuses
constexpr uint32_t STG_E_DOCFILECORRUPT = 0x80030109;       // damage below the header

inline bool failed(uint32_t code) { return (code & 0x80000000u) != 0; }

// Carries a failure from inside the reader to its public operations, which turn it into
// a code and an error record. Never leaves the storage folder.
struct Failure {
    uint32_t code;
    std::u16string text;
};

}  // namespace cfb
