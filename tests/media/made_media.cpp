#include "media/made_media.h"

#include "platform/test_folder.h"

#include <fstream>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace framewright {

namespace fs = std::filesystem;

namespace {

// Eight blocks in two rows, one per bit of the number.
constexpr int blockSide = 32;

std::uint8_t levelAt(int number, int x, int y)
{
    int const bit = (y / blockSide) * (countWidth / blockSide) + x / blockSide;
    return (number >> bit) & 1 ? 210 : 40;
}

} // namespace

fs::path const& testFolder()
{
    static TestFolder const folder;
    return folder.path();
}

fs::path sharedMedia(std::string const& name)
{
    fs::path const folder = FRAMEWRIGHT_SHARED_MEDIA;
    return fs::exists(folder) ? folder / name : fs::path();
}

std::string run(std::vector<std::string> arguments)
{
    std::vector<char*> list;
    for (std::string& argument : arguments)
        list.push_back(argument.data());
    list.push_back(nullptr);

    fs::path const output = testFolder() / "output of a program";
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, output.c_str(),
                                     O_WRONLY | O_CREAT | O_TRUNC, 0600);
    pid_t child = 0;
    int const spawned = ::posix_spawnp(&child, list[0], &actions, nullptr, list.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    int status = -1;
    if (spawned == 0)
        ::waitpid(child, &status, 0);
    if (status != 0)
        ADD_FAILURE() << arguments[0] << " … " << arguments.back() << " failed.";
    return contentsOf(output);
}

fs::path madeWith(std::string const& name, std::vector<std::string> arguments)
{
    fs::path const file = testFolder() / name;
    if (!fs::exists(file))
        run(std::vector<std::string>{"ffmpeg", "-nostdin", "-v", "error", "-y"} + arguments +
            std::vector<std::string>{file});
    return file;
}

std::string probed(fs::path const& file, std::string const& streams, std::string const& entries)
{
    return run({"ffprobe", "-v", "error", "-select_streams", streams, "-show_entries", entries,
                "-of", "compact=p=0:nk=1", file});
}

int numberIn(Frame const& frame)
{
    auto const plane = frame.plane(0);
    int const sampleBytes = frame.layout().bytesPerSample();
    int number = 0;
    for (int bit = 0; bit < 8; ++bit) {
        int const x = (bit % 4) * blockSide + blockSide / 2;
        int const y = (bit / 4) * blockSide + blockSide / 2;
        std::uint8_t const* const sample = plane.data + y * plane.stride + x * sampleBytes;
        int const value = sampleBytes == 2 ? (sample[0] | sample[1] << 8) : sample[0];
        if (value > 1 << (frame.layout().bitDepth - 1))
            number |= 1 << bit;
    }
    return number;
}

Frame numberedFrame(int number)
{
    Frame frame(countWidth, countHeight, PixelLayout::yuv420p8(), ColorTags::bt709());
    for (int i = 0; i < 3; ++i) {
        auto const plane = frame.writablePlane(i);
        for (int y = 0; y < plane.height; ++y)
            for (int x = 0; x < plane.width; ++x)
                plane.data[y * plane.stride + x] = i == 0 ? levelAt(number, x, y) : 128;
    }
    return frame;
}

fs::path numberedFrames(int count)
{
    fs::path const file = testFolder() / (std::to_string(count) + ".yuv");
    if (fs::exists(file))
        return file;
    std::ofstream out(file, std::ios::binary);
    for (int number = 0; number < count; ++number) {
        for (int y = 0; y < countHeight; ++y)
            for (int x = 0; x < countWidth; ++x)
                out.put(char(levelAt(number, x, y)));
        for (int i = 0; i < countWidth * countHeight / 2; ++i)
            out.put(char(128));
    }
    return file;
}

std::vector<std::string> numberedInput(int count, std::string const& rate)
{
    return {"-f",         "rawvideo",
            "-pix_fmt",   "yuv420p",
            "-s",         std::to_string(countWidth) + "x" + std::to_string(countHeight),
            "-framerate", rate,
            "-i",         numberedFrames(count)};
}

std::vector<std::string> operator+(std::vector<std::string> first,
                                   std::vector<std::string> const& second)
{
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

} // namespace framewright
