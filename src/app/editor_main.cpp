// The editor, as the thin executable loads it.

#include "cli/ready_signal.h"
#include "cli/server.h"
#include "cli/tools/editor_tools.h"
#include "editor/app_state.h"
#include "editor/export_session.h"
#include "editor/thumbnail_writer.h"
#include "platform/user_defaults.h"
#include "raster/caption_burner.h"
#include "stills/still_frames.h"
#include "styles/style_store.h"
#include "text/font_registry.h"
#include "workspace/workspace.h"

#include <QFile>
#include <QGuiApplication>
#include <QSocketNotifier>
#include <QThreadPool>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <malloc.h>
#include <memory>
#include <sys/signalfd.h>
#include <unistd.h>

namespace framewright {

namespace {

using namespace std::chrono_literals;

/// Turns the signals that ask a process to end into an event of the main loop.
class EndSignals {
public:
    /// Call before starting threads: they inherit the blocked signals.
    EndSignals()
    {
        sigemptyset(&m_signals);
        for (int const number : {SIGTERM, SIGINT, SIGHUP})
            sigaddset(&m_signals, number);
        sigprocmask(SIG_BLOCK, &m_signals, nullptr);
        m_descriptor = signalfd(-1, &m_signals, SFD_CLOEXEC | SFD_NONBLOCK);
    }
    ~EndSignals()
    {
        if (m_descriptor >= 0)
            close(m_descriptor);
    }
    EndSignals(EndSignals const&) = delete;
    EndSignals& operator=(EndSignals const&) = delete;

    int descriptor() const { return m_descriptor; }

private:
    sigset_t m_signals;
    int m_descriptor = -1;
};

/// Returns large blocks to the system as soon as they are freed. By default the C library raises
/// its threshold up to 32 MB and keeps freed frames and packets, whose sizes rarely recur.
void returnLargeMemory()
{
#ifdef __GLIBC__
    mallopt(M_MMAP_THRESHOLD, 256 << 10);
#endif
}

/// Long tasks mostly wait: an export for its own threads, others for the disk. With only as many
/// workers as cores, one export could hold up every save until it ends.
void haveWorkersEnough()
{
    constexpr int least = 8;
    QThreadPool& workers = *QThreadPool::globalInstance();
    workers.setMaxThreadCount(std::max(least, workers.maxThreadCount()));
}

/// The folder of the carried fonts, next to the executable's folder.
std::filesystem::path carriedFontsFolder()
{
    auto const program = std::filesystem::path(
        QFile::encodeName(QCoreApplication::applicationDirPath()).toStdString());
    return (program / "../share/framewright/fonts").lexically_normal();
}

/// Logs Qt's messages, except the warning about fonts that lack a script: Qt emits it for every
/// font it tries before the one that has the script.
void logWithoutFontSearch()
{
    static QtMessageHandler const log = qInstallMessageHandler(nullptr);
    qInstallMessageHandler(
        [](QtMsgType type, QMessageLogContext const& context, QString const& text) {
            if (!text.startsWith(QLatin1String("  OpenType support missing")))
                log(type, context, text);
        });
}

/// Ends the event loop once the running export is cancelled and its caller has the reply, or after
/// a short time-out.
QCoro::Task<void> quitWithoutExport(ExportSession& exports)
{
    QTimer::singleShot(5s, qApp, &QCoreApplication::quit);
    co_await exports.cancel();
    QCoreApplication::quit();
}

int runEditor(int argc, char** argv)
{
    logWithoutFontSearch();
    returnLargeMemory();
    EndSignals const endSignals;
    std::signal(SIGPIPE, SIG_IGN);
    ReadySignal ready = ReadySignal::take();

    // There is no window yet, so run without a display even where there is one.
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    haveWorkersEnough();
    QGuiApplication::setApplicationName(QStringLiteral("Framewright"));

    UserDefaults defaults = UserDefaults::ofUser();
    AppState editor(defaults);
    StyleStores styles(defaults);
    auto const followWorkspace = [&] { styles.follow(Workspace::url(defaults)); };
    followWorkspace();
    QObject::connect(&editor, &AppState::workspaceChanged, &styles.texts, followWorkspace);
    QObject::connect(&editor.files(), &ProjectFiles::saved, &styles.texts,
                     [&] { styles.syncStyles(); });
    // Shared, because stalled work may outlive the objects below.
    auto const fonts = std::make_shared<FontRegistry const>(carriedFontsFolder());
    auto const burner = std::make_shared<CaptionBurner const>(fonts);
    ExportSession exports(editor, burner);
    StillFrames stills(burner);
    ThumbnailWriter const thumbnails(editor, stills);
    // Agents request frames in bursts; an idle editor should use little memory between them.
    QTimer idling;
    QObject::connect(&idling, &QTimer::timeout, [&stills] {
        QThreadPool::globalInstance()->start([&stills] { stills.closeReadersUnusedFor(1min); });
    });
    idling.start(30s);
    EditorReferences const references(editor, *fonts);
    Toolbox const toolbox(allTools({{editor, Author::commandLine},
                                    exports,
                                    stills,
                                    styles,
                                    *fonts,
                                    [] {
                                        QMetaObject::invokeMethod(qApp, &QCoreApplication::quit,
                                                                  Qt::QueuedConnection);
                                    }}),
                          references);

    CLIServer server(toolbox);
    if (!std::getenv("FRAMEWRIGHT_NO_CLI")) {
        try {
            server.start();
        } catch (CLISocket::SocketError const& error) {
            if (error.cause == CLISocket::SocketError::Cause::alreadyRunning) {
                std::fprintf(stderr, "Framewright is already running.\n");
                return 1;
            }
            std::fprintf(stderr, "Command-line socket not opened: %s\n", error.what());
        }
    }
    QThreadPool::globalInstance()->start([fonts] { fonts->load(); });
    // Requests wait in the socket until the loop below runs, so none sees half a project.
    editor.files().reopenLast();
    ready.announce();

    QSocketNotifier ending(endSignals.descriptor(), QSocketNotifier::Read);
    QObject::connect(&ending, &QSocketNotifier::activated, &app, [&] {
        ending.setEnabled(false);
        quitWithoutExport(exports);
    });
    int const status = QGuiApplication::exec();

    server.stop();
    try {
        editor.files().saveBeforeQuitting();
    } catch (ProjectFileError const& error) {
        std::fprintf(stderr, "%s\n", error.what());
    }
    styles.writeBeforeQuitting();
    QThreadPool::globalInstance()->waitForDone();
    return status;
}

} // namespace

} // namespace framewright

extern "C" int framewrightEditorMain(int argc, char** argv)
{
    try {
        return framewright::runEditor(argc, argv);
    } catch (std::exception const& error) {
        std::fprintf(stderr, "Framewright could not start: %s\n", error.what());
        return 1;
    }
}
