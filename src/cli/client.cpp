#include "cli/client.h"

#include "cli/internal/client_arguments.h"
#include "cli/internal/client_images.h"
#include "cli/internal/editor_launch.h"
#include "cli/internal/progress_bar.h"
#include "model/file_url.h"

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string_view>
#include <vector>

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace framewright {

using nlohmann::json;

namespace {

enum Status { succeeded = 0, failed = 1, unreachable = 2 };

/// A client sends a single request, so any id will do.
constexpr int requestID = 1;

/// Attempts to send a request that no editor has read.
constexpr int mostAttempts = 3;

/// Written to by the first Ctrl-C. A signal handler can reach nothing else.
int interruptPipe[2] = {-1, -1};

/// Turns the first Ctrl-C into something to poll. The second ends the process as usual.
void catchInterrupt()
{
    if (::pipe2(interruptPipe, O_CLOEXEC | O_NONBLOCK) != 0)
        return;
    struct sigaction action {};
    action.sa_handler = [](int) {
        int const error = errno;
        [[maybe_unused]] auto const written = ::write(interruptPipe[1], "", 1);
        errno = error;
    };
    action.sa_flags = SA_RESETHAND;
    ::sigaction(SIGINT, &action, nullptr);
}

/// Makes sure that descriptors 0 to 2 are open. Otherwise a socket or file could get one of these
/// numbers, and output would be written into it.
void openStandardDescriptors()
{
    int descriptor = 0;
    do {
        descriptor = ::open("/dev/null", O_RDWR);
    } while (descriptor >= 0 && descriptor <= STDERR_FILENO);
    ::close(descriptor);
}

std::string currentFolder()
{
    std::error_code error;
    return std::filesystem::current_path(error).native();
}

bool sendAll(int socket, std::string_view text)
{
    while (!text.empty()) {
        ssize_t const sent = ::send(socket, text.data(), text.size(), MSG_NOSIGNAL);
        if (sent < 0 && errno == EINTR)
            continue;
        if (sent < 0)
            return false;
        text.remove_prefix(static_cast<std::size_t>(sent));
    }
    return true;
}

/// The editor's answers, line by line.
class Answers {
public:
    explicit Answers(int socket) : m_socket(socket) {}

    /// Waits for the reply, drawing progress and cancelling on Ctrl-C. None when the connection
    /// ends first or the editor sends an invalid line.
    std::optional<Reply> reply()
    {
        while (auto const line = nextLine()) {
            auto answer = decodeAnswer(*line);
            if (!answer)
                break;
            if (auto* const reply = std::get_if<Reply>(&*answer)) {
                m_progress.clear();
                return std::move(*reply);
            }
            auto const& report = std::get<ProgressReport>(*answer);
            if (ProgressLine::isUseful())
                m_progress.draw(report.fraction, report.stage);
        }
        m_progress.clear();
        return std::nullopt;
    }

    /// Whether the connection ended before the editor read the request, as when the editor is
    /// quitting. Such a request can safely be repeated.
    bool wasUnread() const { return m_wasReset && !m_hasCancelled; }

private:
    std::optional<std::string> nextLine()
    {
        while (m_lines.empty()) {
            std::array<pollfd, 2> entries{pollfd{m_socket, POLLIN, 0},
                                          pollfd{interruptPipe[0], POLLIN, 0}};
            if (::poll(entries.data(), entries.size(), -1) < 0 && errno != EINTR)
                return std::nullopt;
            if (entries[1].revents != 0)
                cancel();
            if (entries[0].revents != 0 && !readMore())
                return std::nullopt;
        }
        std::string line = std::move(m_lines.front());
        m_lines.erase(m_lines.begin());
        return line;
    }

    bool readMore()
    {
        std::array<char, 65536> bytes;
        ssize_t const length = ::read(m_socket, bytes.data(), bytes.size());
        if (length < 0) {
            // The peer closed the socket without reading everything.
            m_wasReset = errno == ECONNRESET;
            return errno == EINTR;
        }
        std::size_t const scanned = m_buffer.size();
        m_buffer.append(bytes.data(), static_cast<std::size_t>(length));
        m_lines = CLISocket::takeLines(m_buffer, scanned);
        return length > 0;
    }

    void cancel()
    {
        char byte;
        [[maybe_unused]] auto const length = ::read(interruptPipe[0], &byte, 1);
        m_hasCancelled = true;
        sendAll(m_socket, encode(CancelRequest{requestID}));
    }

    int const m_socket;
    std::string m_buffer;
    std::vector<std::string> m_lines;
    ProgressLine m_progress;
    bool m_wasReset = false;
    bool m_hasCancelled = false;
};

/// Without a limit, a cache filled by agents would grow for ever.
constexpr std::size_t keptImages = 500;

void print(std::FILE* stream, std::string_view text)
{
    std::fwrite(text.data(), 1, text.size(), stream);
}

/// Writes the images of a reply and says where they are.
void writeImages(Reply const& reply, std::string const& command,
                 std::optional<std::string> const& out, std::string const& folder)
{
    auto const paths = imagePaths(reply.images.size(), command, out, folder,
                                  std::chrono::system_clock::now(), claim);
    for (std::size_t i = 0; i < paths.size(); ++i) {
        writeImage(paths[i], reply.images[i]);
        print(stdout, "Wrote " + paths[i].native() + "\n");
    }
    if (!out && isWorkspace(folder))
        removeOldImages(framesCache(folder), keptImages);
}

int printReply(Reply const& reply, ClientCommand const& command, std::string const& folder)
{
    if (!reply.images.empty()) {
        auto const* const request = std::get_if<ToolRequest>(&command.request);
        try {
            writeImages(reply, request ? request->tool : "image", command.imagePath, folder);
        } catch (ImageError const& error) {
            std::fflush(stdout);
            print(stderr, "Could not write " + std::string(error.what()) + "\n");
            return failed;
        }
    }
    print(reply.ok ? stdout : stderr, reply.text + "\n");
    if (std::fflush(stdout) != 0 && errno != EPIPE) {
        std::perror("The answer could not be printed");
        return failed;
    }
    return reply.ok ? succeeded : failed;
}

/// Sends the request and prints the reply.
int ask(std::string const& line, ClientCommand const& command, std::string const& folder)
{
    for (int attempt = 1; attempt <= mostAttempts; ++attempt) {
        auto const connection = connectToEditor(CLISocket::path());
        if (!connection) {
            print(stderr, "Framewright is not running and could not be launched. "
                          "Open the app and try again.\n");
            return unreachable;
        }
        if (attempt == 1)
            catchInterrupt();
        // Even if the editor did not read all of it: it may have replied why.
        sendAll(connection.get(), line);
        Answers answers(connection.get());
        if (auto const reply = answers.reply())
            return printReply(*reply, command, folder);
        if (!answers.wasUnread())
            break;
    }
    print(stderr, "Framewright stopped answering. Open the app and try again.\n");
    return unreachable;
}

int run(std::span<std::string const> words)
{
    openStandardDescriptors();
    ::signal(SIGPIPE, SIG_IGN);

    std::string const folder = currentFolder();
    auto parsed = parseArguments(words, folder);
    if (auto const* const error = std::get_if<UsageError>(&parsed)) {
        print(stderr, error->sentence + "\n");
        return failed;
    }
    auto& command = std::get<ClientCommand>(parsed);
    std::string const cwd = isValidUtf8(folder) ? folder : FileURL{folder}.text();
    std::string const line = std::visit(
        [&](auto& request) {
            request.cwd = cwd;
            if constexpr (requires { request.wantsProgress; })
                request.wantsProgress = ProgressLine::isUseful();
            return encode(requestID, request);
        },
        command.request);

    return ask(line, command, folder);
}

} // namespace

void CLIClient::run(std::span<std::string const> words)
{
    std::exit(framewright::run(words));
}

} // namespace framewright
