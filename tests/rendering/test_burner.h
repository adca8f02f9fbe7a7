#pragma once

#include "raster/caption_burner.h"

#include <QCoreApplication>

#include <memory>

namespace framewright {

/// A burner with the fonts of this build.
inline std::shared_ptr<CaptionBurner const> testBurner()
{
    static auto const fonts = std::make_shared<FontRegistry const>(
        QCoreApplication::applicationDirPath().toStdString() + "/../share/framewright/fonts");
    return std::make_shared<CaptionBurner const>(fonts);
}

} // namespace framewright
