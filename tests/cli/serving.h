#pragma once

#include "cli/socket.h"

#include <QEventLoop>
#include <QMetaObject>

#include <cerrno>
#include <functional>
#include <optional>
#include <string>
#include <thread>

#include <sys/socket.h>
#include <unistd.h>

namespace framewright {

/// Runs clients on a thread of their own while the main thread runs commands.
inline void whileServing(std::function<void()> const& clients)
{
    QEventLoop loop;
    std::thread thread([&] {
        clients();
        QMetaObject::invokeMethod(&loop, &QEventLoop::quit, Qt::QueuedConnection);
    });
    loop.exec();
    thread.join();
}

/// A client that sends whatever a test wants.
class RawClient {
public:
    explicit RawClient(std::filesystem::path const& path) : m_socket(CLISocket::connect(path)) {}

    explicit operator bool() const { return static_cast<bool>(m_socket); }

    /// False when the other end did not take all of it.
    bool send(std::string_view text)
    {
        while (!text.empty()) {
            ssize_t const sent = ::send(m_socket.get(), text.data(), text.size(), MSG_NOSIGNAL);
            if (sent < 0)
                return false;
            text.remove_prefix(static_cast<std::size_t>(sent));
        }
        return true;
    }

    /// The next line; nothing at the end of the stream.
    std::optional<std::string> line()
    {
        while (m_lines.empty()) {
            char bytes[65536];
            ssize_t const length = ::read(m_socket.get(), bytes, sizeof bytes);
            if (length <= 0)
                return std::nullopt;
            std::size_t const scanned = m_buffer.size();
            m_buffer.append(bytes, static_cast<std::size_t>(length));
            m_lines = CLISocket::takeLines(m_buffer, scanned);
        }
        std::string line = std::move(m_lines.front());
        m_lines.erase(m_lines.begin());
        return line;
    }

    void endSending() { ::shutdown(m_socket.get(), SHUT_WR); }
    void close() { m_socket.close(); }

private:
    CLISocket::Descriptor m_socket;
    std::string m_buffer;
    std::vector<std::string> m_lines;
};

} // namespace framewright
