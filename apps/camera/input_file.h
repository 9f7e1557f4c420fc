// A file that a command reads.
#ifndef OSTREL_APPS_CAMERA_INPUT_FILE_H
#define OSTREL_APPS_CAMERA_INPUT_FILE_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace ostrel::apps::cli {

// "-" is standard input. Every failure is thrown as a Failure with EXIT_FILE that names the file. Bound to
// one thread.
class InputFile {
public:
    explicit InputFile(const std::string& path);
    ~InputFile();
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;

    // Bytes read: size, or fewer at the end of the file.
    std::size_t read(void* bytes, std::size_t size);
    // Up to the next line break, which is taken as well. Nothing at the end of the file, and when no line
    // break comes within limit bytes.
    std::optional<std::string> readLine(std::size_t limit);

    std::optional<uint64_t> size() const { return size_; } // of a regular file
    uint64_t position() const { return position_; }
    const std::string& displayName() const { return displayName_; }

private:
    std::size_t fill(char* bytes, std::size_t size);

    std::string displayName_;
    int descriptor_;
    std::optional<uint64_t> size_;
    uint64_t position_ = 0;
    std::vector<char> buffer_; // read ahead
    std::size_t begin_ = 0;
    std::size_t end_ = 0;
};

// Whether both names stand for one regular file.
bool sameFile(const std::string& a, const std::string& b);

} // namespace ostrel::apps::cli

#endif
