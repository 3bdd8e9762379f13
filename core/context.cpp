#include "core/context.h"

#include <algorithm>
#include <stdexcept>

#include "foundation/log.h"
#include "foundation/time_picture.h"

namespace mcl {

Context* Context::current_ = nullptr;

ContextAtom::~ContextAtom()
{
    if (Context* context = Context::instance()) context->removeAtom(this);
}

Context::Context()
{
    if (current_) throw std::runtime_error("Trying to create another one instance of mcl::Context");
    dateFormat = ty::userLongDatePicture();
    timeFormat = ty::userTimePicture();
    ty::Logger::instance();
    ApplicationIdentity& identity = ApplicationIdentity::instance();
    identity.product = u"Parcelet";
    identity.vendor = u"Parcelet developers";
    current_ = this;
}

Context::~Context()
{
    while (!atoms.empty()) {
        ContextAtom* atom = atoms.front();
        atoms.erase(atoms.begin());
        delete atom;
    }
    ty::Logger::instance().setLogFile(u"");
    current_ = nullptr;
}

std::u16string Context::dateFormatOrDefault()
{
    return current_ ? current_->dateFormat : ty::userLongDatePicture();
}

std::u16string Context::timeFormatOrDefault()
{
    return current_ ? current_->timeFormat : ty::userTimePicture();
}

void Context::setLogFile(const std::u16string& path)
{
    ty::Logger::instance().setLogFile(path);
}

void Context::addAtom(ContextAtom* atom)
{
    atoms.push_back(atom);
}

void Context::removeAtom(ContextAtom* atom)
{
    auto it = std::find(atoms.begin(), atoms.end(), atom);
    if (it != atoms.end()) atoms.erase(it);
}

ApplicationIdentity& ApplicationIdentity::instance()
{
    static ApplicationIdentity identity;
    return identity;
}

}  // namespace mcl
