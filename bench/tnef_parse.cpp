// TNEF parsing over the corpus's TNEF files, in files per second, beside Debian's `tnef` and
// `ytnef` run on the same files. The tools run as processes through the shell, so the cost of
// starting one (`true` the same way) is given as well.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "bench.h"
#include "corpus.h"
#include "core/attachment.h"
#include "core/mail_item.h"
#include "core/session.h"
#include "foundation/utf.h"
#include "tnef/tnef_parser.h"

namespace {

namespace fs = std::filesystem;

void report(const char* what, size_t files, double seconds)
{
    std::printf("%-44s %10.1f files/s  (%zu files in %.3f s)\n", what, double(files) / seconds, files, seconds);
}

bool installed(const std::string& tool)
{
    return std::system(("command -v " + tool + " >/dev/null 2>&1").c_str()) == 0;
}

// Runs `command` on every file, one process a file or all files in one process.
void runCommand(const std::string& what, const std::string& command, const std::vector<fs::path>& files, int rounds,
                bool oneProcess)
{
    std::vector<std::string> commandLines;
    for (const fs::path& file : files) {
        if (oneProcess && !commandLines.empty())
            commandLines.back() += " '" + file.string() + "'";
        else
            commandLines.push_back(command + " '" + file.string() + "'");
    }
    double taken = bench::seconds(rounds, [&] {
        for (const std::string& line : commandLines) {
            int status = std::system((line + " >/dev/null 2>&1").c_str());
            (void)status;  // tnef reports damage (garbage-at-end) by its exit code; the time counts
        }
    });
    report(what.c_str(), files.size() * size_t(rounds), taken);
}

void run()
{
    std::vector<fs::path> files = bench::corpusFiles("tnef");
    if (files.empty()) {
        std::printf("no TNEF files under %s/tnef\n", PARCELET_CORPUS_DIR);
        return;
    }
    std::vector<std::string> contents;
    for (const fs::path& file : files) contents.push_back(bench::readBytes(file));

    const int rounds = 200;
    size_t records = 0;
    double parsing = bench::seconds(rounds, [&] {
        for (const std::string& bytes : contents) {
            mcl::MailProperties table;
            ty::Buffer input(bytes.data(), static_cast<int64_t>(bytes.size()));
            std::string name;
            mcl::TNEFParser::parse(name, input, &table, 0);
            records += table.count();
        }
    });
    report("TNEFParser::parse from memory", files.size() * rounds, parsing);

    double reading = bench::seconds(rounds, [&] {
        for (const fs::path& file : files) {
            mcl::Session session;
            mcl::MailItem* item = session.readFile(ty::utf8ToWide(file.string()), true);
            if (!item) continue;
            records += item->getProperties()->count() + item->getAttachments()->count();
            item->release();
        }
    });
    report("Session::readFile, properties, attachments", files.size() * rounds, reading);
    if (records == 0) std::printf("nothing was read\n");

    const int toolRounds = 10;
    runCommand("process start through the shell (true)", "true", files, toolRounds, false);
    if (installed("tnef"))
        runCommand("tnef -t, one process a file", "tnef -t", files, toolRounds, false);
    else
        std::printf("%-44s not installed\n", "tnef");
    if (installed("ytnef")) {
        runCommand("ytnef, one process a file", "ytnef", files, toolRounds, false);
        runCommand("ytnef, all files in one process", "ytnef", files, toolRounds, true);
    } else {
        std::printf("%-44s not installed\n", "ytnef");
    }
}

bench::Registration registration("tnef", "TNEF files per second, beside tnef and ytnef on the same files", run);

}  // namespace
