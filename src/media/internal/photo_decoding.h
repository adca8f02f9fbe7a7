#pragma once

#include "media/internal/media_file.h"

#include <filesystem>

#include <QImage>
#include <QSize>

namespace framewright {

/// The size of a photo as it stands upright, from its head. Throws MediaError.
QSize photoSize(Descriptor const& opened, PhotoFormat format, std::filesystem::path const& file);

/// The photo upright, scaled down smoothly so that no side is longer than `maxSide`.
QImage decodePhoto(Descriptor const& opened, PhotoFormat format, std::filesystem::path const& file,
                   int maxSide);

/// The same for HEIC and AVIF.
QSize heifSize(Descriptor const& opened, std::filesystem::path const& file);
QImage decodeHeif(Descriptor const& opened, std::filesystem::path const& file);

/// The whole content of a photo's file.
QByteArray wholeFile(Descriptor const& opened, std::filesystem::path const& file);

/// `size` made no larger than `maxSide`, in proportion, no side below 1.
QSize fitted(QSize size, int maxSide);

} // namespace framewright
