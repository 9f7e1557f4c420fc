#include "apps/camera/file_work.h"

#include "apps/camera/frame_writer.h"
#include "apps/camera/input_file.h"
#include "apps/camera/progress.h"
#include "apps/common/failure.h"
#include "apps/common/text.h"

#include <unistd.h>

namespace ostrel::apps::cli {

namespace {

FileKind kindOf(const std::string& path, const std::optional<FileKind>& given, const std::string& option) {
    const std::optional<FileKind> kind = given ? given : fileKindOfPath(path);
    if (!kind)
        throw Failure(EXIT_USAGE, "the name " + quoted(path) + " does not say what the file is: give " +
                                      option + " with one of " + FILE_KINDS);
    return *kind;
}

void check(const FileOptions& files, const FileKind& from) {
    if (files.output == "-" && isatty(STDOUT_FILENO))
        throw Failure(EXIT_USAGE, "frames are nothing for a terminal: give a file, or redirect");
    if (sameFile(files.input, files.output))
        throw Failure(EXIT_USAGE, quoted(files.output) + " is the input: write to another file");
    if (files.bottomUp && from.layout != Layout::Rgb24)
        throw Failure(EXIT_USAGE, std::string("--bottom-up is for rgb24 input; ") + layoutName(from.layout) +
                                      " frames start with the top row");
}

// The frame asked for, or every frame.
class Selection {
public:
    Selection(FrameReader& reader, const std::optional<uint64_t>& number)
        : reader_(reader), number_(number) {}

    bool next(Bytes& frame) {
        if (number_ && read_ >= *number_)
            return false;
        do {
            if (!reader_.next(frame))
                return failMissing();
            ++read_;
        } while (number_ && read_ < *number_);
        return true;
    }

private:
    bool failMissing() const {
        if (number_)
            throw Failure(EXIT_FILE, "there is no frame " + std::to_string(*number_) + ": the input has " +
                                         counted(read_, "frame"));
        return false;
    }

    FrameReader& reader_;
    std::optional<uint64_t> number_;
    uint64_t read_ = 0;
};

} // namespace

int runFileWork(const Options& options, const Context& context, const MakeFileStep& makeStep) {
    const FileOptions& files = options.files;
    const FileKind from = kindOf(files.input, files.from, "--from");
    const FileKind to = kindOf(files.output, files.to, "--to");
    check(files, from);
    const std::unique_ptr<FrameReader> reader =
        makeFrameReader(files.input, from, files.size, files.bottomUp);
    const FileStep work = makeStep(reader->size(), reader->layout(), to);
    const std::unique_ptr<FrameWriter> writer = makeFrameWriter(files.output, to, work.size, reader->rate());
    Selection selection(*reader, files.frame);
    Progress progress(context.messages);
    Bytes frame;
    while (selection.next(frame)) {
        if (context.stop.raised())
            break;
        writer->write(work.step->apply(frame));
        progress.update(reader->progress(), counted(writer->frames(), "frame"));
    }
    progress.clear();
    if (writer->frames() > 0)
        writer->finish(std::nullopt);
    if (context.stop.raised())
        throw Interrupted(context.stop.signal());
    context.messages.say("wrote " + counted(writer->frames(), "frame") + " of " + toString(work.size) +
                         " to " + writer->displayName());
    return EXIT_OK;
}

} // namespace ostrel::apps::cli
