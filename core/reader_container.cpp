#include "core/reader_container.h"

#include "core/base_reader.h"

namespace mcl {

ReaderContainer::ReaderContainer() : BaseObject(u"ReaderContainer") {}

ReaderContainer::~ReaderContainer()
{
    clear();
}

void ReaderContainer::add(BaseReader* reader)
{
    reader->addRef();
    readers.push_back(reader);
}

bool ReaderContainer::next()
{
    return !readers.empty() && readers.front()->next();
}

bool ReaderContainer::advance()
{
    if (readers.empty()) return false;
    if (readers.front()->next()) return true;
    readers.front()->release();
    readers.pop_front();
    return !readers.empty();
}

void ReaderContainer::clear()
{
    for (BaseReader* reader : readers) reader->release();
    readers.clear();
    clearError();
}

}  // namespace mcl
