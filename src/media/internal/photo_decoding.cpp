#include "media/internal/photo_decoding.h"

#include "media/internal/media_failure.h"

#include <QBuffer>
#include <QImageReader>

#include <algorithm>

namespace framewright {

namespace {

/// Larger files are not photos, or crafted to exhaust memory.
constexpr std::int64_t maxPhotoBytes = std::int64_t{1} << 30;

/// Four bytes per pixel of the largest accepted image.
constexpr int maxDecodedMebibytes = 1024;

char const* readerName(PhotoFormat format)
{
    switch (format) {
    case PhotoFormat::jpeg:
        return "jpeg";
    case PhotoFormat::png:
        return "png";
    case PhotoFormat::webp:
        return "webp";
    case PhotoFormat::tiff:
        return "tiff";
    case PhotoFormat::gif:
        return "gif";
    default:
        return "";
    }
}

/// Whether a JPEG has its end-of-image marker. The decoder fills a truncated file with gray and
/// reports nothing, so this walks the segments itself, scanning the entropy-coded data for the next
/// marker (ITU-T T.81, B.1.1: 0xFF followed by neither 0, 0xFF nor a restart marker).
bool isCompleteJpeg(QByteArray const& bytes)
{
    constexpr int startOfScan = 0xDA;
    constexpr int endOfImage = 0xD9;
    qsizetype const size = bytes.size();
    auto const byte = [&](qsizetype i) { return static_cast<unsigned char>(bytes[i]); };
    auto const isMark = [&](qsizetype i) {
        return byte(i) == 0xFF && byte(i + 1) != 0 && byte(i + 1) != 0xFF &&
               !(byte(i + 1) >= 0xD0 && byte(i + 1) <= 0xD7);
    };
    qsizetype at = 2;
    while (at + 1 < size) {
        if (!isMark(at)) { // Fill bytes, or entropy-coded data.
            ++at;
            continue;
        }
        int const mark = byte(at + 1);
        if (mark == endOfImage)
            return true;
        if (at + 3 >= size)
            return false;
        at += 2 + (byte(at + 2) << 8 | byte(at + 3));
        if (mark == startOfScan && at >= size)
            return false;
    }
    return false;
}

/// A QImageReader on bytes in memory, for one known format.
class Reader {
public:
    Reader(Descriptor const& opened, PhotoFormat format, std::filesystem::path const& file)
        : m_file(file), m_bytes(wholeFile(opened, file))
    {
        if (format == PhotoFormat::jpeg && !isCompleteJpeg(m_bytes))
            throw damage(file, "its end is missing");
        m_buffer.setBuffer(&m_bytes);
        m_buffer.open(QIODevice::ReadOnly);
        QImageReader::setAllocationLimit(maxDecodedMebibytes);
        m_reader.setDevice(&m_buffer);
        m_reader.setFormat(readerName(format));
        m_reader.setAutoDetectImageFormat(false);
        m_reader.setAutoTransform(true);
        m_storedSize = m_reader.size();
        if (!m_storedSize.isValid())
            throw failed();
        checkImageSize(m_storedSize.width(), m_storedSize.height(), file);
    }

    QSize uprightSize() const
    {
        bool const swaps = m_reader.transformation() & QImageIOHandler::TransformationRotate90;
        return swaps ? m_storedSize.transposed() : m_storedSize;
    }

    QImage read(int maxSide)
    {
        if (QSize const size = fitted(m_storedSize, maxSide); size != m_storedSize)
            m_reader.setScaledSize(size);
        QImage image = m_reader.read();
        if (image.isNull())
            throw failed();
        return image;
    }

private:
    MediaError failed() const
    {
        if (m_reader.error() == QImageReader::UnsupportedFormatError)
            return failure(MediaError::Cause::unsupported, m_file,
                           "is a photo in an unsupported format.");
        return damage(m_file, "its image cannot be decoded");
    }

    std::filesystem::path m_file;
    QByteArray m_bytes;
    QBuffer m_buffer;
    QImageReader m_reader;
    QSize m_storedSize;
};

} // namespace

QByteArray wholeFile(Descriptor const& opened, std::filesystem::path const& file)
{
    std::int64_t const size = opened.size();
    if (size > maxPhotoBytes)
        throw failure(MediaError::Cause::unsupported, file, "is too large to be a photo.");
    QByteArray bytes(qsizetype(size), Qt::Uninitialized);
    std::int64_t const got =
        opened.readAt(0, {reinterpret_cast<std::uint8_t*>(bytes.data()), std::size_t(size)});
    if (got < 0)
        throw systemFailure(file, "read", int(-got));
    bytes.truncate(qsizetype(got));
    return bytes;
}

QSize fitted(QSize size, int maxSide)
{
    if (std::max(size.width(), size.height()) <= maxSide)
        return size;
    return size.scaled(maxSide, maxSide, Qt::KeepAspectRatio).expandedTo({1, 1});
}

QSize photoSize(Descriptor const& opened, PhotoFormat format, std::filesystem::path const& file)
{
    if (format == PhotoFormat::heif)
        return heifSize(opened, file);
    return Reader(opened, format, file).uprightSize();
}

QImage decodePhoto(Descriptor const& opened, PhotoFormat format, std::filesystem::path const& file,
                   int maxSide)
{
    if (format != PhotoFormat::heif)
        return Reader(opened, format, file).read(maxSide);
    QImage const image = decodeHeif(opened, file);
    QSize const size = fitted(image.size(), maxSide);
    return size == image.size()
               ? image
               : image.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}

} // namespace framewright
