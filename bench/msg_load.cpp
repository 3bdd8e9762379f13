// MSG files of the corpus loaded in full per second, and the same files converted by Debian's
// msgconvert (libemail-outlook-message-perl) when it is installed, one process per file as the
// tool is used. The tool's time is given as wall time and as the CPU time of its processes.
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "bench.h"
#include "core/mail_item.h"
#include "core/session.h"
#include "foundation/utf.h"

namespace {

namespace fs = std::filesystem;

std::vector<fs::path> corpusFiles()
{
    std::vector<fs::path> files;
    std::error_code error;
    for (const auto& entry : fs::directory_iterator(fs::path(PARCELET_CORPUS_DIR) / "msg", error))
        if (entry.path().extension() == ".msg") files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    return files;
}

// Everything a host can ask of a message: its item, all properties, the attachments.
bool loadFully(mcl::Session& session, const fs::path& file)
{
    mcl::MailItem* item = session.readFile(ty::utf8ToWide(file.string()), false);
    if (!item) return false;
    bool ok = item->getProperties() && item->getAttachments();
    item->release();
    return ok;
}

std::string findOnPath(const std::string& program)
{
    const char* path = std::getenv("PATH");
    std::string dirs = path ? path : "/usr/bin:/bin";
    for (size_t start = 0; start <= dirs.size();) {
        size_t end = dirs.find(':', start);
        if (end == std::string::npos) end = dirs.size();
        fs::path candidate = fs::path(dirs.substr(start, end - start)) / program;
        if (access(candidate.c_str(), X_OK) == 0) return candidate.string();
        start = end + 1;
    }
    return {};
}

// Runs the tool on one file, its output going to `out` and its messages nowhere.
bool runConverter(const std::string& tool, const fs::path& file, const fs::path& out)
{
    pid_t child = fork();
    if (child < 0) return false;
    if (child == 0) {
        int devNull = open("/dev/null", O_WRONLY);
        dup2(devNull, STDOUT_FILENO);
        dup2(devNull, STDERR_FILENO);
        execl(tool.c_str(), tool.c_str(), "--outfile", out.c_str(), file.c_str(), static_cast<char*>(nullptr));
        _exit(127);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

double childCpuSeconds()
{
    rusage usage{};
    getrusage(RUSAGE_CHILDREN, &usage);
    return usage.ru_utime.tv_sec + usage.ru_stime.tv_sec + (usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
}

void run()
{
    std::vector<fs::path> files = corpusFiles();
    if (files.empty()) {
        std::printf("no MSG files under %s/msg\n", PARCELET_CORPUS_DIR);
        return;
    }
    uintmax_t bytes = 0;
    for (const fs::path& file : files) bytes += fs::file_size(file);

    mcl::Session session;
    size_t failed = 0;
    for (const fs::path& file : files) failed += !loadFully(session, file);  // warm the caches
    const int rounds = 10;
    double seconds = bench::seconds(rounds, [&] {
        for (const fs::path& file : files) loadFully(session, file);
    });
    const double loaded = static_cast<double>(files.size()) * rounds;
    std::printf("parcelet:   %zu files, %.1f MB, %d rounds: %.0f files/s, %.1f MB/s (%zu failed to load)\n",
                files.size(), bytes / 1e6, rounds, loaded / seconds, bytes * rounds / 1e6 / seconds, failed);

    const std::string tool = findOnPath("msgconvert");
    if (tool.empty()) {
        std::printf("msgconvert: not installed (Debian package libemail-outlook-message-perl); not compared\n");
        return;
    }
    fs::path out = fs::temp_directory_path() / ("parcelet-bench-" + std::to_string(getpid()) + ".eml");
    size_t converted = 0;
    double cpuBefore = childCpuSeconds();
    double wall = bench::seconds(1, [&] {
        for (const fs::path& file : files) converted += runConverter(tool, file, out);
    });
    double cpu = childCpuSeconds() - cpuBefore;
    std::error_code ignored;
    fs::remove(out, ignored);
    std::printf("msgconvert: %zu files, one process each: %.1f files/s by wall time, %.1f files/s by CPU time "
                "(%zu failed to convert)\n",
                files.size(), files.size() / wall, files.size() / cpu, files.size() - converted);
}

bench::Registration registration("msg_load", "MSG files of the corpus loaded in full, against msgconvert", run);

}  // namespace
