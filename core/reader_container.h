#pragma once
// The queue of readers behind a session, worked through front to back.
#include <deque>

#include "foundation/base_object.h"

namespace mcl {

class BaseReader;

class ReaderContainer : public BaseObject {
public:
    ReaderContainer();
    ~ReaderContainer() override;

    // Takes a counted reference.
    void add(BaseReader* reader);
    BaseReader* current() const { return readers.empty() ? nullptr : readers.front(); }
    // Moves the front reader on; nothing is dropped.
    bool next();
    // Moves the front reader on, dropping it when it has no more; true while a reader is left.
    bool advance();
    void clear();
    size_t size() const { return readers.size(); }

private:
    std::deque<BaseReader*> readers;
};

}  // namespace mcl
