// Feeds arbitrary bytes to the personal-folder parser as a file and walks what it offers: both
// index trees page by page with every record looked up again, every node decoded, the folder
// tables read from the root folder down, and each message's attachment and recipient trees.
// Then the same bytes go through the session as a file, once with each standalone reader: the
// folder face walked from the root, every message loaded whole.
#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "core/base_reader.h"
#include "core/context.h"
#include "core/folder_tree.h"
#include "core/mail_item.h"
#include "core/session.h"
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

void loadCurrent(mcl::BaseReader& reader)
{
    auto* item = new mcl::MailItem(&reader, 0);
    uint32_t filter = mcl::kLoadEverything;
    if (reader.load(item->getHeaderProperties(), &filter)) {
        item->getSubject();
        item->getAttachments();
    }
    item->release();
}

// Every message of the current folder, then each subfolder by name, as a host walks the face.
void walkFolderFace(mcl::BaseReader& reader, mcl::FolderTree& tree, int depth, int& visits)
{
    if (depth > 8) return;
    const int32_t count = tree.countDir();
    for (int32_t i = 0; i < count && ++visits <= kMaxVisits; ++i) {
        loadCurrent(reader);
        if (!reader.next()) break;
    }
    std::vector<std::u16string> names;
    tree.collectDir(names);
    tree.countDirUnread();
    tree.countSubfolders();
    for (const std::u16string& name : names) {
        if (++visits > kMaxVisits) return;
        if (!tree.changeDir(name)) continue;
        walkFolderFace(reader, tree, depth + 1, visits);
        tree.moveUp();
    }
}

void readThroughSession(const std::string& path, uint32_t version)
{
    static mcl::Context context;
    context.setContextVersion(version);
    mcl::Session session;
    mcl::BaseReader* reader = session.createReaderEx(ty::utf8ToWide(path), false);
    if (!reader) return;
    int visits = 0;
    if (version == 3) {
        if (mcl::FolderTree* tree = reader->folderTree()) walkFolderFace(*reader, *tree, 0, visits);
    } else {
        // The default reader runs through every folder's messages in one sequence.
        reader->getCount();
        do loadCurrent(*reader);
        while (++visits <= kMaxVisits && reader->next());
    }
    reader->release();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static int fd = memfd_create("pst-fuzz", 0);
    if (fd < 0) return 0;
    if (ftruncate(fd, 0) != 0 || pwrite(fd, data, size, 0) != static_cast<ssize_t>(size)) return 0;
    PST::Reader reader;
    if (reader.open(ty::utf8ToWide("/proc/self/fd/" + std::to_string(fd)))) walk(reader);

    static const std::string path = "/dev/shm/parcelet-pst-fuzz-" + std::to_string(getpid()) + ".pst";
    std::FILE* file = std::fopen(path.c_str(), "wb");
    if (!file) return 0;
    std::fwrite(data, 1, size, file);
    std::fclose(file);
    readThroughSession(path, 3);
    readThroughSession(path, 2);
    return 0;
}
