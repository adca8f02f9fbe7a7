#include "raster/asset_loading.h"

#include "media/media_error.h"
#include "model/file_url.h"
#include "raster/internal/frame_scaler.h"

#include <string>

namespace framewright {

namespace {

/// Primaries, transfer and matrix by their numbers: "9/18/14".
std::string colorText(ColorTags const& colors)
{
    return std::to_string(colors.primaries) + "/" + std::to_string(colors.transfer) + "/" +
           std::to_string(colors.matrix);
}

} // namespace

LoadedAsset loadedAsset(std::filesystem::path const& file, MediaInfo const& info)
{
    LoadedAsset asset;
    asset.file = file;
    asset.kind = info.kind;
    asset.duration = info.duration;
    asset.hasVideo = info.hasVideo;
    asset.hasAudio = info.hasAudio;
    asset.isHDR = info.isHDR;
    asset.mastering = info.mastering;
    if (!info.hasVideo)
        return asset;
    if (info.kind == MediaKind::video && !FrameScaler::canConvert(info.colors))
        throw MediaError(MediaError::Cause::unsupported,
                         validUtf8(file.filename().string()) +
                             " has colours that can't be shown: they are marked " +
                             colorText(info.colors) +
                             " in the file. Convert it to BT.709 or BT.2020 first.");
    if (info.kind == MediaKind::image) {
        asset.naturalSize = {double(info.displayWidth()), double(info.displayHeight())};
    } else {
        asset.naturalSize = {double(info.width), double(info.height)};
        asset.preferredTransform = uprightTransform(info.orientation, asset.naturalSize);
        asset.frameRate = info.frameRate;
    }
    return asset;
}

} // namespace framewright
