// Internet messages of the corpus: parsing alone, and a full load through the session (every
// property, the attachments and the body as text), beside GMime 3 parsing the same bytes and
// walking every part's content.
#include <cstdio>

#include "bench.h"
#include "core/mail_item.h"
#include "core/session.h"
#include "corpus.h"
#include "foundation/utf.h"
#include "mime/mime.h"

#ifdef PARCELET_BENCH_GMIME
#include <gmime/gmime.h>
#endif

namespace {

void report(const char* what, double megabytes, double seconds)
{
    std::printf("%-40s %9.1f MB/s  (%.2f MB in %.3f s)\n", what, megabytes / seconds, megabytes, seconds);
}

#ifdef PARCELET_BENCH_GMIME
void decodeAll(GMimeObject*, GMimeObject* part, gpointer total)
{
    if (!GMIME_IS_PART(part)) return;
    GMimeDataWrapper* content = g_mime_part_get_content(GMIME_PART(part));
    if (!content) return;
    GMimeStream* sink = g_mime_stream_null_new();
    *static_cast<size_t*>(total) += g_mime_data_wrapper_write_to_stream(content, sink);
    g_object_unref(sink);
}
#endif

void run()
{
    std::vector<std::string> messages;
    std::vector<std::u16string> paths;
    double megabytes = 0;
    for (const auto& path : bench::corpusFiles("eml")) {
        messages.push_back(bench::readBytes(path));
        paths.push_back(ty::utf8ToWide(path.string()));
        megabytes += messages.back().size() / 1e6;
    }
    const int rounds = 20;
    size_t parts = 0;
    double parse = bench::seconds(rounds, [&] {
        for (const std::string& bytes : messages) {
            CMime mime;
            mime.parse(bytes.data(), static_cast<uint32_t>(bytes.size()), 0);
            parts += mime.partCount();
        }
    });
    report("Parcelet: parse", megabytes * rounds, parse);

    mcl::Session session;
    double load = bench::seconds(rounds, [&] {
        for (const std::u16string& path : paths) {
            mcl::MailItem* item = session.readFile(path, false);
            if (!item) continue;
            item->getProperties();
            item->getAttachments();
            parts += item->getBodyText(BodyPlainText).size();
            item->release();
        }
    });
    report("Parcelet: full load from the file", megabytes * rounds, load);

#ifdef PARCELET_BENCH_GMIME
    g_mime_init();
    size_t decoded = 0;
    double gmime = bench::seconds(rounds, [&] {
        for (const std::string& bytes : messages) {
            GMimeStream* stream = g_mime_stream_mem_new_with_buffer(bytes.data(), bytes.size());
            GMimeParser* parser = g_mime_parser_new_with_stream(stream);
            GMimeMessage* message = g_mime_parser_construct_message(parser, nullptr);
            if (message) {
                g_mime_message_foreach(message, decodeAll, &decoded);
                g_object_unref(message);
            }
            g_object_unref(parser);
            g_object_unref(stream);
        }
    });
    report("GMime 3: parse and decode every part", megabytes * rounds, gmime);
    g_mime_shutdown();
#else
    std::printf("GMime 3: not built in (install libgmime-3.0-dev and configure again)\n");
#endif
    if (parts == 0) std::printf("nothing parsed\n");
}

bench::Registration registration("eml", "corpus EML files: parse, full load, and GMime 3 beside them", run);

}  // namespace
