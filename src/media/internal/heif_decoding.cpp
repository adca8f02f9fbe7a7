#include "media/internal/photo_decoding.h"

#include "media/internal/media_failure.h"
#include "model/file_url.h"

#include <fmt/format.h>

#include <memory>

#include <libheif/heif.h>

namespace framewright {

namespace {

template <auto release>
struct HeifRelease {
    template <class T>
    void operator()(T* object) const
    {
        release(object);
    }
};

using Context = std::unique_ptr<heif_context, HeifRelease<heif_context_free>>;
using Handle = std::unique_ptr<heif_image_handle, HeifRelease<heif_image_handle_release>>;
using Image = std::unique_ptr<heif_image, HeifRelease<heif_image_release>>;

void check(heif_error const& error, std::filesystem::path const& file)
{
    if (error.code == heif_error_Ok)
        return;
    if (error.code == heif_error_Memory_allocation_error)
        throw std::bad_alloc();
    if (error.code == heif_error_Unsupported_filetype ||
        error.code == heif_error_Unsupported_feature)
        throw failure(MediaError::Cause::unsupported, file, "is a photo in an unsupported format.");
    throw damage(file, error.message && *error.message ? validUtf8(error.message)
                                                       : "its image cannot be decoded");
}

/// The primary image of a HEIF file. The library reports its size after rotation.
class HeifFile {
public:
    HeifFile(Descriptor const& opened, std::filesystem::path const& file)
        : m_bytes(wholeFile(opened, file)), m_context(heif_context_alloc())
    {
        if (!m_context)
            throw std::bad_alloc();
        heif_context_set_maximum_image_size_limit(m_context.get(), maxImageSide);
        check(heif_context_read_from_memory_without_copy(m_context.get(), m_bytes.constData(),
                                                         std::size_t(m_bytes.size()), nullptr),
              file);
        heif_image_handle* handle = nullptr;
        check(heif_context_get_primary_image_handle(m_context.get(), &handle), file);
        m_handle.reset(handle);
        checkImageSize(size().width(), size().height(), file);
    }

    QSize size() const
    {
        return {heif_image_handle_get_width(m_handle.get()),
                heif_image_handle_get_height(m_handle.get())};
    }

    heif_image_handle const* handle() const { return m_handle.get(); }

private:
    QByteArray m_bytes;
    Context m_context;
    Handle m_handle;
};

} // namespace

QSize heifSize(Descriptor const& opened, std::filesystem::path const& file)
{
    return HeifFile(opened, file).size();
}

QImage decodeHeif(Descriptor const& opened, std::filesystem::path const& file)
{
    HeifFile const heif(opened, file);
    heif_image* decoded = nullptr;
    // The library applies the rotation from the HEIF properties. The EXIF orientation that phones
    // write as well repeats it and must not be applied again.
    check(heif_decode_image(heif.handle(), &decoded, heif_colorspace_RGB,
                            heif_chroma_interleaved_RGBA, nullptr),
          file);
    Image const image(decoded);
    int stride = 0;
    std::uint8_t const* const pixels =
        heif_image_get_plane_readonly(decoded, heif_channel_interleaved, &stride);
    int const width = heif_image_get_width(decoded, heif_channel_interleaved);
    int const height = heif_image_get_height(decoded, heif_channel_interleaved);
    if (!pixels || width <= 0 || height <= 0)
        throw damage(file, "its image cannot be decoded");
    auto const format = heif_image_handle_is_premultiplied_alpha(heif.handle())
                            ? QImage::Format_RGBA8888_Premultiplied
                            : QImage::Format_RGBA8888;
    return QImage(pixels, width, height, stride, format).copy();
}

} // namespace framewright
