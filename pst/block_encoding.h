#pragma once
// The two encodings that a personal-folder file may apply to its data blocks, and the three
// substitution tables of the published format that they use.
#include <array>
#include <cstddef>
#include <cstdint>

namespace PST {

enum EncryptionMethod : uint8_t {
    NDB_CRYPT_NONE = 0,
    NDB_CRYPT_PERMUTE = 1,
    NDB_CRYPT_CYCLIC = 2,
};

extern const std::array<uint8_t, 256> mpbbR;
extern const std::array<uint8_t, 256> mpbbS;
extern const std::array<uint8_t, 256> mpbbI;

// Undoes NDB_CRYPT_PERMUTE.
void decodePermute(uint8_t* data, size_t size);
// Undoes NDB_CRYPT_CYCLIC, keyed by the id the block was asked for.
void decodeCyclic(uint8_t* data, size_t size, uint64_t id);
// Decodes in place by the file's method; false for a method other than these two.
bool decodeBlock(uint8_t* data, size_t size, uint8_t method, uint64_t id);

}  // namespace PST
