#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace framewright {

/// The word that someone who wrote `word` may have meant: one that differs in case, hyphens and
/// underscores only, or else by a slip or two. None when nothing is near.
std::optional<std::string> nearestWord(std::string_view word, std::span<std::string const> words);

} // namespace framewright
