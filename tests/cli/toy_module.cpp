// An editor module for the real executable to load: the toy editor instead of the real one.

#include "cli/ready_signal.h"
#include "toy_editor.h"

#include <QCoreApplication>
#include <QTimer>

#include <cstdio>

extern "C" __attribute__((visibility("default"))) int framewrightEditorMain(int argc, char** argv)
{
    using namespace framewright;
    ReadySignal ready = ReadySignal::take();
    QCoreApplication application(argc, argv);
    ToyEditor editor;
    try {
        editor.server().start();
    } catch (CLISocket::SocketError const& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return error.cause == CLISocket::SocketError::Cause::alreadyRunning ? 4 : 3;
    }
    ready.announce();
    // Should a test fail to end it.
    QTimer::singleShot(60'000, &application, [] { QCoreApplication::quit(); });
    int const status = QCoreApplication::exec();
    editor.server().stop();
    return status;
}
