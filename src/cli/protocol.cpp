#include "cli/protocol.h"

#include "cli/internal/base64.h"
#include "model/file_url.h"

namespace framewright {

using nlohmann::json;

namespace {

/// Deeper nesting is no request of anybody's, and what is built of it could not be taken apart
/// without running out of stack.
constexpr int deepestNesting = 100;

/// How much of a line that makes no sense is sent back.
constexpr std::size_t longestEcho = 200;

bool isNestedTooDeep(std::string_view line)
{
    int depth = 0;
    bool inString = false;
    for (std::size_t i = 0; i < line.size(); ++i) {
        char const c = line[i];
        if (inString) {
            if (c == '\\')
                ++i;
            else if (c == '"')
                inString = false;
        } else if (c == '"') {
            inString = true;
        } else if (c == '{' || c == '[') {
            if (++depth > deepestNesting)
                return true;
        } else if (c == '}' || c == ']') {
            --depth;
        }
    }
    return false;
}

/// The value of a line's JSON; discarded when it has none.
json parsed(std::string_view line)
{
    if (isNestedTooDeep(line))
        return json(json::value_t::discarded);
    return json::parse(line, nullptr, false);
}

std::string echo(std::string_view line)
{
    if (line.size() <= longestEcho)
        return validUtf8(line);
    std::size_t end = longestEcho;
    while (end > 0 && (static_cast<unsigned char>(line[end]) & 0xC0) == 0x80)
        --end;
    return validUtf8(line.substr(0, end)) + "…";
}

json take(json& object, char const* key, json otherwise = nullptr)
{
    auto const found = object.find(key);
    return found == object.end() || found->is_null() ? std::move(otherwise) : std::move(*found);
}

bool isTrue(json const& value)
{
    return value.is_boolean() && value.get<bool>();
}

std::string textOf(json const& value)
{
    return value.is_string() ? value.get<std::string>() : std::string();
}

/// The rest of a request line that names a tool.
decltype(Request::what) toolRequest(json& object, std::string tool)
{
    ToolRequest request{.tool = std::move(tool),
                        .args = take(object, "args", json::object()),
                        .words = take(object, "words", json::object()),
                        .cwd = textOf(take(object, "cwd")),
                        .wantsProgress = isTrue(take(object, "progress"))};
    if (!request.args.is_object())
        return BadRequest{"The \"args\" of a request must be an object."};
    if (!request.words.is_object())
        return BadRequest{"The \"words\" of a request must be an object."};
    return request;
}

std::string lineOf(json const& object)
{
    return object.dump(-1, ' ', false, json::error_handler_t::replace) + '\n';
}

} // namespace

Request decodeRequest(std::string_view line)
{
    json object = parsed(line);
    if (!object.is_object())
        return {nullptr, BadRequest{"Not a JSON request: " + echo(line)}};

    json id = take(object, "id");
    json const tool = take(object, "tool");
    if (object.contains("help") && (tool.is_null() || !object["help"].is_null()))
        return {std::move(id), HelpRequest{.command = textOf(take(object, "help")),
                                           .wantsTools = isTrue(take(object, "tools")),
                                           .cwd = textOf(take(object, "cwd"))}};
    if (tool.is_string())
        return {std::move(id), toolRequest(object, tool.get<std::string>())};
    if (object.contains("cancel"))
        return {std::move(id), CancelRequest{take(object, "cancel")}};
    return {std::move(id), BadRequest{"A request needs a \"tool\" (or \"help\")."}};
}

std::optional<std::variant<Reply, ProgressReport>> decodeAnswer(std::string_view line)
{
    json object = parsed(line);
    if (!object.is_object())
        return std::nullopt;

    if (json const progress = take(object, "progress"); progress.is_number())
        return ProgressReport{take(object, "id"), progress.get<double>(),
                              textOf(take(object, "stage"))};
    json const ok = take(object, "ok");
    if (!ok.is_boolean())
        return std::nullopt;
    Reply reply{.id = take(object, "id"),
                .ok = ok.get<bool>(),
                .text = textOf(take(object, "text")),
                .images = {},
                .tools = take(object, "tools")};
    for (json const& image : take(object, "images", json::array())) {
        auto bytes = fromBase64(textOf(image));
        if (!bytes)
            return std::nullopt;
        reply.images.push_back(std::move(*bytes));
    }
    return reply;
}

std::string encode(json const& id, ToolRequest const& request)
{
    json object{{"id", id}, {"cwd", request.cwd}, {"tool", request.tool}, {"args", request.args}};
    if (!request.words.empty())
        object["words"] = request.words;
    if (request.wantsProgress)
        object["progress"] = true;
    return lineOf(object);
}

std::string encode(json const& id, HelpRequest const& request)
{
    json object{{"id", id}, {"cwd", request.cwd}, {"help", request.command}};
    if (request.wantsTools)
        object["tools"] = true;
    return lineOf(object);
}

std::string encode(CancelRequest const& request)
{
    return lineOf({{"cancel", request.id}});
}

std::string encode(Reply const& reply)
{
    json object{{"id", reply.id}, {"ok", reply.ok}, {"text", reply.text}};
    for (std::string const& image : reply.images)
        object["images"].push_back(base64(image));
    if (!reply.tools.is_null())
        object["tools"] = reply.tools;
    return lineOf(object);
}

std::string encode(ProgressReport const& report)
{
    return lineOf({{"id", report.id}, {"progress", report.fraction}, {"stage", report.stage}});
}

} // namespace framewright
