// A Matroska file (RFC 9559) with one track of JPEG pictures.
#ifndef OSTREL_APPS_CAMERA_RECORD_MATROSKA_FILE_H
#define OSTREL_APPS_CAMERA_RECORD_MATROSKA_FILE_H

#include "apps/camera/output_file.h"
#include "apps/common/size.h"

#include <cstdint>
#include <string>
#include <vector>

namespace ostrel::apps::cli {

// Each picture is in the file when write() returns, and what is there can be played at any time, whatever
// becomes of the program. Bound to one thread.
class MatroskaFile {
public:
    // Throws as OutputFile does.
    MatroskaFile(const std::string& path, const Size& size);

    // captureTime: nanoseconds from any beginning on; the file's own times are in milliseconds, each at least
    // one after the last, as players expect. Throws a Failure when the picture cannot be written; the file
    // then ends with the one before.
    void write(const uint8_t* jpeg, std::size_t bytes, int64_t captureTime);
    // Adds what makes seeking quick and states the duration, in a regular file. A Failure says what could not
    // be written; the file can be played all the same.
    void finish();

    uint64_t pictures() const { return pictures_; }
    uint64_t bytes() const { return file_.written(); }
    const std::string& displayName() const { return file_.displayName(); }

private:
    struct Cluster {
        int64_t time = 0; // milliseconds from the first picture
        uint64_t begin = 0;
        uint64_t end = 0;
    };

    void writeHead();
    void openCluster(int64_t time);
    void closeCluster();
    void writeCues();
    void writeDuration();
    std::string kept(uint64_t end);

    OutputFile file_;
    Size size_;
    uint64_t segment_ = 0;  // where its content begins
    uint64_t seekHead_ = 0; // where there is room for it
    uint64_t duration_ = 0;
    std::vector<Cluster> clusters_;
    bool open_ = false; // the last of them
    uint64_t pictures_ = 0;
    int64_t firstTime_ = 0; // nanoseconds
    int64_t lastTicks_ = 0;
};

} // namespace ostrel::apps::cli

#endif
