// A connection to a PipeWire daemon, and what it has told of its cameras.
#ifndef OSTREL_PLATFORM_CAMERAS_PIPEWIRE_CONNECTION_H
#define OSTREL_PLATFORM_CAMERAS_PIPEWIRE_CONNECTION_H

#include "platform/cameras/pipewire/camera_node.h"
#include "platform/cameras/pipewire/library.h"
#include "platform/cameras/pipewire/video_formats.h"

#include <condition_variable>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <vector>

namespace ostrel {
namespace cameras {
namespace pipewire {

// Hears of what happens on a connection, on its loop's thread with the loop's lock held: must not wait for
// anybody who takes that lock.
class Watcher {
public:
    virtual ~Watcher() = default;
    // A camera came, left or became known better.
    virtual void camerasChanged() {}
    virtual void nodeLeft(uint32_t) {}
    // Something connects the two nodes.
    virtual void linkCame(uint32_t /*link*/, uint32_t /*from*/, uint32_t /*to*/) {}
    // The daemon has gone; nothing more will come.
    virtual void connectionLost() {}
};

// Thread-safe. Has a thread for its loop and, as long as it lives, one of PipeWire's for data. The last owner
// must not be one of these.
class Connection {
public:
    // Takes the connected socket. Null with errno set when the system gives too little for it. Does not wait.
    static std::shared_ptr<Connection> make(const Library& library, int descriptor);
    ~Connection();
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    // Waits until all that the daemon knew of its cameras at the time of the call has arrived here. 0, or
    // errno: ETIMEDOUT when the time of CLOCK_MONOTONIC (nanoseconds) has come, EPIPE when the daemon has
    // gone.
    int settle(int64_t deadline);
    // What has arrived so far.
    std::vector<CameraNode> cameras() const;
    bool has(const std::string& serial) const;
    int otherSources() const; // pictures of something else: a shared screen
    bool hasSessionManager() const;
    std::string version() const; // of the daemon
    bool isOver() const;         // the daemon has gone

    // Asks a node for the formats that it offers. 0 or errno: ENODEV when there is no such node.
    int ask(const std::string& serial, int64_t deadline, std::vector<Offer>& offers);
    // How many other programs and streams get this node's pictures at present.
    int consumers(uint32_t node) const;
    // Has the node let go of its buffers and its hardware, unless it has consumers besides the one given.
    // Waits until the daemon has heard it, since what is still to be sent is lost with the connection.
    void suspend(uint32_t node, uint32_t consumer, int64_t deadline) noexcept;

    const Library& library() const { return library_; }

    // For everything below: held while libpipewire is called. Never together with a lock that a watcher or a
    // stream's callback takes.
    class Lock {
    public:
        explicit Lock(Connection& connection) : connection_(connection) {
            connection_.library_.pw_thread_loop_lock(connection_.loop_);
        }
        ~Lock() { connection_.library_.pw_thread_loop_unlock(connection_.loop_); }
        Lock(const Lock&) = delete;
        Lock& operator=(const Lock&) = delete;

    private:
        Connection& connection_;
    };
    pw_core* core() { return core_; }
    pw_proxy* bind(uint32_t id, const char* type, uint32_t version);
    void add(Watcher* watcher) { watchers_.insert(watcher); }
    void remove(Watcher* watcher) { watchers_.erase(watcher); }

private:
    struct Bound;
    struct Link {
        uint32_t from, to;
    };

    explicit Connection(const Library& library);
    int begin(int descriptor);
    int roundTrip(int64_t deadline);
    void take(uint32_t id, const char* type, const spa_dict* properties);
    void bindNode(uint32_t id, const spa_dict* properties);
    static void describe(Bound& node, const pw_node_info* info);
    void bindDevice(uint32_t id);
    template <typename Tell>
    void tell(Tell tellOne);

    static void onCoreInfo(void* data, const pw_core_info* info);
    static void onDone(void* data, uint32_t id, int sequence);
    static void onError(void* data, uint32_t id, int, int result, const char*);
    static void onGlobal(void* data, uint32_t id, uint32_t, const char* type, uint32_t,
                         const spa_dict* properties);
    static void onGlobalRemove(void* data, uint32_t id);
    static void onNodeInfo(void* data, const pw_node_info* info);
    static void onNodeParam(void* data, int question, uint32_t, uint32_t, uint32_t, const spa_pod* param);
    static void onDeviceInfo(void* data, const pw_device_info* info);

    const Library& library_;
    pw_thread_loop* loop_ = nullptr;
    pw_context* context_ = nullptr;
    pw_core* core_ = nullptr;
    pw_registry* registry_ = nullptr;
    spa_hook coreListener_ = {};
    spa_hook registryListener_ = {};
    std::set<Watcher*> watchers_; // under the loop's lock

    mutable std::mutex mutex_; // of the rest; taken by callbacks, never held over a call of libpipewire
    std::condition_variable changed_;
    std::set<int> awaited_; // round trips
    bool over_ = false;
    std::string version_;
    std::map<uint32_t, std::unique_ptr<Bound>> nodes_, devices_; // by id
    std::map<uint32_t, Link> links_;
    std::set<uint32_t> sources_, managers_; // the ids of others that are of interest
};

} // namespace pipewire
} // namespace cameras
} // namespace ostrel

#endif
