#pragma once

#include <string>
#include <string_view>

namespace framewright {

/// A hash of a file's content: tells contents apart without keeping them.
using ContentMark = std::string;

ContentMark contentMark(std::string_view bytes);

} // namespace framewright
