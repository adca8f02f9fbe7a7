#include "render/loaded_asset.h"

#include "media/media_error.h"
#include "model/file_url.h"
#include "render/picture_scaler.h"

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

Size LoadedAsset::displaySize() const
{
    Rect const shown = preferredTransform.apply(Rect{0, 0, naturalSize.width, naturalSize.height});
    return {shown.width, shown.height};
}

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
    if (info.kind == MediaKind::video && !PictureScaler::canConvert(info.colors))
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

AffineTransform uprightTransform(Orientation orientation, Size size)
{
    AffineTransform transform;
    if (orientation.isMirrored)
        transform = {-1, 0, 0, 1, size.width, 0};
    switch (orientation.quarterTurns % 4) {
    case 1:
        return transform.then({0, 1, -1, 0, size.height, 0});
    case 2:
        return transform.then({-1, 0, 0, -1, size.width, size.height});
    case 3:
        return transform.then({0, -1, 1, 0, 0, size.width});
    default:
        return transform;
    }
}

LoadedAsset blackPlate()
{
    LoadedAsset plate;
    plate.duration = 60;
    plate.naturalSize = {1080, 1920};
    plate.hasVideo = true;
    return plate;
}

} // namespace framewright
