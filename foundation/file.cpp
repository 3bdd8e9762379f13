#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "foundation/stream.h"
#include "foundation/utf.h"

namespace ty {

namespace {

constexpr uint32_t kSystemErrorKind = 2;

// Windows access modes as open(2) flags. A handle with no access maps to O_PATH: it
// exists and can be closed, but every read and write on it fails, as on Windows.
int accessFlags(uint32_t mode)
{
    switch (mode) {
    case FileRead: return O_RDONLY;
    case FileWrite: return O_WRONLY;
    case FileReadWrite: return O_RDWR;
    default: return O_PATH;
    }
}

// Windows creation dispositions as open(2) flags; -1 where Windows refuses the call.
int creationFlags(uint32_t disposition, uint32_t mode)
{
    switch (disposition) {
    case CreateAlways: return O_CREAT | O_TRUNC;
    case CreateNew: return O_CREAT | O_EXCL;
    case OpenExisting: return 0;
    case OpenAlways:
    case OpenAlwaysAppend: return O_CREAT;
    case TruncateExisting: return mode == FileWrite || mode == FileReadWrite ? O_TRUNC : -1;
    default: return -1;
    }
}

}  // namespace

File::~File()
{
    close();
}

bool File::open(const std::u16string& path, uint32_t mode, uint32_t disposition)
{
    close();
    keeper().clearError();
    int creation = creationFlags(disposition, mode);
    int access = accessFlags(mode);
    if (access == O_PATH) creation &= ~(O_CREAT | O_TRUNC | O_EXCL);  // O_PATH takes no creation flags
    int fd = creation < 0 ? (errno = EINVAL, -1)
                          : ::open(wideToUtf8(path).c_str(), access | creation | O_CLOEXEC, 0644);
    if (fd < 0) {
        keeper().setSystemError(errno, u"ty::File::open", kSystemErrorKind);
        return false;
    }
    fd_ = fd;
    mode_ = mode;
    disposition_ = disposition;
    path_ = path;
    if (disposition == OpenAlwaysAppend) return _seek(0, SeekEnd) >= 0;
    return true;
}

void File::close()
{
    if (!isOpen()) return;
    if (::close(fd_) != 0) keeper().setSystemError(errno, u"ty::File::close", kSystemErrorKind);
    fd_ = -1;
    mode_ = 0;
    disposition_ = OpenExisting;
    path_.clear();
}

int64_t File::_read(void* buffer, int64_t count)
{
    keeper().clearError();
    int64_t done = 0;
    auto* out = static_cast<char*>(buffer);
    while (done < count) {
        ssize_t n = ::read(fd_, out + done, static_cast<size_t>(count - done));
        if (n < 0 && errno == EINTR) continue;
        if (n < 0) {
            keeper().setSystemError(errno, u"ty::File::_read", kSystemErrorKind);
            return -1;
        }
        if (n == 0) break;
        done += n;
    }
    return done;
}

int64_t File::_write(const void* buffer, int64_t count)
{
    keeper().clearError();
    int64_t done = 0;
    const auto* in = static_cast<const char*>(buffer);
    while (done < count) {
        ssize_t n = ::write(fd_, in + done, static_cast<size_t>(count - done));
        if (n < 0 && errno == EINTR) continue;
        if (n < 0) {
            keeper().setSystemError(errno, u"ty::File::_write", kSystemErrorKind);
            return -1;
        }
        done += n;
    }
    return done;
}

void File::_commit()
{
    keeper().clearError();
    if (::fsync(fd_) != 0) keeper().setSystemError(errno, u"ty::File::_commit", kSystemErrorKind);
}

int64_t File::_seek(int64_t offset, int origin)
{
    keeper().clearError();
    int whence = origin == SeekCurrent ? SEEK_CUR : origin == SeekEnd ? SEEK_END : SEEK_SET;
    off_t position = ::lseek(fd_, offset, whence);
    if (position < 0) {
        keeper().setSystemError(errno, u"ty::File::_seek", kSystemErrorKind);
        return -1;
    }
    return position;
}

int64_t File::_getPosition()
{
    keeper().clearError();
    off_t position = ::lseek(fd_, 0, SEEK_CUR);
    if (position < 0) {
        keeper().setSystemError(errno, u"ty::File::_getPosition", kSystemErrorKind);
        return -1;
    }
    return position;
}

}  // namespace ty
