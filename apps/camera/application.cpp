#include "apps/camera/application.h"

#include "apps/camera/command_line.h"
#include "apps/camera/commands.h"
#include "apps/camera/output_file.h"
#include "apps/common/failure.h"
#include "apps/common/library_log.h"

#include <cerrno>
#include <clocale>
#include <csignal>
#include <fcntl.h>
#include <new>
#include <optional>
#include <unistd.h>

namespace ostrel::apps::cli {

namespace {

// A program may be started with its standard streams closed; the next file that is opened would then pose as
// one of them. Opened the wrong way round, they go on failing.
void occupyStandardStreams() {
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        if (fcntl(descriptor, F_GETFD) < 0 && errno == EBADF)
            (void)open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY);
}

int runCommand(const Options& options, const Context& context) {
    switch (options.command) {
    case Command::List:
        return runList(options, context);
    case Command::Snapshot:
        return runSnapshot(options, context);
    case Command::Record:
        return runRecord(options, context);
    case Command::Serve:
        return runServe(options, context);
    case Command::Watch:
        return runWatch(options, context);
    case Command::Controls:
        return runControls(options, context);
    case Command::Doctor:
        return runDoctor(options, context);
    case Command::Convert:
        return runConvert(options, context);
    case Command::Scale:
        return runScale(options, context);
    }
    return EXIT_INTERNAL;
}

int parseAndRun(int argc, const char* const* argv, Messages& messages) {
    const Request request = parseCommandLine(argc, argv);
    if (!request.options) {
        if (request.exitCode != EXIT_OK) {
            messages.write(request.answer);
            return request.exitCode;
        }
        OutputFile output("-", OutputFile::Mode::Stream);
        output.write(request.answer);
        output.commit();
        return EXIT_OK;
    }
    const Options& options = *request.options;
    messages.setQuiet(options.quiet);
    std::optional<HiddenLibraryLog> hidden;
    if (!options.verbose)
        hidden.emplace(messages.descriptor());
    const StopRequest stop;
    return runCommand(options, {messages, stop});
}

} // namespace

int runApplication(int argc, const char* const* argv) {
    occupyStandardStreams();
    std::setlocale(LC_CTYPE, "");  // what widths letters have
    std::signal(SIGPIPE, SIG_IGN); // a reader that has gone is a failed write
    Messages messages;
    try {
        return parseAndRun(argc, argv, messages);
    } catch (const Interrupted& interrupted) {
        return interrupted.code();
    } catch (const Failure& failure) {
        messages.error(failure.what());
        return failure.code();
    } catch (const std::bad_alloc&) {
        messages.error("out of memory: choose a smaller --size");
    } catch (const std::exception& error) {
        messages.error(std::string("unexpected failure: ") + error.what());
    }
    return EXIT_INTERNAL;
}

} // namespace ostrel::apps::cli
