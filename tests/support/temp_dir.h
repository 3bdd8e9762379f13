#pragma once
// A fresh folder per test, removed afterwards, with helpers to write files into it.
#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <string>

#include "foundation/utf.h"

namespace test_support {

class TempDir {
public:
    TempDir()
    {
        static std::atomic<int> counter{0};
        path_ = std::filesystem::temp_directory_path() /
                ("parcelet-test-" + std::to_string(getpid()) + "-" + std::to_string(counter++));
        std::filesystem::create_directories(path_);
    }
    ~TempDir() { std::filesystem::remove_all(path_); }
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    std::filesystem::path path(const std::string& name) const { return path_ / name; }
    std::u16string wide(const std::string& name) const { return ty::utf8ToWide(path(name).string()); }
    std::u16string write(const std::string& name, const std::string& bytes) const
    {
        std::ofstream(path(name), std::ios::binary) << bytes;
        return wide(name);
    }
    std::string read(const std::string& name) const
    {
        std::ifstream in(path(name), std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(in), {});
    }

private:
    std::filesystem::path path_;
};

}  // namespace test_support
