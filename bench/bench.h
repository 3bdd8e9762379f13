#pragma once
// The benchmark program's cases: each prints its own figures.
#include <chrono>
#include <functional>
#include <string>
#include <vector>

namespace bench {

struct Case {
    std::string name;
    std::string description;
    std::function<void()> run;
};

// Cases register themselves by defining a static Registration.
std::vector<Case>& cases();
struct Registration {
    Registration(std::string name, std::string description, std::function<void()> run)
    {
        cases().push_back({std::move(name), std::move(description), std::move(run)});
    }
};

// Seconds taken by `body` run `repeat` times.
inline double seconds(int repeat, const std::function<void()>& body)
{
    auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < repeat; ++i) body();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

}  // namespace bench
