// Drivers, readers and cameras, and one random step after the other.
#ifndef OSTREL_TESTS_STATEFUL_WORLD_H
#define OSTREL_TESTS_STATEFUL_WORLD_H

#include "stateful/driver_model.h"
#include "stateful/reader_model.h"

#include <ostrel/virtual_camera.h>

#include <memory>
#include <random>
#include <string>
#include <vector>

namespace stateful {

class World {
public:
    // The same seed makes the same sequence of calls. Each call's name goes to trace, when there is one.
    World(unsigned seed, std::string* trace);

    void step();

private:
    struct NamedCamera {
        std::string identifier;
        std::unique_ptr<ostrel::OVideoTestPatternCamera> camera;
        bool attached = false;
    };

    unsigned pick(size_t count) { return static_cast<unsigned>(random_() % count); }
    void note(const std::string& what);
    NamedCamera& anyCamera() { return cameras_[pick(cameras_.size())]; }
    bool isAttached(const std::string& identifier) const;
    std::string anyIdentifier();
    Size anySize();

    void startDriver(ModelledDriver& driver);
    void stepDriver();
    void stepReader();
    void stepCamera();
    void stepListing();
    void pause();

    std::mt19937 random_;
    std::string* const trace_;
    std::vector<NamedCamera> cameras_;
    std::vector<std::unique_ptr<ModelledDriver>> drivers_;
    std::vector<std::unique_ptr<ModelledReader>> readers_;
};

} // namespace stateful

#endif
