#pragma once
// Small stores for the parser's tests: a writer with the store node every node tree must start
// with, and a reader opened on the bytes through a temporary file.
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "foundation/utf.h"
#include "pst/block.h"
#include "pst/little_endian.h"
#include "pst/node_ids.h"
#include "pst/reader.h"
#include "support/pst_writer.h"
#include "support/temp_dir.h"

namespace pst_test {

using test_support::PstProperty;
using test_support::PstWriter;
using test_support::pstBytes;
using test_support::utf16;

constexpr uint16_t PT_LONG = 3;
constexpr uint16_t PT_BOOLEAN = 11;
constexpr uint16_t PT_OBJECT = 13;
constexpr uint16_t PT_I8 = 20;
constexpr uint16_t PT_STRING8 = 30;
constexpr uint16_t PT_UNICODE = 31;
constexpr uint16_t PT_SYSTIME = 64;
constexpr uint16_t PT_BINARY = 258;

struct Layout {
    const char* name;
    bool unicode;
    uint8_t encryption;
};

inline const Layout kLayouts[] = {
    {"Ansi_Plain", false, 0},   {"Ansi_Permute", false, 1},   {"Ansi_Cyclic", false, 2},
    {"Unicode_Plain", true, 0}, {"Unicode_Permute", true, 1}, {"Unicode_Cyclic", true, 2},
};

inline std::string layoutName(const testing::TestParamInfo<Layout>& info) { return info.param.name; }

// Adds the store node, with a display name.
inline void addStoreNode(PstWriter& writer)
{
    writer.addNode(PST::NID_MESSAGE_STORE,
                   writer.addData(test_support::buildPropertyList({{0x3001, PT_UNICODE, utf16(u"Store", true)}})));
}

// Opens the bytes; the reader and its file live as long as the fixture.
class OpenedStore {
public:
    explicit OpenedStore(const std::string& bytes) : path_(dir_.write("store.pst", bytes)) { opened_ = reader_.open(path_); }

    PST::Reader& reader() { return reader_; }
    bool opened() const { return opened_; }
    std::unique_ptr<PST::Block> node(uint64_t nodeId, uint32_t kind = PST::KindUnknown)
    {
        return std::make_unique<PST::Block>(&reader_, reader_.descIndex()->find(nodeId), nullptr, kind);
    }

private:
    test_support::TempDir dir_;
    std::u16string path_;
    PST::Reader reader_;
    bool opened_ = false;
};

inline std::string errorText(const ty::ErrorKeeper& keeper)
{
    return keeper.hasError() ? ty::wideToUtf8(keeper.error()->text()) : std::string();
}

}  // namespace pst_test
