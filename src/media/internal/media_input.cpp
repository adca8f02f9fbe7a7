#include "media/internal/media_input.h"

#include "media/internal/media_failure.h"
#include "media/internal/media_file.h"

#include <fmt/format.h>

#include <algorithm>
#include <vector>

namespace framewright {

namespace {

// At a score of 1, a stray byte pattern in any file passes for the start of an audio frame.
constexpr int minProbeScore = 2;

constexpr int maxStreams = 100;
constexpr std::int64_t maxProbeBytes = 8 << 20;
constexpr std::int64_t maxAnalyzedMicroseconds = 5'000'000;

/// More than any camera records.
constexpr std::int64_t maxMoviePixels = std::int64_t{16384} * 8192;

int refuseToOpen(AVFormatContext*, AVIOContext**, char const*, int, AVDictionary**)
{
    return AVERROR(EPERM);
}

bool isChoosable(AVStream const& stream, AVMediaType type)
{
    constexpr int isNoMovie = AV_DISPOSITION_ATTACHED_PIC | AV_DISPOSITION_TIMED_THUMBNAILS;
    return stream.codecpar->codec_type == type && !(stream.disposition & isNoMovie) &&
           stream.codecpar->codec_id != AV_CODEC_ID_NONE;
}

/// The default stream of a type among those that can be decoded; else the first that cannot.
AVStream* chosen(AVFormatContext& format, AVMediaType type)
{
    AVStream* best = nullptr;
    int bestScore = -1;
    for (unsigned i = 0; i < format.nb_streams; ++i) {
        AVStream& stream = *format.streams[i];
        if (!isChoosable(stream, type))
            continue;
        bool const isDecodable = avcodec_find_decoder(stream.codecpar->codec_id);
        bool const isDefault = stream.disposition & AV_DISPOSITION_DEFAULT;
        int const score = 2 * int(isDecodable) + int(isDefault);
        if (score > bestScore) {
            best = &stream;
            bestScore = score;
        }
    }
    return best;
}

AVCodec const* decoderOf(AVStream const& stream)
{
    AVCodecID const id = stream.codecpar->codec_id;
    // WebM stores alpha as a second frame, which the library's native decoders ignore.
    if (av_dict_get(stream.metadata, "alpha_mode", nullptr, 0)) {
        char const* const name = id == AV_CODEC_ID_VP9   ? "libvpx-vp9"
                                 : id == AV_CODEC_ID_VP8 ? "libvpx"
                                                         : nullptr;
        AVCodec const* const decoder = name ? avcodec_find_decoder_by_name(name) : nullptr;
        if (decoder)
            return decoder;
    }
    return avcodec_find_decoder(id);
}

double secondsOf(std::int64_t time, AVRational base)
{
    return double(time) * av_q2d(base);
}

} // namespace

MediaError notMedia(std::filesystem::path const& file)
{
    return failure(MediaError::Cause::unsupported, file, "is not a video, photo or audio file.");
}

MediaInput::MediaInput(Descriptor opened, std::filesystem::path const& file, Detail detail,
                       ReadingActivity activity)
    : m_path(file),
      m_file(std::make_unique<Descriptor>(std::move(opened))),
      m_watch(std::make_unique<ReadingWatch>(std::move(activity)))
{
    quietLibrary();
    forgetLibraryMessages();
    m_io = std::make_unique<DescriptorIO>(*m_file, DescriptorIO::Access::read);
    m_io->mayRead = [watch = m_watch.get()] { return watch->mayContinue(); };
    openContainer();
    chooseStreams();
    findStreamFacts(detail);
    chooseStreams(); // Again: some streams are discovered or identified by their packets only.
    if (!m_video && !m_audio)
        throw notMedia(m_path);
    checkStreams();
}

void MediaInput::openContainer()
{
    AVInputFormat const* kind = nullptr;
    int const score = av_probe_input_buffer2(m_io->context(), &kind, "", nullptr, 0, 0);
    m_watch->rethrow();
    if (score == AVERROR(ENOMEM))
        throw std::bad_alloc();
    if (score < minProbeScore || !kind || !ContainerFormat(*kind).isSelfContained())
        throw notMedia(m_path);

    AVFormatContext* format = avformat_alloc_context();
    if (!format)
        throw std::bad_alloc();
    format->pb = m_io->context();
    format->flags |= AVFMT_FLAG_CUSTOM_IO;
    format->io_open = refuseToOpen;
    format->max_streams = maxStreams;
    format->probesize = maxProbeBytes;
    format->max_analyze_duration = maxAnalyzedMicroseconds;
    forgetLibraryMessages();
    int const result = avformat_open_input(&format, "", kind, nullptr); // Frees it on failure.
    if (result < 0)
        m_watch->rethrow();
    if (result == AVERROR(ENOMEM))
        throw std::bad_alloc();
    if (result < 0)
        throw damage(m_path, result);
    m_format.reset(format);
}

void MediaInput::findStreamFacts(Detail detail)
{
    if (detail == Detail::forReading && container().isMov())
        return;
    if (m_video)
        checkImageSize(std::max(1, m_video->codecpar->width),
                       std::max(1, m_video->codecpar->height), m_path);

    std::vector<AVDictionary*> options(m_format->nb_streams);
    for (AVDictionary*& option : options)
        av_dict_set_int(&option, "max_pixels", maxMoviePixels, 0);
    int const result = avformat_find_stream_info(m_format.get(), options.data());
    for (AVDictionary*& option : options)
        av_dict_free(&option);
    m_watch->rethrow();
    if (result == AVERROR(ENOMEM))
        throw std::bad_alloc();
    if (result < 0)
        throw damage(m_path, result);
}

void MediaInput::chooseStreams()
{
    m_video = chosen(*m_format, AVMEDIA_TYPE_VIDEO);
    m_audio = chosen(*m_format, AVMEDIA_TYPE_AUDIO);
}

void MediaInput::checkStreams() const
{
    if (m_video)
        checkImageSize(m_video->codecpar->width, m_video->codecpar->height, m_path);
    if (m_audio && m_audio->codecpar->sample_rate <= 0)
        throw damage(m_path, "its audio has no sample rate");
}

void MediaInput::readOnly(AVStream const& stream)
{
    for (unsigned i = 0; i < m_format->nb_streams; ++i)
        m_format->streams[i]->discard =
            m_format->streams[i] == &stream ? AVDISCARD_DEFAULT : AVDISCARD_ALL;
}

ContainerFormat MediaInput::container() const
{
    return ContainerFormat(*m_format->iformat);
}

std::int64_t MediaInput::zero(AVStream const& stream) const
{
    if (container().hasAbsoluteTimes())
        return &stream == m_audio ? m_encoderDelay : 0;
    AVStream const* first = nullptr;
    for (AVStream const* const each : {m_video, m_audio}) {
        if (each && each->start_time != AV_NOPTS_VALUE &&
            (!first || av_compare_ts(each->start_time, each->time_base, first->start_time,
                                     first->time_base) < 0))
            first = each;
    }
    std::int64_t const begin =
        first ? av_rescale_q(first->start_time, first->time_base, stream.time_base) : 0;
    // Numbered in decoding order, all frames are displayed late by the reordering delay.
    return begin + (container().hasFrameNumbersAsTimes() ? stream.codecpar->video_delay : 0);
}

void MediaInput::findEncoderDelay()
{
    // With an edit list the first packet is before 0 and nothing needs correcting.
    AVIndexEntry const* const first = m_audio ? avformat_index_get_entry(m_audio, 0) : nullptr;
    if (!container().isMov() || !first || first->timestamp != 0)
        return;
    readOnly(*m_audio);
    PacketHandle const packet = newPacket();
    if (!read(*packet))
        return;
    std::size_t size = 0;
    std::uint8_t const* const skip =
        av_packet_get_side_data(packet.get(), AV_PKT_DATA_SKIP_SAMPLES, &size);
    if (skip && size >= 4) {
        std::uint32_t const samples =
            skip[0] | skip[1] << 8 | skip[2] << 16 | std::uint32_t(skip[3]) << 24;
        m_encoderDelay =
            av_rescale_q(samples, {1, m_audio->codecpar->sample_rate}, m_audio->time_base);
    }
    seekToStart(*m_audio);
}

double MediaInput::end(AVStream const& stream) const
{
    if (m_format->duration_estimation_method == AVFMT_DURATION_FROM_BITRATE ||
        !container().givesExactDuration())
        return -1;
    if (stream.duration != AV_NOPTS_VALUE && stream.duration > 0) {
        std::int64_t const start = stream.start_time == AV_NOPTS_VALUE ? 0 : stream.start_time;
        std::int64_t const delay = &stream == m_audio ? m_encoderDelay : 0;
        return secondsOf(start - delay + stream.duration - zero(stream), stream.time_base);
    }
    if (m_format->duration != AV_NOPTS_VALUE && m_format->duration > 0)
        return secondsOf(m_format->duration, AV_TIME_BASE_Q);
    return -1;
}

CodecHandle MediaInput::openDecoder(AVStream const& stream, int threads) const
{
    AVCodec const* const codec = decoderOf(stream);
    if (!codec) {
        char const* const kind =
            stream.codecpar->codec_type == AVMEDIA_TYPE_VIDEO ? "video" : "audio";
        throw failure(MediaError::Cause::unsupported, m_path,
                      fmt::format("contains {} in the unsupported format {}.", kind,
                                  avcodec_get_name(stream.codecpar->codec_id)));
    }
    auto decoder = made<CodecHandle>(avcodec_alloc_context3(codec));
    forgetLibraryMessages();
    int result = avcodec_parameters_to_context(decoder.get(), stream.codecpar);
    decoder->pkt_timebase = stream.time_base;
    decoder->thread_count = threads;
    decoder->max_pixels = maxMoviePixels;
    if (result >= 0)
        result = avcodec_open2(decoder.get(), codec, nullptr);
    if (result == AVERROR(ENOMEM))
        throw std::bad_alloc();
    if (result < 0)
        throw damage(m_path, result);
    return decoder;
}

bool MediaInput::read(AVPacket& packet)
{
    if (!m_watch->mayContinue())
        m_watch->rethrow();
    forgetLibraryMessages();
    int const result = av_read_frame(m_format.get(), &packet);
    if (result < 0)
        m_watch->rethrow();
    if (result == AVERROR_EOF && !m_isTruncationReported && isTruncated()) {
        m_isTruncationReported = true;
        throw damage(m_path, "its end is missing");
    }
    if (result == AVERROR_EOF)
        return false;
    if (result == AVERROR(ENOMEM))
        throw std::bad_alloc();
    if (result < 0)
        throw damage(m_path, result);
    return true;
}

/// Whether the end just reached is premature: an MP4's index refers to data beyond it, in a stream
/// that is being read, or a Matroska element is incomplete.
bool MediaInput::isTruncated() const
{
    if (librarySaid("ended prematurely"))
        return true;
    if (!container().isMov())
        return false;
    for (AVStream* const stream : {m_video, m_audio}) {
        if (!stream || stream->discard == AVDISCARD_ALL)
            continue;
        int const entries = avformat_index_get_entries_count(stream);
        AVIndexEntry const* const last = avformat_index_get_entry(stream, entries - 1);
        if (last && last->pos + last->size > m_file->size())
            return true;
    }
    return false;
}

std::int64_t MediaInput::firstTime(AVStream& stream) const
{
    // In other formats the index is built while reading, so it starts wherever that started.
    AVIndexEntry const* const first =
        container().isMov() ? avformat_index_get_entry(&stream, 0) : nullptr;
    if (first)
        return first->timestamp;
    return stream.start_time != AV_NOPTS_VALUE ? stream.start_time : 0;
}

void MediaInput::seek(AVStream& stream, std::int64_t time)
{
    m_isTruncationReported = false;
    int const result = container().seeksReliably()
                           ? av_seek_frame(m_format.get(), stream.index, time, AVSEEK_FLAG_BACKWARD)
                           : -1;
    m_watch->rethrow();
    if (result < 0)
        seekToStart(stream);
}

void MediaInput::seekToStart(AVStream& stream)
{
    m_isTruncationReported = false;
    forgetLibraryMessages();
    int result = -1;
    if (container().findsStartByTime())
        result =
            av_seek_frame(m_format.get(), stream.index, firstTime(stream), AVSEEK_FLAG_BACKWARD);
    if (result < 0)
        result = av_seek_frame(m_format.get(), -1, 0, AVSEEK_FLAG_BYTE);
    m_watch->rethrow();
    if (result < 0)
        throw damage(m_path, result);
}

} // namespace framewright
