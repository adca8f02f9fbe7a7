#pragma once

#include "composition/asset_store.h"
#include "media/media_info.h"
#include "platform/test_folder.h"
#include "raster/asset_loading.h"
#include "rendering/project_making.h"
#include "rendering/test_burner.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

namespace framewright {

/// A fresh folder for each test, and media made in it.
class MadeMedia : public testing::Test {
    TestFolder const m_testFolder;

protected:
    std::filesystem::path const folder = m_testFolder.path();

    /// Runs ffmpeg with these arguments, the last of which is the file to make in the folder.
    std::filesystem::path made(std::string const& arguments, std::string const& name) const
    {
        auto const file = folder / name;
        std::string const command =
            "ffmpeg -nostdin -v error -y " + arguments + " '" + file.string() + "'";
        EXPECT_EQ(std::system(command.c_str()), 0) << command;
        return file;
    }

    /// Makes a file known to the store.
    Id loaded(std::filesystem::path const& file)
    {
        Id const id = Id::random();
        assets.insert(id, loadedAsset(file, probeMedia(file)));
        return id;
    }

    /// Lines of "key=value".
    static std::string probed(std::filesystem::path const& file, std::string const& entries)
    {
        std::string const command = "ffprobe -v error -of default=nw=1 -show_entries " + entries +
                                    " '" + file.string() + "'";
        std::string text;
        std::array<char, 256> line;
        FILE* const pipe = popen(command.c_str(), "r");
        while (pipe && fgets(line.data(), line.size(), pipe))
            text += line.data();
        EXPECT_EQ(pipe ? pclose(pipe) : -1, 0) << command;
        return text;
    }

    std::size_t filesInFolder() const
    {
        return std::size_t(std::distance(std::filesystem::directory_iterator(folder), {}));
    }

    std::shared_ptr<CaptionBurner const> burner = testBurner();
    AssetStore assets;
};

} // namespace framewright
