// Lookups in a property table as it grows: the cost per lookup should grow with the logarithm
// of the table's size, not with the size.
#include <cstdio>
#include <random>

#include "bench.h"
#include "core/mail_property.h"

namespace {

// `rows` attachment rows with ten properties below each, plus a few at the root.
void fill(mcl::MailProperties& table, int rows)
{
    uint32_t value = 0;
    for (int r = 0; r < rows; ++r) {
        uint32_t row = table.addProperty(mcl::kAttachmentRow, 0, u"Attachment")->id();
        for (uint32_t p = 0; p < 9; ++p) table.addProperty(0x37000003 + (p << 16), row, u"", &value, 4);
    }
}

void run()
{
    std::printf("%10s %14s %14s %14s\n", "records", "find ns", "collect ns", "find-any ns");
    for (int rows : {100, 1000, 10000}) {
        mcl::MailProperties table;
        fill(table, rows);
        std::mt19937 random(42);
        std::uniform_int_distribution<int> pick(0, rows - 1);
        const int lookups = 200000;
        size_t found = 0;
        double find = bench::seconds(lookups, [&] {
            uint32_t row = static_cast<uint32_t>(pick(random)) * 10 + 1;
            found += table.findProperty(0x37050003, row) != nullptr;
        });
        double collect = bench::seconds(lookups, [&] {
            std::vector<mcl::MailProperty*> out;
            uint32_t row = static_cast<uint32_t>(pick(random)) * 10 + 1;
            found += static_cast<size_t>(table.collect(out, 0, row, false, 0, 0xFFFFFFFF));
        });
        double findAny = bench::seconds(lookups, [&] { found += table.findProperty(0x37080003) != nullptr; });
        std::printf("%10zu %14.1f %14.1f %14.1f\n", table.count(), find / lookups * 1e9, collect / lookups * 1e9,
                    findAny / lookups * 1e9);
        if (found == 0) std::printf("nothing found\n");
    }
}

bench::Registration registration("properties", "findProperty and collect under a row, by table size", run);

}  // namespace
