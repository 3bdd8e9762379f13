// Feeds arbitrary bytes to the personal-folder parser as a file and walks what it offers: both
// index trees page by page with every record looked up again, every node decoded, the folder
// tables read from the root folder down, and each message's attachment and recipient trees.
#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <string>

#include "foundation/utf.h"
#include "pst/block.h"
#include "pst/node_ids.h"
#include "pst/reader.h"
#include "pst/store.h"

namespace {

// A damaged tree may offer far more than a small input can hold; the walk stops here.
constexpr int kMaxVisits = 4000;

template <class Record, class Index>
void walkPages(PST::TableNodeLazy<Record>& page, Index& index, int& visits)
{
    if (++visits > kMaxVisits) return;
    page.build();
    for (auto* child = page.firstChild(); child; child = child->next()) walkPages(*child, index, visits);
    for (const Record& record : page.entries()) index.find(record.id);
}

void walkFolder(PST::Reader& reader, uint64_t folderId, int depth, int& visits)
{
    if (depth > 8 || ++visits > kMaxVisits) return;
    PST::DescIndex& nodes = *reader.descIndex();
    if (const auto* contents = nodes.find((folderId & ~uint64_t{31}) | 14)) {
        PST::Block table(&reader, contents, nullptr, PST::KindFolder);
        for (const auto& row : table.rowIds()) {
            if (++visits > kMaxVisits) return;
            const auto* message = nodes.find(row.rowId);
            if (!message) continue;
            PST::Block block(&reader, message, nullptr, PST::KindUnknown);
            block.getAttachmentTree();
            block.getRecipientTree();
        }
    }
    if (const auto* hierarchy = nodes.find((folderId & ~uint64_t{31}) | 13)) {
        PST::Block table(&reader, hierarchy, nullptr, PST::KindFolder);
        for (const auto& row : table.rowIds()) walkFolder(reader, row.rowId, depth + 1, visits);
    }
}

void walk(PST::Reader& reader)
{
    int visits = 0;
    walkPages(reader.index()->root(), *reader.index(), visits);
    visits = 0;
    walkPages(reader.descIndex()->root(), *reader.descIndex(), visits);
    reader.getStore();
    int nodes = 0;
    struct Pages {
        static void decode(PST::Reader& r, PST::TableNodeLazy<PST::DescIndex::DescIndexNode>& page, int& count)
        {
            for (auto* child = page.firstChild(); child && count < kMaxVisits; child = child->next())
                decode(r, *child, count);
            for (const auto& record : page.entries()) {
                if (++count > kMaxVisits) return;
                r.createNode(record.id);
            }
        }
    };
    Pages::decode(reader, reader.descIndex()->root(), nodes);
    visits = 0;
    walkFolder(reader, PST::NID_ROOT_FOLDER, 0, visits);
    reader.setHeadersOnly(1);
    reader.createNode(PST::NID_MESSAGE_STORE);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static int fd = memfd_create("pst-fuzz", 0);
    if (fd < 0) return 0;
    if (ftruncate(fd, 0) != 0 || pwrite(fd, data, size, 0) != static_cast<ssize_t>(size)) return 0;
    PST::Reader reader;
    if (reader.open(ty::utf8ToWide("/proc/self/fd/" + std::to_string(fd)))) walk(reader);
    return 0;
}
