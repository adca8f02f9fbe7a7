#pragma once

#include "media/frame.h"

#include <filesystem>
#include <string>
#include <vector>

namespace framewright {

/// A folder shared by all tests of this run, removed at its end.
std::filesystem::path const& testFolder();

/// A file in FRAMEWRIGHT_SHARED_MEDIA; empty if this machine doesn't have that folder.
std::filesystem::path sharedMedia(std::string const& name);

/// Runs a program and returns its standard output. Its failure fails the test.
std::string run(std::vector<std::string> arguments);

/// Creates `name` in the test folder with ffmpeg, once per run.
std::filesystem::path madeWith(std::string const& name, std::vector<std::string> arguments);

/// What ffprobe reports for `entries` ("stream=codec_name,start_time") of `streams` ("v", "a"): one
/// line each, values separated by "|".
std::string probed(std::filesystem::path const& file, std::string const& streams,
                   std::string const& entries);

/// Frames that carry a number, in blocks that survive any codec.
constexpr int countWidth = 128;
constexpr int countHeight = 64;
int numberIn(Frame const& frame);
Frame numberedFrame(int number);

/// `count` numbered frames as raw 4:2:0 for ffmpeg's "-f rawvideo".
std::filesystem::path numberedFrames(int count);

/// The ffmpeg arguments that read numberedFrames(count) at `rate`.
std::vector<std::string> numberedInput(int count, std::string const& rate);

std::vector<std::string> operator+(std::vector<std::string> first,
                                   std::vector<std::string> const& second);

} // namespace framewright
