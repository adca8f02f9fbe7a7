#pragma once

#include "media/internal/descriptor.h"

#include <filesystem>
#include <span>
#include <vector>

namespace framewright {

/// Opens a local file for reading. Never blocks, since pipes and devices are refused. Throws
/// MediaError when the file is missing, unreadable, empty or a folder.
Descriptor openMediaFile(std::filesystem::path const& file);

/// The first bytes of a file, enough to recognize its format.
std::vector<std::uint8_t> readHead(Descriptor const& opened, std::filesystem::path const& file);

enum class PhotoFormat { none, jpeg, png, webp, tiff, gif, heif };

/// Recognized by its signature; `none` when the file is no photo.
PhotoFormat photoFormat(std::span<std::uint8_t const> head);

/// Longer sides are rejected: no camera needs them, and a crafted header could exhaust memory.
inline constexpr int maxImageSide = 16384;

/// Throws MediaError for an implausible size.
void checkImageSize(std::int64_t width, std::int64_t height, std::filesystem::path const& file);

} // namespace framewright
