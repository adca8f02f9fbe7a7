#include "toy_editor.h"

#include <QCoreApplication>

#include <memory>
#include <optional>

#include <unistd.h>

namespace framewright {

namespace {

Param<Text> const text{"text", "What to print."};
Param<WholeNumber> const count{"count", "How many.", optionalParam};
Param<WholeNumber> const size{"size", "How much."};
Param<Moment> const at{"at", "When.", optionalParam};

/// Resumes a coroutine once it is told to stop.
class Stopped {
public:
    explicit Stopped(std::stop_token token) : m_token(std::move(token)) {}

    bool await_ready() const { return m_token.stop_requested(); }
    void await_suspend(std::coroutine_handle<> waiting)
    {
        m_callback->emplace(m_token, [waiting] { waiting.resume(); });
    }
    void await_resume() const {}

private:
    std::stop_token m_token;
    using Callback = std::optional<std::stop_callback<std::function<void()>>>;
    std::shared_ptr<Callback> m_callback = std::make_shared<Callback>();
};

} // namespace

ToyEditor::ToyEditor() : m_toolbox(tools(), m_context), m_server(m_toolbox) {}

Tool ToyEditor::wait()
{
    return {.name = "wait",
            .description = "Waits until it is cancelled.",
            .params = {},
            .action = [this](ToolArgs args) -> Task<ToolResult> {
                args.progress().report(0.25, "Waiting");
                args.progress().report(0.26, "Waiting"); // at once, so it is not passed on
                args.progress().report(0.5, "Still waiting");
                onWaiting();
                co_await Stopped(args.stopToken());
                ++cancelled;
                args.throwIfCancelled();
                co_return ToolResult{.text = "never"};
            }};
}

std::vector<Tool> ToyEditor::tools()
{
    auto const images = [](int number) {
        ToolResult result{.text = std::to_string(number) + " images"};
        for (int i = 1; i <= number; ++i)
            result.images.push_back("image " + std::to_string(i));
        return result;
    };
    return {
        {.name = "echo",
         .description = "Prints a text. And no more.",
         .params = {text},
         .action = [](ToolArgs args) { return ToolResult{.text = args[text]}; }},
        {.name = "frame",
         .description = "One image.",
         .params = {at},
         .action = [images](ToolArgs) { return images(1); }},
        {.name = "contact_sheet",
         .description = "Some images.",
         .params = {count},
         .action = [images](ToolArgs args) { return images(args.get(count, 2)); }},
        {.name = "fail",
         .description = "Fails.",
         .action = [](ToolArgs) -> ToolResult { throw ToolError("It failed."); }},
        {.name = "big",
         .description = "Prints a long text.",
         .params = {size},
         .action =
             [](ToolArgs args) {
                 return ToolResult{.text = std::string(static_cast<std::size_t>(args[size]), 'x')};
             }},
        wait(),
        {.name = "status",
         .description = "Which process it is.",
         .action = [](ToolArgs) { return ToolResult{.text = std::to_string(::getpid())}; }},
        {.name = "crash",
         .description = "Ends without an answer.",
         .action = [](ToolArgs) -> ToolResult { ::_exit(3); }},
        {.name = "quit",
         .description = "Ends.",
         .action =
             [](ToolArgs) {
                 QMetaObject::invokeMethod(qApp, &QCoreApplication::quit, Qt::QueuedConnection);
                 return ToolResult{.text = "bye"};
             }},
    };
}

} // namespace framewright
