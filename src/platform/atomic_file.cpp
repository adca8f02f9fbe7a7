#include "platform/atomic_file.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <optional>
#include <random>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <stdio.h>
#include <sys/stat.h>
#include <unistd.h>

// Replacing a file without losing what another program writes at the same time
//
// The problem: rename(2) puts a complete file in place, but can't do so only if the old
// one is unchanged. Between comparing and renaming, another program can write a version that the
// rename then deletes. Advisory locks don't help, since other programs don't take ours; comparing
// again just before the rename makes the window smaller, but leaves it open.
//
// The method: renameat2(2) with RENAME_EXCHANGE swaps the names of our new file and the old one in
// one step. That deletes nothing: what was in place is now under our hidden name, where it is
// compared with what we expected. If it is the same, the hidden file is removed and we are done. If
// not, somebody wrote at the last moment, and a second exchange puts their version back. Yet
// another version may have been written over ours by then; that second exchange returns it, it is
// the newest, and a third exchange puts it back in place, and so on until one returns our own
// bytes. Every version found on the way is reported (`putBack`).
//
// File systems without the exchange report EINVAL or ENOSYS; there we fall back to plain rename.
//
// Source: rename(2) of the Linux manual.

namespace framewright {

namespace {

using Path = std::filesystem::path;
using Cause = FileError::Cause;

class Descriptor {
public:
    explicit Descriptor(int number) : m_number(number) {}
    ~Descriptor()
    {
        if (m_number >= 0)
            ::close(m_number);
    }
    Descriptor(Descriptor const&) = delete;
    Descriptor& operator=(Descriptor const&) = delete;

    explicit operator bool() const { return m_number >= 0; }
    int operator*() const { return m_number; }

    /// Network file systems report a full disk only here.
    bool close() { return ::close(std::exchange(m_number, -1)) == 0 || errno == EINTR; }

private:
    int m_number;
};

/// The hidden names a file's bytes are written under: ".NAME.16 digits.framewright-new".
class TemporaryName {
public:
    explicit TemporaryName(Path const& file)
    {
        constexpr std::size_t longestName = 255;
        std::string const name = file.filename().string();
        m_start += name.substr(0, longestName - 2 - digitCount - m_end.size());
        m_start += '.';
    }

    std::string make() const
    {
        std::random_device random;
        char digits[digitCount + 1];
        std::snprintf(digits, sizeof digits, "%08x%08x", random(), random());
        return m_start + digits + std::string(m_end);
    }

    bool fits(std::string_view name) const
    {
        return name.size() == m_start.size() + digitCount + m_end.size() &&
               name.starts_with(m_start) && name.ends_with(m_end);
    }

private:
    static constexpr std::size_t digitCount = 16;
    static constexpr std::string_view m_end = ".framewright-new";

    std::string m_start = ".";
};

Path folderOf(Path const& file)
{
    return file.has_parent_path() ? file.parent_path() : Path(".");
}

/// A new hidden file beside `file`, removed again unless it takes that file's name.
class Temporary {
public:
    Temporary(Path const& file, TemporaryName const& name, mode_t mode)
        : m_target(file),
          m_path(folderOf(file) / name.make()),
          m_descriptor(
              ::open(m_path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, mode))
    {
        if (!m_descriptor)
            fail(errno);
    }
    ~Temporary()
    {
        if (!m_isRenamed)
            ::unlink(m_path.c_str());
    }
    Temporary(Temporary const&) = delete;
    Temporary& operator=(Temporary const&) = delete;

    /// Gives it owner, group and permissions of the file it replaces, as far as we may: a file
    /// of someone else's that we can write becomes ours.
    void resemble(struct stat const& old)
    {
        if (::fchown(*m_descriptor, old.st_uid, old.st_gid) != 0 && errno != EPERM)
            fail(errno);
        if (::fchmod(*m_descriptor, old.st_mode & 0777) != 0)
            fail(errno);
    }

    void write(std::string_view bytes)
    {
        while (!bytes.empty()) {
            ssize_t const written = ::write(*m_descriptor, bytes.data(), bytes.size());
            if (written >= 0)
                bytes.remove_prefix(static_cast<std::size_t>(written));
            else if (errno != EINTR)
                fail(errno);
        }
        while (::fsync(*m_descriptor) != 0) {
            if (errno != EINTR)
                fail(errno);
        }
        if (!m_descriptor.close())
            fail(errno);
    }

    void takeName()
    {
        if (::rename(m_path.c_str(), m_target.c_str()) != 0)
            fail(errno);
        m_isRenamed = true;
    }

    /// Exchanges names with the target. False when the file system can't.
    bool exchangeNames()
    {
        if (::renameat2(AT_FDCWD, m_path.c_str(), AT_FDCWD, m_target.c_str(), RENAME_EXCHANGE) == 0)
            return true;
        if (errno == EINVAL || errno == ENOSYS)
            return false;
        fail(errno);
    }

    /// What is under the hidden name: after an exchange, what was replaced.
    std::string content() const { return readFile(m_path); }

private:
    [[noreturn]] void fail(int errorNumber) const
    {
        throw FileError::fromWriting(m_target, "written", errorNumber);
    }

