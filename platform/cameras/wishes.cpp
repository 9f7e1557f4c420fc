#include "platform/cameras/wishes.h"

#include <atomic>
#include <map>
#include <mutex>

namespace ostrel {
namespace cameras {

namespace {

struct Wishes {
    std::mutex mutex;
    std::map<std::string, ModeWish> modes; // by identifier
};

// Never destroyed: clients' static objects may outlive every static destructor.
Wishes& wishes() {
    static Wishes* const instance = new Wishes;
    return *instance;
}

std::atomic<bool> g_nativeOnly{false};

} // namespace

ModeWish modeWish(const std::string& identifier) {
    Wishes& all = wishes();
    std::lock_guard<std::mutex> lock(all.mutex);
    const auto found = all.modes.find(identifier);
    return found == all.modes.end() ? ModeWish() : found->second;
}

void setModeWish(const std::string& identifier, const ModeWish& wish) {
    Wishes& all = wishes();
    std::lock_guard<std::mutex> lock(all.mutex);
    if (wish.any())
        all.modes.erase(identifier);
    else
        all.modes[identifier] = wish;
}

bool nativeOnlyIsListed() {
    return g_nativeOnly.load(std::memory_order_relaxed);
}

void listNativeOnly(bool list) {
    g_nativeOnly.store(list, std::memory_order_relaxed);
}

} // namespace cameras
} // namespace ostrel
