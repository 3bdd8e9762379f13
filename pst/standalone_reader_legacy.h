#pragma once
// The earlier standalone reader, the session's default for personal-folder files. It shows the
// host all messages of the file in one run: every change of folder lands on the first folder
// of the whole tree that has messages, and the step past a folder's last message goes on to
// the next folder that has some.
#include <cstdint>
#include <string>

#include "pst/standalone_reader.h"

namespace mcl {

class PSTStandaloneReaderLegacy : public PSTStandaloneReader {
public:
    explicit PSTStandaloneReaderLegacy(const std::u16string& path);

    bool doLoad(MailProperties* props, uint32_t* filter) override;
    bool doLoadByID(MailProperties* props, uint32_t* filter, const std::u16string& id) override;
    bool doNext() override;
    // Messages of the root folder and of every folder below it.
    int32_t doGetItemCount() override;

    // Depth first from `folder`: the folder itself unless `skip`, then its first child, then
    // its next sibling or an ancestor's. A folder with subfolders but no messages is passed over.
    static PST::Folder* moveNextFolder(PST::Folder* folder, bool skip);

protected:
    void resetPosition() override;
};

// The session's factory for "application/pst" with any ContextVersion other than 3.
BaseReader* createPSTStandaloneReaderLegacy(const std::u16string& path);

}  // namespace mcl
