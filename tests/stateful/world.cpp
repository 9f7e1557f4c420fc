#include "stateful/world.h"

#include <ostrel/devices.h>

#include <chrono>
#include <cstring>
#include <thread>

namespace stateful {

namespace {

// "Twin" and "twin" differ in letter case alone: a lookup finds the one that sorts later.
const char* const IDENTIFIERS[] = {"model-a", "Twin", "twin", "model-long-0123456789abcdef"};
constexpr size_t DRIVERS = 3;
constexpr size_t READERS = 4;

// The last ones wrap: to 0, to a negative size and to a small one.
const Size SIZES[] = {{320, 240},     {640, 480},     {1280, 720},    {160, 120},     {2, 2},
                      {1, 1},         {333, 211},     {0, 0},         {0, 480},       {-1, 1},
                      {-320, -240},   {16385, 1},     {1, 16384},     {320, 0},       {17000, 17},
                      {65536, 16384}, {40000, 20000}, {32768, 32769}, {2147483647, 1}};

std::string lower(std::string text) {
    for (char& c : text)
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
    return text;
}

} // namespace

World::World(unsigned seed, std::string* trace) : random_(seed), trace_(trace) {
    for (const char* identifier : IDENTIFIERS) {
        NamedCamera each;
        each.identifier = identifier;
        cameras_.push_back(std::move(each));
    }
    drivers_.resize(DRIVERS);
    readers_.resize(READERS);
}

void World::note(const std::string& what) {
    if (trace_)
        *trace_ += what + "\n";
}

void World::step() {
    const unsigned kind = pick(26);
    if (kind < 13)
        stepDriver();
    else if (kind < 19)
        stepReader();
    else if (kind < 23)
        stepCamera();
    else if (kind < 24)
        stepListing();
    else
        pause();
}

// As a lookup sees it: letter case does not count.
bool World::isAttached(const std::string& identifier) const {
    for (const NamedCamera& each : cameras_)
        if (each.attached && lower(each.identifier) == lower(identifier))
            return true;
    return false;
}

std::string World::anyIdentifier() {
    const std::string plain = anyCamera().identifier;
    switch (pick(12)) {
    case 0:
        return "";
    case 1:
        return lower(plain);
    case 2:
        return std::string(100000, 'x');
    case 3:
        return "m\xc3\xb6" + plain;
    case 4:
        return plain + "1";
    default:
        return plain;
    }
}

Size World::anySize() {
    // Mostly sizes that work, so that sequences get somewhere.
    return pick(2) ? SIZES[pick(4)] : SIZES[pick(sizeof SIZES / sizeof SIZES[0])];
}

void World::startDriver(ModelledDriver& driver) {
    const std::string identifier = anyIdentifier();
    const Size size = anySize();
    const bool isNull = identifier.empty() && pick(2);
    const char* const argument = isNull ? nullptr : identifier.c_str();
    note("startCapture " + identifier.substr(0, 40) + " " + std::to_string(size.width) + "x" +
         std::to_string(size.height));
    driver.start(argument, size, isAttached(identifier));
}

void World::stepDriver() {
    const unsigned index = pick(drivers_.size());
    std::unique_ptr<ModelledDriver>& driver = drivers_[index];
    if (!driver) {
        note("new driver " + std::to_string(index));
        driver = std::make_unique<ModelledDriver>();
        return;
    }
    note("driver " + std::to_string(index) + ":");
    switch (pick(12)) {
    case 0:
    case 1:
    case 2:
        return startDriver(*driver);
    case 3:
        note("stop");
        return driver->stop();
    case 4:
        note("drop");
        return driver.reset();
    case 5:
        note("the rest");
        return driver->callTheRest();
    case 6:
    case 7:
    case 8:
        note("videoFrame");
        return driver->readBytes();
    default:
        note("selfVideoFrame");
        return driver->readRecord();
    }
}

void World::stepReader() {
    const unsigned index = pick(readers_.size());
    std::unique_ptr<ModelledReader>& reader = readers_[index];
    const std::unique_ptr<ModelledDriver>& driver = drivers_[pick(drivers_.size())];
    if (!reader) {
        if (driver) {
            note("new reader " + std::to_string(index));
            reader = std::make_unique<ModelledReader>(*driver);
        }
        return;
    }
    const int wait = static_cast<int>(pick(3)) * 5; // milliseconds
    note("reader " + std::to_string(index) + ", " + std::to_string(wait) + " ms:");
    switch (pick(8)) {
    case 0:
        note("drop");
        return reader.reset();
    case 1:
        note("refused pixels");
        return reader->refusePixels();
    case 2:
        note("descriptor");
        return reader->watchDescriptor();
    case 3:
        note("native");
        return reader->takeNative(wait);
    case 4:
    case 5: {
        const auto format = static_cast<ostrel::OVideoPixels>(1 + pick(3));
        note("pixels " + std::to_string(format));
        return reader->takePixels(format, static_cast<int>(pick(2)) * 5, wait);
    }
    default:
        note("record");
        return reader->takeRecord(wait);
    }
}

void World::stepCamera() {
    NamedCamera& each = anyCamera();
    if (!each.camera) {
        const Size native = SIZES[pick(3)];
        note("new camera " + each.identifier);
        each.camera = std::make_unique<ostrel::OVideoTestPatternCamera>(
            QString::fromStdString(each.identifier), QString::fromLatin1("Fuzz"), native.width, native.height,
            pick(2) ? 30 : 1000);
    }
    switch (pick(8)) {
    case 0:
        note("detach " + each.identifier);
        each.camera->detach();
        each.attached = false;
        break;
    case 1: {
        const unsigned fault = pick(6);
        note("fault " + std::to_string(fault) + " of " + each.identifier);
        each.camera->setFault(static_cast<ostrel::VIRTUAL_CAMERA_FAULT>(fault));
        break;
    }
    case 2:
        note("heal " + each.identifier);
        each.camera->setFault(ostrel::VIRTUAL_CAMERA_FAULT_NONE);
        break;
    case 3:
        note("delete " + each.identifier);
        each.camera.reset();
        each.attached = false;
        break;
    default:
        note("attach " + each.identifier);
        expect(each.camera->attach() == !each.attached, "attach");
        each.attached = true;
        break;
    }
}

void World::stepListing() {
    note("list");
    const QMap<QString, QString> listed = ostrel::videoDevices();
    for (const NamedCamera& each : cameras_)
        expect(listed.contains(QString::fromStdString(each.identifier)) == each.attached,
               "the listing of " + each.identifier);
    const std::string identifier = anyIdentifier();
    ostrel::OVideoInfoMacX info;
    const bool found = !info.deviceByID(QString::fromLatin1(identifier.c_str())).isNull();
    expect(found == isAttached(identifier), "the lookup of " + identifier.substr(0, 40));
}

void World::pause() {
    const unsigned milliseconds = pick(4);
    note("pause");
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

} // namespace stateful
