#pragma once

#include "media/internal/media_file.h"

#include <filesystem>

#include <QImage>
#include <QSize>

namespace framewright {

/// The size of a photo after its orientation is applied, from its header. Throws MediaError.
QSize photoSize(Descriptor const& opened, PhotoFormat format, std::filesystem::path const& file);

/// The photo with its orientation applied, scaled down smoothly to sides of at most `maxSide`.
QImage decodePhoto(Descriptor const& opened, PhotoFormat format, std::filesystem::path const& file,
                   int maxSide);

/// The same for HEIC and AVIF.
QSize heifSize(Descriptor const& opened, std::filesystem::path const& file);
QImage decodeHeif(Descriptor const& opened, std::filesystem::path const& file);

/// The content of a photo's file. Throws MediaError for more than a gigabyte.
QByteArray wholeFile(Descriptor const& opened, std::filesystem::path const& file);

/// `size` reduced in proportion to sides of at most `maxSide` and at least 1.
QSize fitted(QSize size, int maxSide);

} // namespace framewright
