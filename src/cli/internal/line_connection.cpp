#include "cli/internal/line_connection.h"

#include <array>
#include <cerrno>
#include <utility>

#include <sys/socket.h>
#include <unistd.h>

namespace framewright {

namespace {

constexpr std::size_t pieceSize = 65536;
constexpr int piecesATurn = 16;

/// How much of an overlong line is read and discarded, so that its client gets to the reply.
constexpr std::size_t mostSkipped = 1024 * 1024 * 1024;

/// A larger buffer is released once it is empty.
constexpr std::size_t largestKept = 1024 * 1024;

bool wouldBlock()
{
    return errno == EAGAIN || errno == EWOULDBLOCK;
}

} // namespace

LineConnection::LineConnection(CLISocket::Descriptor socket, LineServer::ConnectionID id,
                               LineServer::Limits const& limits)
    : m_socket(std::move(socket)), m_id(id), m_limits(limits)
{
}

bool LineConnection::wantsToRead() const
{
    if (m_state == State::skipping)
        return true;
    return m_state == State::reading && m_waiting.size() < m_limits.waitingLines &&
           m_waitingBytes < m_limits.waitingBytes;
}

bool LineConnection::isFinished() const
{
    return m_state == State::ended && m_waiting.empty() && m_output.empty();
}

bool LineConnection::read(LineServer::Callbacks const& callbacks)
{
    std::array<char, pieceSize> bytes;
    for (int piece = 0; piece < piecesATurn && wantsToRead(); ++piece) {
        ssize_t const length = ::read(m_socket.get(), bytes.data(), bytes.size());
        if (length < 0)
            return wouldBlock() || errno == EINTR;
        if (length == 0) {
            // Its sending side is closed; it may still wait for answers.
            m_state = State::ended;
            return true;
        }
        if (!take({bytes.data(), static_cast<std::size_t>(length)}, callbacks))
            return false;
    }
    return true;
}

bool LineConnection::take(std::string_view bytes, LineServer::Callbacks const& callbacks)
{
    if (m_state == State::skipping) {
        skip(bytes);
        return true;
    }
    std::size_t const scanned = m_input.size();
    m_input += bytes;
    return takeLines(scanned, callbacks);
}

bool LineConnection::takeLines(std::size_t scanned, LineServer::Callbacks const& callbacks)
{
    for (std::string& line : CLISocket::takeLines(m_input, scanned)) {
        if (line.size() > m_limits.line) {
            m_state = State::ended;
            m_input = {};
            return refuseLine(callbacks);
        }
        m_waiting[m_nextLine] = line.size();
        m_waitingBytes += line.size();
        callbacks.line({m_id, m_nextLine++}, std::move(line));
    }
    if (m_input.size() > m_limits.line) {
        m_state = State::skipping;
        m_input = {};
        return refuseLine(callbacks);
    }
    if (m_input.empty() && m_input.capacity() > largestKept)
        m_input = {};
    return true;
}

bool LineConnection::refuseLine(LineServer::Callbacks const& callbacks)
{
    return send(callbacks.tooLong());
}

void LineConnection::skip(std::string_view bytes)
{
    m_skipped += bytes.size();
    if (bytes.find('\n') != std::string_view::npos || m_skipped > mostSkipped)
        m_state = State::ended;
}

bool LineConnection::write()
{
    while (!m_output.empty()) {
        std::string const& text = m_output.front();
        ssize_t const length =
            ::send(m_socket.get(), text.data() + m_sent, text.size() - m_sent, MSG_NOSIGNAL);
        if (length < 0 && errno == EINTR)
            continue;
        if (length < 0)
            return wouldBlock();
        m_sent += static_cast<std::size_t>(length);
        m_unsent -= static_cast<std::size_t>(length);
        if (m_sent == text.size()) {
            m_output.pop_front();
            m_sent = 0;
        }
    }
    // The client sees the end behind its answers while the rest of its line is still read away.
    if (m_state == State::skipping && m_waiting.empty())
        ::shutdown(m_socket.get(), SHUT_WR);
    return true;
}

void LineConnection::setAnswered(std::uint64_t line)
{
    auto const found = m_waiting.find(line);
    m_waitingBytes -= found->second;
    m_waiting.erase(found);
}

bool LineConnection::send(std::string text)
{
    m_unsent += text.size();
    if (!text.empty())
        m_output.push_back(std::move(text));
    return write() && m_unsent <= m_limits.unsent;
}

} // namespace framewright
