// The large store of the corpus through the session with the folder-face reader: every folder and
// message header listed in header mode, then every message loaded whole with its attachments;
// beside readpst (pst-utils) and pffexport (pff-tools) exporting the same store in one run. Peak
// memory is that of this process, and of each tool with whatever it started.
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "bench.h"
#include "core/base_reader.h"
#include "core/context.h"
#include "core/folder_tree.h"
#include "core/mail_item.h"
#include "core/session.h"
#include "foundation/utf.h"

namespace {

const char* kStore = PARCELET_CORPUS_DIR "/big/pstextractor-npm__enron.pst";

struct Tally {
    int folders = 0;
    int messages = 0;
    size_t attachments = 0;
};

double megabytes(long kilobytes) { return kilobytes / 1024.0; }

// Every message of the current folder through `visit`, then each subfolder by name.
template <class Visit>
void walkFolders(mcl::BaseReader& reader, mcl::FolderTree& tree, Tally& tally, const Visit& visit)
{
    ++tally.folders;
    const int32_t count = tree.countDir();
    for (int32_t i = 0; i < count; ++i) {
        auto* item = new mcl::MailItem(&reader, 0);
        if (visit(*item, tally)) ++tally.messages;
        item->release();
        if (!reader.next()) break;
    }
    std::vector<std::u16string> names;
    tree.collectDir(names);
    for (const std::u16string& name : names) {
        if (!tree.changeDir(name)) continue;
        walkFolders(reader, tree, tally, visit);
        tree.moveUp();
    }
}

template <class Visit>
void timeWalk(const char* what, uint32_t headerMode, const Visit& visit)
{
    mcl::Session session;
    Tally tally;
    double taken = bench::seconds(1, [&] {
        mcl::BaseReader* reader = session.createReaderEx(ty::utf8ToWide(kStore), false);
        if (!reader || !reader->folderTree()) return;
        reader->setHeaderMode(headerMode);
        walkFolders(*reader, *reader->folderTree(), tally, visit);
        reader->release();
    });
    std::printf("%-44s %8.3f s  (%d folders, %d messages, %zu attachments)\n", what, taken, tally.folders,
                tally.messages, tally.attachments);
}

// Runs `command` through the shell; prints its wall time and the peak memory of the shell and
// everything it waited for.
void runTool(const char* name, const std::string& command)
{
    const std::string probe = std::string("command -v ") + name + " >/dev/null 2>&1";
    if (std::system(probe.c_str()) != 0) {
        std::printf("%-44s not installed\n", name);
        return;
    }
    rusage usage{};
    int status = 0;
    double taken = bench::seconds(1, [&] {
        pid_t child = fork();
        if (child == 0) {
            execl("/bin/sh", "sh", "-c", command.c_str(), static_cast<char*>(nullptr));
            _exit(127);
        }
        if (child > 0) wait4(child, &status, 0, &usage);
    });
    std::printf("%-44s %8.3f s  peak %.1f MB%s\n", command.substr(0, command.find(' ')).c_str(), taken,
                megabytes(usage.ru_maxrss), WIFEXITED(status) && WEXITSTATUS(status) == 0 ? "" : "  (failed)");
}

void run()
{
    mcl::Context context;
    context.setContextVersion(3);
    timeWalk("Parcelet: folders and message headers", 1, [](mcl::MailItem& item, Tally&) {
        uint32_t filter = mcl::LoadListing;
        if (!item.getReader()->load(item.getHeaderProperties(), &filter)) return false;
        item.getSubject();
        return true;
    });
    timeWalk("Parcelet: every message whole, attachments", 0, [](mcl::MailItem& item, Tally& tally) {
        if (!item.getProperties()) return false;
        if (mcl::Attachments* list = item.getAttachments()) tally.attachments += list->count();
        return true;
    });
    rusage self{};
    getrusage(RUSAGE_SELF, &self);
    std::printf("%-44s peak %.1f MB\n", "Parcelet: this process", megabytes(self.ru_maxrss));

    const std::filesystem::path out = std::filesystem::temp_directory_path() / ("parcelet-pst-bench-" + std::to_string(getpid()));
    std::filesystem::create_directories(out / "readpst");
    runTool("readpst", "readpst -q -D -o " + (out / "readpst").string() + " " + kStore);
    runTool("pffexport", "pffexport -q -t " + (out / "pffexport").string() + " " + kStore + " >/dev/null");
    rusage children{};
    getrusage(RUSAGE_CHILDREN, &children);
    std::printf("%-44s peak %.1f MB\n", "children together (RUSAGE_CHILDREN)", megabytes(children.ru_maxrss));
    std::error_code ignored;
    std::filesystem::remove_all(out, ignored);
}

bench::Registration registration("pst", "the Enron store: header listing, full load, readpst and pffexport beside them",
                                 run);

}  // namespace
