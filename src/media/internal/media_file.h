#pragma once

#include "media/internal/descriptor.h"

#include <filesystem>
#include <span>
#include <vector>

namespace framewright {

/// Opens a local file for reading. Never blocks: pipes and devices are refused.
/// Throws MediaError when there is no such file, or it is a folder, empty or not to be read.
Descriptor openMediaFile(std::filesystem::path const& file);

/// The first bytes of a file: enough to tell its kind.
std::vector<std::uint8_t> readHead(Descriptor const& opened, std::filesystem::path const& file);

enum class PhotoFormat { none, jpeg, png, webp, tiff, gif, heif };

/// Told by the signature; `none` when the file is no photo.
PhotoFormat photoFormat(std::span<std::uint8_t const> head);

/// No picture's side may be longer: more memory than any camera's picture needs is an attack.
inline constexpr int maxImageSide = 16384;

/// Throws MediaError when a picture claims sides that no real one has.
void checkImageSize(std::int64_t width, std::int64_t height, std::filesystem::path const& file);

} // namespace framewright
