#include "media/internal/mp4_file.h"

#include "media/internal/media_failure.h"

#include <cerrno>
#include <random>

#include <fcntl.h>
#include <unistd.h>

namespace framewright {

namespace {

constexpr char const* written = "written";

/// A random name. It is not derived from the target's, which may already have the maximal length.
std::filesystem::path temporaryBeside(std::filesystem::path const& target)
{
    std::random_device random;
    std::string name = ".framewright-";
    for (int i = 0; i < 12; ++i)
        name += "abcdefghijklmnopqrstuvwxyz012345"[random() % 32];
    return target.parent_path() / (name + ".part");
}

/// Makes a rename in `folder` durable. Best effort: not all file systems support it.
void flushFolder(std::filesystem::path const& folder)
{
    Descriptor const open(
        ::open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (open)
        ::fsync(open.number());
}

} // namespace

Mp4File::Mp4File(std::filesystem::path const& target, Kind kind) : m_target(target)
{
    quietLibrary();
    forgetLibraryMessages();
    auto const hidden = temporaryBeside(target);
    m_file = Descriptor(::open(hidden.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
    if (!m_file)
        throw systemFailure(target, written, errno);
    m_temporary = hidden;
    try {
        m_io.emplace(m_file, DescriptorIO::Access::write);
        AVFormatContext* format = nullptr;
        char const* const muxer = kind == Kind::audio ? "ipod" : "mp4"; // "ipod" marks it as M4A.
        check(avformat_alloc_output_context2(&format, nullptr, muxer, nullptr));
        m_format.reset(format);
    } catch (...) {
        ::unlink(hidden.c_str());
        throw;
    }
    m_format->pb = m_io->context();
    m_format->flags |= AVFMT_FLAG_CUSTOM_IO;
    m_format->opaque = this;
    m_format->io_open = openForReading;
    m_format->io_close2 = closeReading;
}

Mp4File::~Mp4File()
{
    if (!m_temporary.empty())
        ::unlink(m_temporary.c_str());
}

/// To move the index to the front, the muxer reads back what it wrote; this opens the same file.
int Mp4File::openForReading(AVFormatContext* format, AVIOContext** io, char const*, int flags,
                            AVDictionary**)
{
    auto& self = *static_cast<Mp4File*>(format->opaque);
    if (flags != AVIO_FLAG_READ || self.m_reading)
        return AVERROR(EPERM);
    try {
        self.m_reading.emplace(self.m_file, DescriptorIO::Access::read);
    } catch (std::bad_alloc const&) {
        return AVERROR(ENOMEM);
    }
    *io = self.m_reading->context();
    return 0;
}

int Mp4File::closeReading(AVFormatContext* format, AVIOContext*)
{
    static_cast<Mp4File*>(format->opaque)->m_reading.reset();
    return 0;
}

AVStream* Mp4File::addStream(AVCodecContext const& encoder)
{
    AVStream* const stream = avformat_new_stream(m_format.get(), nullptr);
    if (!stream)
        throw std::bad_alloc();
    check(avcodec_parameters_from_context(stream->codecpar, &encoder));
    stream->codecpar->codec_tag = encoder.codec_tag;
    stream->time_base = encoder.time_base;
    if (encoder.codec_type == AVMEDIA_TYPE_VIDEO)
        stream->avg_frame_rate = encoder.framerate;
    return stream;
}

void Mp4File::begin()
{
    AVDictionary* options = nullptr;
    av_dict_set(&options, "movflags", "+faststart+write_colr+negative_cts_offsets", 0);
    av_dict_set(&options, "use_editlist", "0", 0);
    av_dict_set(&options, "avoid_negative_ts", "disabled", 0);
    // The unit of durations: a multiple of the sample rate and of all usual frame rates.
    av_dict_set(&options, "movie_timescale", "48000", 0);
    int const result = avformat_write_header(m_format.get(), &options);
    av_dict_free(&options);
    check(result);
}

void Mp4File::write(AVPacket& packet, AVStream const& stream, AVCodecContext const& encoder)
{
    av_packet_rescale_ts(&packet, encoder.time_base, stream.time_base);
    packet.stream_index = stream.index;
    check(av_interleaved_write_frame(m_format.get(), &packet));
}

void Mp4File::setActivity(std::function<void()> activity)
{
    m_activity = activity;
    m_io->onWrite = std::move(activity);
}

void Mp4File::finish(std::function<void(std::filesystem::path const& written)> const& check)
{
    this->check(av_write_trailer(m_format.get()));
    avio_flush(m_io->context());
    this->check(m_io->context()->error);
    flush();
    if (check)
        check(m_temporary);
    if (::rename(m_temporary.c_str(), m_target.c_str()) != 0)
        throw systemFailure(m_target, written, errno);
    m_temporary.clear();
    flushFolder(m_target.parent_path());
}

/// In blocks, so that progress is reported on a slow disk too.
void Mp4File::flush()
{
    constexpr std::int64_t chunk = 16 << 20;
    for (std::int64_t from = 0; from < m_file.size(); from += chunk) {
        // Only spreads the work; errors are reported by fsync.
        ::sync_file_range(m_file.number(), from, chunk,
                          SYNC_FILE_RANGE_WAIT_BEFORE | SYNC_FILE_RANGE_WRITE |
                              SYNC_FILE_RANGE_WAIT_AFTER);
        if (m_activity)
            m_activity();
    }
    if (::fsync(m_file.number()) != 0)
        throw systemFailure(m_target, written, errno);
}

void Mp4File::check(int result)
{
    if (result < 0)
        throw libraryFailure(m_target, written, result);
}

} // namespace framewright
