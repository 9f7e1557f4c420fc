// What stands in for AVFoundation in tests: its published classes, as unkind as the documentation allows.
//
//   - what was on a queue when a session stopped still reaches the delegate, and a little more besides
//   - rows are padded, the last one is not; the fourth byte is anything
//   - a session's frames stop coming while its clients hold more than eight buffers
//   - setters raise exceptions where they may, for a rate that is next to one on offer, too; a start takes
//   its
//     time
//   - the list of devices stands still until the main run loop turns, where it is told to
//   - what is plugged in again is a new object; the old one never connects again
#ifndef OSTREL_TESTS_SUPPORT_AVFOUNDATION_STANDIN_H
#define OSTREL_TESTS_SUPPORT_AVFOUNDATION_STANDIN_H

#include <cstdint>
#include <string>
#include <vector>

namespace ostrel::support::avfoundation {

struct Format {
    int width = 640; // pixels
    int height = 480;
    double rate = 30;                  // frames a second, at most and unless others are asked for
    double slowest = 1;                // of any rate up to that
    std::vector<double> otherRates;    // single ones, beside those
    uint32_t subtype = 0x34323076;     // "420v"
    bool refused = false;              // setActiveFormat: raises an exception
    int sentWidth = 0, sentHeight = 0; // of the frames, where it is not the format's
};

struct Device {
    std::string identifier = "0x1420000005ac8600";
    std::string name = "Camera";
    std::string type = "AVCaptureDeviceTypeBuiltInWideAngleCamera";
    std::vector<Format> formats = {Format()};
    int64_t period = 5000000; // nanoseconds from frame to frame
    int startMilliseconds = 5;
    int nilFrames = 0;       // every so-many-th sample has no picture; 0: none
    unsigned char grey = 77; // of all pixels
    std::string model = "UVC Camera VendorID_1452 ProductID_34304";
};

enum class Trouble {
    None,
    StartRaises, // startRunning raises an exception
    StartFails,  // startRunning returns, and the session does not run
    OpenRaises,  // the input's initialiser raises one
    InUse,       // the input is refused: another program has the camera
    NotAdmitted, // canAddInput: says no
    NotLocked,   // lockForConfiguration: says no
    Silence      // the session runs and sends nothing
};

// All thread-safe. Every test begins with reset(): no devices, allowed, no trouble.
void reset();
void plug(const Device& device);
void unplug(const std::string& identifier);
void setTrouble(Trouble trouble);
void setAuthorization(int status); // AVAuthorizationStatus
// From now on devices come and go for the program only when its main run loop turns.
void freezeList();
// As if the calling thread's run loop were turning already.
void setLoopTurning(bool turning);
int loopTurns();
// Of the running session of the device.
void failSession(const std::string& identifier, const std::string& why);
void interruptSession(const std::string& identifier, bool interrupted);

bool isStreaming(const std::string& identifier);
// Of the device's active format.
int activeWidth(const std::string& identifier);
// Calls that delegates got after they had been taken back.
int lateCalls();
// Sessions, inputs, outputs and observers that nobody has let go of; waits a while for queues to run empty.
std::string leftBehind();
// Wrong uses, in words.
std::vector<std::string> misuse();

} // namespace ostrel::support::avfoundation

#endif
