#include "composition/loaded_asset.h"

namespace framewright {

Size LoadedAsset::displaySize() const
{
    Rect const shown = preferredTransform.apply(Rect{0, 0, naturalSize.width, naturalSize.height});
    return {shown.width, shown.height};
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
