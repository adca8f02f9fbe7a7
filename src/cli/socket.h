#pragma once

#include <cstddef>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace framewright {

/// The local socket between the command-line client and the running editor, and the lines on it.
///
/// Only processes of the same user can connect: the socket's folder and file are private, and both
/// sides check the peer's user id.
class CLISocket {
public:
    /// The socket couldn't be opened. `what()` is the whole text, `cause` is for code.
    class SocketError : public std::runtime_error {
    public:
        enum class Cause {
            system,         ///< A system call failed.
            alreadyRunning, ///< Another editor of this user and profile serves here.
        };
        SocketError(Cause why, std::string const& text) : std::runtime_error(text), cause(why) {}
        Cause const cause;
    };

    /// A descriptor with an owner. -1 when it holds none.
    class Descriptor {
    public:
        Descriptor() = default;
        explicit Descriptor(int descriptor) : m_descriptor(descriptor) {}
        Descriptor(Descriptor&& other) noexcept : m_descriptor(other.release()) {}
        Descriptor& operator=(Descriptor&& other) noexcept;
        ~Descriptor();

        int get() const { return m_descriptor; }
        explicit operator bool() const { return m_descriptor >= 0; }
        int release();
        void close();

    private:
        int m_descriptor = -1;
    };

    /// A socket that waits for clients, and the lock that makes its editor the only one.
    struct Listener {
        Descriptor socket; ///< Non-blocking.
        Descriptor lock;   ///< Held until closed. Released by the system when the process dies.
        std::string file;  ///< The socket's, to be removed before the lock is given up.
    };

    /// Where this user's editor is reached; the profile comes from VELMORA_PROFILE. Makes the
    /// application support folder when it is not there.
    static std::filesystem::path path();

    /// The same, from its parts: inside `folder` when that makes a path short enough for a socket
    /// address, else a path under /tmp that carries the user's id. Of the profile's name only
    /// ASCII letters, digits, '.', '_' and '-' count.
    static std::filesystem::path path(std::filesystem::path const& folder, std::string_view profile,
                                      unsigned userID);

    /// Opens the socket at `path`, in place of one that a dead editor left behind. Throws
    /// SocketError, with `alreadyRunning` when a living one has it.
    static Listener listen(std::filesystem::path const& path);

    /// A connection to the editor that listens at `path`, blocking. None when nobody listens there
    /// or it is another user's process.
    static Descriptor connect(std::filesystem::path const& path);

    /// Whether the other end of a connected socket is a process of this user.
    static bool isOwnPeer(int descriptor);

    /// Takes every complete line from the front of `buffer` and returns them without their line
    /// feeds; an incomplete one stays. The first `scanned` bytes are known to hold no line feed.
    static std::vector<std::string> takeLines(std::string& buffer, std::size_t scanned = 0);
};

} // namespace framewright
