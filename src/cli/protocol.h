#pragma once

#include <nlohmann/json.hpp>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace framewright {

// One JSON object per line, in both directions.
//
//     {"id": 1, "cwd": "/w", "tool": "clip_add", "args": {"_": ["v1"], "in": 4}, "progress": true}
//     {"id": 1, "progress": 0.4, "stage": "Reading"}
//     {"id": 1, "ok": true, "text": "…", "images": ["…"]}
//
// `id` is the client's; a reply carries it back unchanged. A client may send "progress" to be told
// how far a long command is, "words" beside "args" (below), "tools" with a help request to get the
// tools' descriptors too, and {"cancel": id} to end a command early. One that does none of this
// works as well.

/// The longest line the editor takes.
inline constexpr std::size_t longestRequestLine = 64 * 1024 * 1024;

/// The key in "args" of the values that were given without a name.
inline constexpr char const* positionalKey = "_";

/// A command to run.
struct ToolRequest {
    std::string tool;
    nlohmann::json args = nlohmann::json::object();
    /// How the user spelled those of `args` that the client turned into numbers and booleans, in
    /// the same shape: a text option takes "007" from here, where `args` only has 7 left of it.
    nlohmann::json words = nlohmann::json::object();
    /// The client's current folder: a path, or a file URL where it is not UTF-8.
    std::string cwd{};
    bool wantsProgress = false;
};

/// Help about one command, or the index of all when the name is empty.
struct HelpRequest {
    std::string command;
    bool wantsTools = false; ///< The descriptors too.
    std::string cwd{};
};

/// Ends the command with this id on the same connection. Has no reply of its own.
struct CancelRequest {
    nlohmann::json id;
};

/// A line that is none of these, and the whole sentence to reply.
struct BadRequest {
    std::string sentence;
};

struct Request {
    nlohmann::json id;
    std::variant<ToolRequest, HelpRequest, CancelRequest, BadRequest> what;
};

struct Reply {
    nlohmann::json id;
    bool ok = true;
    std::string text;
    std::vector<std::string> images; ///< PNG files, as bytes.
    nlohmann::json tools;            ///< Descriptors; null for none.
};

/// How far a command is: sent before its reply to a client that asked for it.
struct ProgressReport {
    nlohmann::json id;
    double fraction = 0; ///< 0 to 1.
    std::string stage;   ///< What is being done, for people.
};

/// Reads any line, also one that is no request at all.
Request decodeRequest(std::string_view line);

/// What the editor sends: a reply, or a progress report. Nothing when it is neither.
std::optional<std::variant<Reply, ProgressReport>> decodeAnswer(std::string_view line);

// The lines, each with its line feed. Text that is not UTF-8 goes out with replacement characters.
std::string encode(nlohmann::json const& id, ToolRequest const& request);
std::string encode(nlohmann::json const& id, HelpRequest const& request);
std::string encode(CancelRequest const& request);
std::string encode(Reply const& reply);
std::string encode(ProgressReport const& report);

} // namespace framewright
