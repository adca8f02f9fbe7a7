#include "cli/socket.h"

#include "platform/file_error.h"
#include "platform/paths.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace framewright {

namespace {

using Cause = CLISocket::SocketError::Cause;

/// A path of so many bytes or more goes under /tmp: an address holds only a few more.
constexpr std::size_t longPath = 100;
/// The path field of an address as every system has it, its last byte a zero.
constexpr std::size_t addressPathSize = 104;
constexpr int backlog = 16;

[[noreturn]] void fail(std::string const& what)
{
    int const error = errno;
    throw CLISocket::SocketError(Cause::system, what + ": " + systemErrorText(error));
}

/// What an address keeps of a path.
std::string addressable(std::filesystem::path const& path)
{
    return path.native().substr(0, addressPathSize - 1);
}

struct Address {
    sockaddr_un value{};
    socklen_t const length = offsetof(sockaddr_un, sun_path) + addressPathSize;

    explicit Address(std::filesystem::path const& path)
    {
        static_assert(sizeof value.sun_path >= addressPathSize);
        value.sun_family = AF_UNIX;
        std::ranges::copy(addressable(path), value.sun_path);
    }
    sockaddr const* get() const { return reinterpret_cast<sockaddr const*>(&value); }
};

CLISocket::Descriptor newSocket()
{
    return CLISocket::Descriptor(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
}

/// The lock that decides which of several editors serves. It is never deleted: of two editors, one
/// could then hold the deleted file and the other a new one.
CLISocket::Descriptor lockBeside(std::string const& socketPath)
{
    std::string const path = socketPath + ".lock";
    CLISocket::Descriptor lock(
        ::open(path.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, S_IRUSR | S_IWUSR));
    if (!lock)
        fail("Could not open " + path);
    if (::flock(lock.get(), LOCK_EX | LOCK_NB) != 0) {
        if (errno == EWOULDBLOCK)
            throw CLISocket::SocketError(Cause::alreadyRunning, "Framewright is already running.");
        fail("Could not lock " + path);
    }
    return lock;
}

bool countsInProfile(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '.' ||
           c == '_' || c == '-';
}

} // namespace

CLISocket::Descriptor& CLISocket::Descriptor::operator=(Descriptor&& other) noexcept
{
    std::swap(m_descriptor, other.m_descriptor);
    return *this;
}

CLISocket::Descriptor::~Descriptor()
{
    close();
}

int CLISocket::Descriptor::release()
{
    return std::exchange(m_descriptor, -1);
}

void CLISocket::Descriptor::close()
{
    if (int const descriptor = release(); descriptor >= 0)
        ::close(descriptor);
}

std::filesystem::path CLISocket::path()
{
    char const* const profile = std::getenv("VELMORA_PROFILE");
    std::filesystem::path folder;
    try {
        folder = applicationSupportFolder();
        ensurePrivateFolder(folder);
    } catch (FileError const&) {
        // Whether a socket can be there, listening and connecting find out.
    }
    return path(folder, profile ? profile : "", ::getuid());
}

std::filesystem::path CLISocket::path(std::filesystem::path const& folder, std::string_view profile,
                                      unsigned userID)
{
    std::string suffix;
    std::ranges::copy_if(profile, std::back_inserter(suffix), countsInProfile);
    if (!suffix.empty())
        suffix.insert(0, 1, '-');
    suffix += ".sock";

    std::filesystem::path const candidate = folder / ("cli" + suffix);
    if (!folder.empty() && candidate.native().size() < longPath)
        return candidate;
    return "/tmp/framewright-cli-" + std::to_string(userID) + suffix;
}

CLISocket::Listener CLISocket::listen(std::filesystem::path const& path)
{
    std::string const place = addressable(path);
    Listener listener{.socket = newSocket(), .lock = {}, .file = place};
    if (!listener.socket)
        fail("socket() failed");
    listener.lock = lockBeside(place);

    // The mode before it has a name, so that nobody else can come in between.
    int const socket = listener.socket.get();
    ::fchmod(socket, S_IRUSR | S_IWUSR);
    ::unlink(place.c_str());
    Address const address(path);
    if (::bind(socket, address.get(), address.length) != 0 ||
        ::chmod(place.c_str(), S_IRUSR | S_IWUSR) != 0)
        fail("Could not bind " + path.native());
    if (::fcntl(socket, F_SETFL, O_NONBLOCK) != 0 || ::listen(socket, backlog) != 0)
        fail("Could not listen on " + path.native());
    return listener;
}

CLISocket::Descriptor CLISocket::connect(std::filesystem::path const& path)
{
    Descriptor socket = newSocket();
    Address const address(path);
    if (!socket || ::connect(socket.get(), address.get(), address.length) != 0 ||
        !isOwnPeer(socket.get()))
        return {};
    return socket;
}

bool CLISocket::isOwnPeer(int descriptor)
{
    ucred peer{};
    socklen_t length = sizeof peer;
    return ::getsockopt(descriptor, SOL_SOCKET, SO_PEERCRED, &peer, &length) == 0 &&
           peer.uid == ::geteuid();
}

std::vector<std::string> CLISocket::takeLines(std::string& buffer, std::size_t scanned)
{
    std::vector<std::string> lines;
    std::size_t start = 0;
    std::size_t end = buffer.find('\n', scanned);
    while (end != std::string::npos) {
        lines.push_back(buffer.substr(start, end - start));
        start = end + 1;
        end = buffer.find('\n', start);
    }
    buffer.erase(0, start);
    return lines;
}

} // namespace framewright
