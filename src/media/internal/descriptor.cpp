#include "media/internal/descriptor.h"

#include <cerrno>
#include <cstdio>
#include <new>

#include <sys/stat.h>
#include <unistd.h>

extern "C" {
#include <libavformat/avio.h>
#include <libavutil/error.h>
#include <libavutil/mem.h>
}

namespace framewright {

namespace {

// Fewer system calls than with the library's default of 32 KiB, and still small beside a frame.
constexpr int bufferBytes = 128 * 1024;

} // namespace

Descriptor::~Descriptor()
{
    if (m_number >= 0)
        ::close(m_number);
}

std::int64_t Descriptor::size() const
{
    struct stat facts {};
    return ::fstat(m_number, &facts) == 0 ? facts.st_size : 0;
}

std::int64_t Descriptor::readAt(std::int64_t position, std::span<std::uint8_t> bytes) const
{
    std::int64_t done = 0;
    while (done < std::int64_t(bytes.size())) {
        auto const got = ::pread(m_number, bytes.data() + done, bytes.size() - std::size_t(done),
                                 position + done);
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0)
            return -errno;
        if (got == 0)
            break;
        done += got;
    }
    return done;
}

DescriptorIO::DescriptorIO(Descriptor const& file, Access access) : m_file(file)
{
    auto* const buffer = static_cast<std::uint8_t*>(av_malloc(bufferBytes));
    if (!buffer)
        throw std::bad_alloc();
    bool const writes = access == Access::write;
    m_context = avio_alloc_context(buffer, bufferBytes, writes, this, readSome,
                                   writes ? writeAll : nullptr, seek);
    if (!m_context) {
        av_free(buffer);
        throw std::bad_alloc();
    }
}

DescriptorIO::~DescriptorIO()
{
    av_freep(&m_context->buffer);
    avio_context_free(&m_context);
}

int DescriptorIO::readSome(void* self, std::uint8_t* bytes, int size)
{
    auto& io = *static_cast<DescriptorIO*>(self);
    if (io.mayRead && !io.mayRead())
        return AVERROR_EXIT;
    std::int64_t const got = io.m_file.readAt(io.m_position, {bytes, std::size_t(size)});
    if (got == 0)
        return AVERROR_EOF;
    if (got > 0)
        io.m_position += got;
    return int(got);
}

int DescriptorIO::writeAll(void* self, std::uint8_t* bytes, int size)
{
    auto& io = *static_cast<DescriptorIO*>(self);
    for (int done = 0; done < size;) {
        auto const put =
            ::pwrite(io.m_file.number(), bytes + done, std::size_t(size - done), io.m_position);
        if (put < 0 && errno == EINTR)
            continue;
        if (put < 0)
            return AVERROR(errno);
        done += int(put);
        io.m_position += put;
        if (io.onWrite)
            io.onWrite();
    }
    return size;
}

std::int64_t DescriptorIO::seek(void* self, std::int64_t offset, int whence)
{
    auto& io = *static_cast<DescriptorIO*>(self);
    switch (whence & ~AVSEEK_FORCE) {
    case AVSEEK_SIZE:
        return io.m_file.size();
    case SEEK_CUR:
        offset += io.m_position;
        break;
    case SEEK_END:
        offset += io.m_file.size();
        break;
    case SEEK_SET:
        break;
    default:
        return AVERROR(EINVAL);
    }
    if (offset < 0)
        return AVERROR(EINVAL);
    return io.m_position = offset;
}

} // namespace framewright
