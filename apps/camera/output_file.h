// A file that a command writes.
#ifndef OSTREL_APPS_CAMERA_OUTPUT_FILE_H
#define OSTREL_APPS_CAMERA_OUTPUT_FILE_H

#include <cstddef>
#include <cstdint>
#include <string>

namespace ostrel::apps::cli {

// "-" is standard output. Every failure is thrown as a Failure with EXIT_FILE that names the file. Bound to
// one thread.
class OutputFile {
public:
    enum class Mode {
        Stream, // written in place; what is there stays when something goes wrong later
        Whole   // appears under its name only when it is complete
    };

    // Fails at once when the file cannot be written. Nothing that exists is changed before the first write(),
    // and a new file that was never written to is taken away again.
    OutputFile(const std::string& path, Mode mode);
    ~OutputFile(); // without commit(): a whole file leaves nothing
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    void write(const void* bytes, std::size_t size);
    void write(const std::string& bytes) { write(bytes.data(), bytes.size()); }
    uint64_t written() const { return written_; }

    // Only a regular file can be changed afterwards; elsewhere both answer false. What is written after a cut
    // goes to the new end.
    bool regular() const { return regular_; }
    bool rewrite(uint64_t offset, const std::string& bytes);
    bool cutTo(uint64_t size);

    // Ends the file and gives a whole one its name.
    void commit();

    // "recording.y4m", or "standard output"
    const std::string& displayName() const { return displayName_; }

private:
    void openStream();
    void openWhole();
    [[noreturn]] void fail(int error) const;

    std::string path_;
    std::string displayName_;
    std::string temporary_; // where a whole file grows; empty when it is written in place
    int descriptor_ = -1;
    bool regular_ = false;
    bool created_ = false;
    bool whole_;
    uint64_t written_ = 0;
};

} // namespace ostrel::apps::cli

#endif
