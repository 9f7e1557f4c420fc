#include "bindings/c/handles.h"

#include <cstdlib>
#include <unordered_map>
#include <utility>

namespace ostrel {
namespace c {

namespace {

// Never destroyed: a thread of the program's may make a call while it ends.
struct Table {
    std::mutex mutex; // of the rest
    std::unordered_map<ostrel_handle, std::shared_ptr<Object>> objects;
    // Above every index, descriptor and 32-bit number that is taken for a handle, and within what a double
    // can hold, which is all that some languages have.
    ostrel_handle last = ostrel_handle(1) << 32;
};

Table& table() {
    static Table* const instance = new Table;
    return *instance;
}

void endObject(const std::shared_ptr<Object>& object) {
    object->closed = true;
    object->end();
}

// Threads that still captured while the program's own data is being destroyed would end it with a crash.
void closeAll() {
    if (inForkedChild())
        return;
    std::unordered_map<ostrel_handle, std::shared_ptr<Object>> open;
    {
        const std::lock_guard<std::mutex> lock(table().mutex);
        open.swap(table().objects);
    }
    for (const auto& entry : open)
        endObject(entry.second);
}

} // namespace

ostrel_handle addHandle(const std::shared_ptr<Object>& object) {
    static const int registered = std::atexit(closeAll);
    static_cast<void>(registered); // without it what is open stays so, as in any program that forgets
    const std::lock_guard<std::mutex> lock(table().mutex);
    const ostrel_handle handle = ++table().last;
    table().objects.emplace(handle, object);
    return handle;
}

std::shared_ptr<Object> objectOf(ostrel_handle handle) {
    const std::lock_guard<std::mutex> lock(table().mutex);
    const auto found = table().objects.find(handle);
    if (found == table().objects.end())
        throw Failure(OSTREL_BAD_HANDLE, "The handle was closed, or is none");
    return found->second;
}

void closeHandle(ostrel_handle handle) {
    const std::shared_ptr<Object> object = objectOf(handle);
    {
        const std::lock_guard<std::mutex> lock(table().mutex);
        if (table().objects.erase(handle) == 0)
            throw Failure(OSTREL_BAD_HANDLE, "The handle was closed by another thread");
    }
    endObject(object);
}

void refuseKind(const char* wanted) {
    throw Failure(OSTREL_BAD_HANDLE, std::string("The handle is not that of ") + wanted);
}

} // namespace c
} // namespace ostrel

extern "C" int ostrel_close(ostrel_handle handle, char* why, size_t why_bytes) {
    return ostrel::c::call(why, why_bytes, [&] {
        ostrel::c::closeHandle(handle);
        return OSTREL_OK;
    });
}

extern "C" int ostrel_wait(ostrel_handle handle, int32_t timeout_ms, char* why, size_t why_bytes) {
    return ostrel::c::call(why, why_bytes, [&]() -> int {
        const std::shared_ptr<ostrel::c::Object> object = ostrel::c::objectOf(handle);
        const ostrel::c::Turn turn(*object);
        const int answer =
            ostrel::c::waitUnlessClosed(*object, timeout_ms, [&](int slice) { return object->wait(slice); });
        return answer == 0 ? OSTREL_NOTHING : OSTREL_OK;
    });
}
