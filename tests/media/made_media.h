#pragma once

#include "media/frame.h"

#include <filesystem>
#include <string>
#include <vector>

namespace framewright {

/// A folder of this run, removed at its end.
std::filesystem::path const& testFolder();

/// A file of FRAMEWRIGHT_SHARED_MEDIA; empty when the folder is not on this machine.
std::filesystem::path sharedMedia(std::string const& name);

/// Runs a program to its end and gives its standard output. A failure fails the test.
std::string run(std::vector<std::string> arguments);

/// Runs ffmpeg to make `name` in the test folder, once per run.
std::filesystem::path madeWith(std::string const& name, std::vector<std::string> arguments);

/// The values ffprobe gives for `entries` ("stream=codec_name,start_time") of the streams chosen
/// by `streams` ("v", "a"): one line each, values separated by "|".
std::string probed(std::filesystem::path const& file, std::string const& streams,
                   std::string const& entries);

/// A picture that carries a number, in blocks that survive any codec.
constexpr int countWidth = 128;
constexpr int countHeight = 64;
int numberIn(Frame const& frame);
Frame numberedFrame(int number);

/// `count` numbered pictures as raw 4:2:0 for ffmpeg's "-f rawvideo".
std::filesystem::path numberedFrames(int count);

/// The arguments that read numberedFrames(count) at `rate`.
std::vector<std::string> numberedInput(int count, std::string const& rate);

std::vector<std::string> operator+(std::vector<std::string> first,
                                   std::vector<std::string> const& second);

} // namespace framewright
