#pragma once
// A reader for the tests: it fills a table from a tiny text format, so that the session,
// the frame and the item can be driven end to end without a real mail format.
//
//   messages are separated by a line "===";
//   "SECTION PARENT TAG VALUE" adds a property: SECTION is the load filter bit that brings it,
//   PARENT is 0 or the label of a row, TAG is hex; the value is read by the tag's type
//   (1F UTF-8 text, 1E bytes, 03/02/0B decimal, 40 "YYYY-MM-DD hh:mm:ss", others hex);
//   "SECTION PARENT row LABEL TAG" adds an empty row named LABEL;
//   a line "fail-init", "error-init" or "throw-load" makes the reader misbehave on purpose.
#include <string>
#include <vector>

#include "core/base_reader.h"

namespace testing_reader {

class TestReader : public mcl::BaseReader {
public:
    TestReader(std::u16string className, const std::u16string& path);

    uint32_t setHeaderMode(uint32_t value) override;
    uint32_t isHeaderMode() const override { return headerMode; }
    bool doInit() override;
    bool doLoad(mcl::MailProperties* props, uint32_t* filter) override;
    bool doLoadByID(mcl::MailProperties* props, uint32_t* filter, const std::u16string& id) override;
    bool doNext() override;
    bool doSaveEmbeddedMessage(mcl::Attachment*, mcl::MailProperties*, const std::u16string&) override;
    bool doSaveMessage(mcl::MailProperties* props, const std::u16string& path) override;
    int32_t doGetItemCount() override { return static_cast<int32_t>(messages.size()); }

    // Every filter the reader was asked to load, in order.
    std::vector<uint32_t> filtersSeen;
    size_t currentMessage = 0;
    std::u16string lastSavedPath;

private:
    bool loadMessage(size_t index, mcl::MailProperties* props, uint32_t filter);

    std::vector<std::vector<std::string>> messages;
    uint32_t headerMode = 0;
    bool failInit = false;
    bool errorInit = false;
    bool throwLoad = false;
};

// Fills every slot of the session's reader table with a TestReader whose class name tells
// which slot made it ("EML", "MSG", "TNEF", "PSTMAPI", "PST3", "PSTLegacy").
void installTestReaders();
// Puts back the readers the library had.
void removeTestReaders();

}  // namespace testing_reader
