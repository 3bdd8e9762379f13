#include <cstdio>
#include <cstring>

#include "bench.h"

namespace bench {

std::vector<Case>& cases()
{
    static std::vector<Case> all;
    return all;
}

}  // namespace bench

// parcelet_bench [CASE...]: runs the named cases, or all of them.
int main(int argc, char** argv)
{
    int ran = 0;
    for (const bench::Case& c : bench::cases()) {
        bool wanted = argc < 2;
        for (int i = 1; i < argc; ++i) wanted = wanted || c.name == argv[i];
        if (!wanted) continue;
        std::printf("== %s: %s\n", c.name.c_str(), c.description.c_str());
        c.run();
        ++ran;
    }
    if (ran == 0) {
        std::fprintf(stderr, "no such case; cases:");
        for (const bench::Case& c : bench::cases()) std::fprintf(stderr, " %s", c.name.c_str());
        std::fprintf(stderr, "\n");
        return 2;
    }
    return 0;
}
