#pragma once
// The reader of a TNEF file on its own (a winmail.dat or .tnef saved from a message).
#include <string>

#include "core/base_reader.h"

namespace mcl {

class TNEFReader : public BaseReader {
public:
    explicit TNEFReader(const std::u16string& path);

    // The file is read whole by the first load that asks for the message's properties.
    bool doInit() override;
    bool doLoad(MailProperties* props, uint32_t* filter) override;
    bool doLoadByID(MailProperties* props, uint32_t* filter, const std::u16string& id) override;
    bool doNext() override;
    bool doSaveEmbeddedMessage(Attachment* attachment, MailProperties* props, const std::u16string& path) override;
    bool doSaveMessage(MailProperties* props, const std::u16string& path) override;
    int32_t doGetItemCount() override;
};

// The session's factory for "application/ms-tnef".
BaseReader* createTNEFReader(const std::u16string& path);

}  // namespace mcl