    Path m_target;
    Path m_path;
    Descriptor m_descriptor;
    bool m_isRenamed = false;
};

/// The file that writing `file` replaces: links resolved, even if it does not exist yet.
Path behindLinks(Path const& file)
{
    constexpr int mostLinks = 40;
    Path target = file;
    for (int links = 0; links < mostLinks; ++links) {
        std::error_code error;
        Path const next = std::filesystem::read_symlink(target, error);
        if (error)
            return target;
        target = next.is_absolute() ? next : target.parent_path() / next;
    }
    throw FileError::fromWriting(file, "written", ELOOP);
}

/// The state of a file that may be replaced; nothing when there is none yet.
std::optional<struct stat> writableState(Path const& file)
{
    struct stat status {};
    if (::stat(file.c_str(), &status) != 0) {
        if (errno == ENOENT)
            return std::nullopt;
        throw FileError::fromWriting(file, "written", errno);
    }
    if (!S_ISREG(status.st_mode))
        throw FileError(Cause::notRegular, file, "written",
                        S_ISDIR(status.st_mode) ? "it is a folder" : "it is not a regular file");
    // A rename would replace a write-protected file too, against its owner's wish.
    if (::faccessat(AT_FDCWD, file.c_str(), W_OK, AT_EACCESS) != 0)
        throw FileError::fromWriting(file, "written", errno);
    return status;
}

void removeLeftovers(Path const& file, TemporaryName const& name)
{
    // No write takes an hour, so its writer is gone.
    auto const abandoned = std::filesystem::file_time_type::clock::now() - std::chrono::hours(1);
    std::error_code error;
    for (std::filesystem::directory_iterator entry(folderOf(file), error), end;
         !error && entry != end; entry.increment(error)) {
        std::error_code unreadable;
        if (name.fits(entry->path().filename().string()) &&
            entry->last_write_time(unreadable) < abandoned && !unreadable)
            ::unlink(entry->path().c_str());
    }
}

/// Flushes a rename in a folder to disk.
void syncFolder(Path const& folder, Path const& file)
{
    Descriptor const descriptor(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!descriptor)
        return; // A folder we may write but not read can't be flushed.
    while (::fsync(*descriptor) != 0) {
        if (errno == EINVAL || errno == ENOTSUP)
            return; // A file system whose folders need no syncing.
        if (errno != EINTR)
            throw FileError::fromWriting(file, "written", errno);
    }
}

/// Puts back `found`, which another program wrote at the last moment, in place of our `placed`.
///
/// A version written over `placed` in the meantime is newer and stays. Returns every version found,
/// oldest first.
std::vector<std::string> putBack(Temporary& temporary, std::string found, std::string placed)
{
    std::vector<std::string> all{found};
    for (;;) {
        temporary.exchangeNames();
        std::string taken = temporary.content();
        if (taken == placed)
            return all;
        all.push_back(taken);
        placed = std::exchange(found, std::move(taken));
    }
}

std::string readAll(Descriptor const& descriptor, Path const& file, std::uintmax_t size,
                    std::uintmax_t limit)
{
    std::string bytes;
    std::size_t used = 0;
    // One byte more than the file has, so that reaching its end needs no resize.
    bytes.resize(std::max<std::uintmax_t>(size + 1, 4096));
    for (;;) {
        if (used > limit)
            throw FileError(Cause::tooLarge, file, "read",
                            "it has more than " + std::to_string(limit) + " bytes");
        if (used == bytes.size())
            bytes.resize(2 * bytes.size());
        ssize_t const count = ::read(*descriptor, bytes.data() + used, bytes.size() - used);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            throw FileError(Cause::unreadable, file, "read", systemErrorText(errno));
        if (count == 0)
            break;
        used += static_cast<std::size_t>(count);
    }
    bytes.resize(used);
    return bytes;
}

} // namespace

void writeFileAtomically(Path const& file, std::string_view bytes)
{
    Path const target = behindLinks(file);
    auto const old = writableState(target);
    TemporaryName const name(target);
    if (old)
        removeLeftovers(target, name);

    // What replaces a private file is private from its first byte on.
    Temporary temporary(target, name, old ? 0600 : 0666);
    if (old)
        temporary.resemble(*old);
    temporary.write(bytes);
    temporary.takeName();
    syncFolder(folderOf(target), target);
}

FileReplacement replaceFileAtomically(Path const& file, std::string_view bytes,
                                      std::string_view expected)
{
    Path const target = behindLinks(file);
    if (readFile(target) != expected)
        return {};
    auto const old = writableState(target);
    if (!old)
        return {};
    TemporaryName const name(target);
    removeLeftovers(target, name);
    Temporary temporary(target, name, 0600);
    temporary.resemble(*old);
    temporary.write(bytes);

    if (!temporary.exchangeNames())
        temporary.takeName();
    else if (std::string found = temporary.content(); found != expected)
        return {false, putBack(temporary, std::move(found), std::string(bytes))};
    syncFolder(folderOf(target), target);
    return {true, {}};
}

std::string readFile(Path const& file, std::uintmax_t limit)
{
    // Checked before opening: that alone can block on a pipe or have an effect on a device.
    struct stat status {};
    if (::stat(file.c_str(), &status) != 0) {
        bool const isMissing = errno == ENOENT || errno == ENOTDIR;
        throw FileError(isMissing ? Cause::missing : Cause::unreadable, file, "read",
                        systemErrorText(errno));
    }
    auto const requireRegular = [&] {
        if (!S_ISREG(status.st_mode))
            throw FileError(Cause::notRegular, file, "read",
                            S_ISDIR(status.st_mode) ? "it is a folder"
                                                    : "it is not a regular file");
    };
    requireRegular();
    Descriptor const descriptor(::open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (!descriptor || ::fstat(*descriptor, &status) != 0)
        throw FileError(errno == ENOENT ? Cause::missing : Cause::unreadable, file, "read",
                        systemErrorText(errno));
    requireRegular();

    // Memory is reserved up to the limit only; the file may be longer than its size says.
    auto const size = static_cast<std::uintmax_t>(status.st_size);
    return readAll(descriptor, file, std::min(size, limit), limit);
}

} // namespace framewright
