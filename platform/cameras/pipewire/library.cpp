#include "platform/cameras/pipewire/library.h"

#include <dlfcn.h>

namespace ostrel {
namespace cameras {
namespace pipewire {

namespace {

template <typename Function>
bool find(void* file, const char* name, Function& function) {
    function = reinterpret_cast<Function>(::dlsym(file, name));
    return function != nullptr;
}

bool findAll(void* file, Library& all) {
#define OSTREL_FIND(name) find(file, #name, all.name)
    return OSTREL_FIND(pw_init) && OSTREL_FIND(pw_properties_new) && OSTREL_FIND(pw_thread_loop_new) &&
           OSTREL_FIND(pw_thread_loop_destroy) && OSTREL_FIND(pw_thread_loop_get_loop) &&
           OSTREL_FIND(pw_thread_loop_start) && OSTREL_FIND(pw_thread_loop_stop) &&
           OSTREL_FIND(pw_thread_loop_lock) && OSTREL_FIND(pw_thread_loop_unlock) &&
           OSTREL_FIND(pw_context_new) && OSTREL_FIND(pw_context_destroy) &&
           OSTREL_FIND(pw_context_connect_fd) && OSTREL_FIND(pw_core_disconnect) &&
           OSTREL_FIND(pw_proxy_destroy) && OSTREL_FIND(pw_stream_new) && OSTREL_FIND(pw_stream_destroy) &&
           OSTREL_FIND(pw_stream_add_listener) && OSTREL_FIND(pw_stream_connect) &&
           OSTREL_FIND(pw_stream_get_node_id) && OSTREL_FIND(pw_stream_set_error) &&
           OSTREL_FIND(pw_stream_update_params) && OSTREL_FIND(pw_stream_dequeue_buffer) &&
           OSTREL_FIND(pw_stream_queue_buffer);
#undef OSTREL_FIND
}

} // namespace

std::unique_ptr<const Library> loadLibrary(const char* file) {
    void* const loaded = ::dlopen(file, RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
    auto library = std::make_unique<Library>();
    if (!loaded || !findAll(loaded, *library))
        return nullptr;
    library->pw_init(nullptr, nullptr);
    return library;
}

const Library* systemLibrary() {
    static const Library* const library = loadLibrary("libpipewire-0.3.so.0").release();
    return library;
}

} // namespace pipewire
} // namespace cameras
} // namespace ostrel
