// libpipewire, loaded when a daemon is there to be asked: no machine need have it.
#ifndef OSTREL_PLATFORM_CAMERAS_PIPEWIRE_LIBRARY_H
#define OSTREL_PLATFORM_CAMERAS_PIPEWIRE_LIBRARY_H

#include <memory>
#include <pipewire/pipewire.h>

namespace ostrel {
namespace cameras {
namespace pipewire {

// Its functions under their names; what its headers define inline comes with them. Once loaded it stays: it
// has threads and tables that nothing takes back.
struct Library {
    decltype(&::pw_init) pw_init;
    decltype(&::pw_properties_new) pw_properties_new;
    decltype(&::pw_thread_loop_new) pw_thread_loop_new;
    decltype(&::pw_thread_loop_destroy) pw_thread_loop_destroy;
    decltype(&::pw_thread_loop_get_loop) pw_thread_loop_get_loop;
    decltype(&::pw_thread_loop_start) pw_thread_loop_start;
    decltype(&::pw_thread_loop_stop) pw_thread_loop_stop;
    decltype(&::pw_thread_loop_lock) pw_thread_loop_lock;
    decltype(&::pw_thread_loop_unlock) pw_thread_loop_unlock;
    decltype(&::pw_context_new) pw_context_new;
    decltype(&::pw_context_destroy) pw_context_destroy;
    decltype(&::pw_context_connect_fd) pw_context_connect_fd;
    decltype(&::pw_core_disconnect) pw_core_disconnect;
    decltype(&::pw_proxy_destroy) pw_proxy_destroy;
    decltype(&::pw_stream_new) pw_stream_new;
    decltype(&::pw_stream_destroy) pw_stream_destroy;
    decltype(&::pw_stream_add_listener) pw_stream_add_listener;
    decltype(&::pw_stream_connect) pw_stream_connect;
    decltype(&::pw_stream_get_node_id) pw_stream_get_node_id;
    decltype(&::pw_stream_set_error) pw_stream_set_error;
    decltype(&::pw_stream_update_params) pw_stream_update_params;
    decltype(&::pw_stream_dequeue_buffer) pw_stream_dequeue_buffer;
    decltype(&::pw_stream_queue_buffer) pw_stream_queue_buffer;
};

// Null when there is no such file, or it lacks a function.
std::unique_ptr<const Library> loadLibrary(const char* file);

// This machine's, loaded at the first call that finds it; null when it has none. Any thread.
const Library* systemLibrary();

} // namespace pipewire
} // namespace cameras
} // namespace ostrel

#endif
