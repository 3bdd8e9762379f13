#pragma once
// Node ids with a fixed meaning in every personal-folder file.
#include <cstdint>

#include "pst/desc_index.h"

namespace PST {

constexpr uint64_t NID_MESSAGE_STORE = kMessageStoreNodeId;
constexpr uint64_t NID_NAME_TO_ID_MAP = 97;
constexpr uint64_t NID_ROOT_FOLDER = 290;
// Sub-nodes of a message.
constexpr uint64_t NID_ATTACHMENT_TABLE = 0x671;
constexpr uint64_t NID_RECIPIENT_TABLE = 0x692;

}  // namespace PST
