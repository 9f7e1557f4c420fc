// What a reader of a capture's frames must answer.
#ifndef OSTREL_TESTS_STATEFUL_READER_MODEL_H
#define OSTREL_TESTS_STATEFUL_READER_MODEL_H

#include "stateful/driver_model.h"

#include <ostrel/native_frame.h>
#include <ostrel/next_frame.h>

#include <memory>
#include <vector>

namespace stateful {

// One reader and its model. Bound to one thread; outlives its driver or not.
class ModelledReader {
public:
    explicit ModelledReader(const ModelledDriver& driver);

    // Each waits so many milliseconds. A capture that is over is waited for without a limit.
    void takeRecord(int milliseconds);
    void takePixels(ostrel::OVideoPixels format, int padding, int milliseconds);
    void takeNative(int milliseconds);
    // Memory that is too small takes no frame away.
    void refusePixels();
    void watchDescriptor();

private:
    int limit(int milliseconds) const { return course_->over ? -1 : milliseconds; }
    void check(int answer, const QString& why) const;
    void checkFacts(const ostrel::OVideoFrameFacts& facts);
    // Of a frame that was handed out in that size.
    bool wasAskedFor(int width, int height) const;
    bool isReadable();

    std::shared_ptr<const Course> course_;
    ostrel::OVideoFrameReader reader_;
    uint32_t lastNumber_ = 0;
    int lastStarts_ = 0;
    ostrel::VideoFrame record_;
    ostrel::OVideoNativeFrame native_;
    std::vector<uint8_t> pixels_;
};

} // namespace stateful

#endif
