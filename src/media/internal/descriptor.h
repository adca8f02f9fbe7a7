#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <utility>

struct AVIOContext;

namespace framewright {

/// Owns an open file descriptor.
class Descriptor {
public:
    Descriptor() = default;
    explicit Descriptor(int number) : m_number(number) {}
    Descriptor(Descriptor&& other) noexcept : m_number(std::exchange(other.m_number, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept
    {
        std::swap(m_number, other.m_number);
        return *this;
    }
    ~Descriptor();

    int number() const { return m_number; }
    explicit operator bool() const { return m_number >= 0; }

    std::int64_t size() const;

    /// Reads bytes.size() bytes from `position` on, fewer only at the end of the file. Returns
    /// their number, or a negative errno.
    std::int64_t readAt(std::int64_t position, std::span<std::uint8_t> bytes) const;

private:
    int m_number = -1;
};

/// Lets the media library read or write an open descriptor. It never gets a file name, which it
/// might take for a URL or an option. Has its own position; the descriptor must outlive it.
class DescriptorIO {
public:
    enum class Access { read, write };

    DescriptorIO(Descriptor const& file, Access access);
    DescriptorIO(DescriptorIO&&) = delete;
    ~DescriptorIO();

    AVIOContext* context() const { return m_context; }

    std::function<void()> onWrite; ///< Called after each write.
    std::function<bool()> mayRead; ///< Called before each read; false makes it fail.

private:
    static int readSome(void* self, std::uint8_t* bytes, int size);
    static int writeAll(void* self, std::uint8_t* bytes, int size);
    static std::int64_t seek(void* self, std::int64_t offset, int whence);

    Descriptor const& m_file;
    std::int64_t m_position = 0;
    AVIOContext* m_context = nullptr;
};

} // namespace framewright
