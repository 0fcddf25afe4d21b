#include "AtomicOutputFile.h"

#include "RunGuard.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <stdexcept>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace krtool {

namespace {

std::string systemError(std::string const& what, std::string const& path, int error)
{
    return "cannot " + what + " '" + path + "': " + std::strerror(error);
}

}  // namespace

AtomicOutputFile::AtomicOutputFile(std::string path) : path_(std::move(path))
{
    std::string::size_type const slash = path_.find_last_of('/');
    std::string const dir = slash == std::string::npos ? std::string() : path_.substr(0, slash + 1);
    std::string const base = slash == std::string::npos ? path_ : path_.substr(slash + 1);
    if (base.empty())
        throw std::runtime_error("cannot write '" + path_ + "': not a file name");
    struct stat st {};
    if (::stat(path_.c_str(), &st) == 0 && S_ISDIR(st.st_mode))
        throw std::runtime_error("cannot write '" + path_ + "': it is a directory");

    // A hidden sibling, so that the rename stays within one file system.
    std::string templ = dir + "." + base + ".tmp-XXXXXX";
    std::vector<char> name(templ.begin(), templ.end());
    name.push_back('\0');
    int fd = -1;
    {
        // Registered before a signal can come in, so that an interrupted run removes it.
        RunGuard::SignalBlock block;
        fd = ::mkstemp(name.data());
        if (fd >= 0) {
            temporary_ = name.data();
            slot_ = RunGuard::registerTemporary(temporary_);
        }
    }
    if (fd < 0)
        throw std::runtime_error(systemError("create a file next to", path_, errno));
    // mkstemp makes the file private; give it the permissions a new file would get.
    mode_t const mask = ::umask(0);
    ::umask(mask);
    ::fchmod(fd, static_cast<mode_t>(0666 & ~mask));
    ::close(fd);
    stream_.open(temporary_, std::ios::binary | std::ios::trunc);
    if (!stream_) {
        int const e = errno;
        discard();
        throw std::runtime_error(systemError("write", temporary_, e));
    }
}

AtomicOutputFile::~AtomicOutputFile()
{
    if (!committed_)
        discard();
}

void AtomicOutputFile::discard()
{
    if (stream_.is_open())
        stream_.close();
    RunGuard::SignalBlock block;
    if (!temporary_.empty())
        std::remove(temporary_.c_str());
    temporary_.clear();
    RunGuard::unregisterTemporary(slot_);
    slot_ = -1;
}

void AtomicOutputFile::close()
{
    if (!stream_.is_open())
        return;
    stream_.flush();
    bool const ok = static_cast<bool>(stream_);
    stream_.close();
    if (!ok || stream_.fail()) {
        discard();
        throw std::runtime_error("cannot write '" + path_ + "': write error (disk full?)");
    }
}

void AtomicOutputFile::commit()
{
    close();
    RunGuard::SignalBlock block;
    if (std::rename(temporary_.c_str(), path_.c_str()) != 0) {
        int const e = errno;
        discard();
        throw std::runtime_error(systemError("replace", path_, e));
    }
    RunGuard::unregisterTemporary(slot_);
    slot_ = -1;
    committed_ = true;
}

}  // namespace krtool
