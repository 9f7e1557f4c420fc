#include "platform/cameras/pipewire/connection.h"

#include "base/monotonic_clock.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <new>
#include <unistd.h>

namespace ostrel {
namespace cameras {
namespace pipewire {

namespace {

uint32_t number(const spa_dict* properties, const char* key) {
    const std::string digits = text(properties, key);
    return digits.empty() ? SPA_ID_INVALID : static_cast<uint32_t>(std::strtoul(digits.c_str(), nullptr, 10));
}

bool is(const char* type, const char* interface) {
    return std::strcmp(type, interface) == 0;
}

// Programs that connect cameras with who wants them.
bool isSessionManager(const std::string& program) {
    return program.compare(0, 11, "WirePlumber") == 0 || program == "pipewire-media-session";
}

// libpipewire cannot be thrown through. What there is no memory for stays unknown.
template <typename Body>
void guarded(Body body) noexcept {
    try {
        body();
    } catch (const std::bad_alloc&) {
    }
}

template <typename Value>
std::unique_ptr<Value> taken(std::map<uint32_t, std::unique_ptr<Value>>& from, uint32_t id) {
    std::unique_ptr<Value> result;
    const auto found = from.find(id);
    if (found != from.end()) {
        result = std::move(found->second);
        from.erase(found);
    }
    return result;
}

std::chrono::steady_clock::time_point timePoint(int64_t monotonic) {
    return std::chrono::steady_clock::time_point(std::chrono::nanoseconds(monotonic));
}

} // namespace

// A node or a device whose words are listened to.
struct Connection::Bound {
    Bound(Connection& of, pw_proxy* bound) : connection(of), proxy(bound) {}
    ~Bound() {
        if (proxy)
            connection.library_.pw_proxy_destroy(proxy);
    }
    Bound(const Bound&) = delete;
    Bound& operator=(const Bound&) = delete;

    Connection& connection;
    pw_proxy* const proxy;
    spa_hook listener = {};
    CameraNode camera; // of a node
    uint32_t device = SPA_ID_INVALID;
    std::string deviceNumbers; // of a device
    CameraDetails details;
    std::map<int, std::vector<Offer>> answers; // of a node, as they come, by the number of the question
};

Connection::Connection(const Library& library) : library_(library) {}

std::shared_ptr<Connection> Connection::make(const Library& library, int descriptor) {
    const std::shared_ptr<Connection> connection(new Connection(library));
    if (const int error = connection->begin(descriptor)) {
        errno = error;
        return nullptr;
    }
    return connection;
}

int Connection::begin(int descriptor) {
    loop_ = library_.pw_thread_loop_new("ostrel-pw-loop", nullptr);
    // Newer client configurations would make its threads real-time ones, and speak to D-Bus for it.
    if (loop_)
        context_ = library_.pw_context_new(library_.pw_thread_loop_get_loop(loop_),
                                           library_.pw_properties_new("module.rt", "false", nullptr), 0);
    if (!context_ || library_.pw_thread_loop_start(loop_) < 0) {
        const int error = errno;
        ::close(descriptor);
        return error ? error : EAGAIN;
    }
    const Lock lock(*this);
    core_ = library_.pw_context_connect_fd(context_, descriptor, nullptr, 0); // owns it, also when it fails
    if (!core_)
        return errno;
    static const pw_core_events onCore = [] {
        pw_core_events events = {};
        events.version = PW_VERSION_CORE_EVENTS;
        events.info = onCoreInfo;
        events.done = onDone;
        events.error = onError;
        return events;
    }();
    pw_core_add_listener(core_, &coreListener_, &onCore, this);
    registry_ = pw_core_get_registry(core_, PW_VERSION_REGISTRY, 0);
    if (!registry_)
        return errno;
    static const pw_registry_events onRegistry = [] {
        pw_registry_events events = {};
        events.version = PW_VERSION_REGISTRY_EVENTS;
        events.global = onGlobal;
        events.global_remove = onGlobalRemove;
        return events;
    }();
    pw_registry_add_listener(registry_, &registryListener_, &onRegistry, this);
    return 0;
}

Connection::~Connection() {
    if (!loop_)
        return;
    // While the loop still runs: to a loop that has stopped, callbacks belong to any thread.
    {
        const Lock lock(*this);
        nodes_.clear();
        devices_.clear();
        if (registry_)
            library_.pw_proxy_destroy(reinterpret_cast<pw_proxy*>(registry_));
        if (core_)
            library_.pw_core_disconnect(core_);
    }
    library_.pw_thread_loop_stop(loop_);
    if (context_)
        library_.pw_context_destroy(context_);
    library_.pw_thread_loop_destroy(loop_);
}

pw_proxy* Connection::bind(uint32_t id, const char* type, uint32_t version) {
    return static_cast<pw_proxy*>(pw_registry_bind(registry_, id, type, version, 0));
}

template <typename Tell>
void Connection::tell(Tell tellOne) {
    const std::set<Watcher*> now = watchers_; // who is told may leave
    for (Watcher* watcher : now)
        if (watchers_.count(watcher))
            tellOne(*watcher);
}

void Connection::onCoreInfo(void* data, const pw_core_info* info) {
    auto& self = *static_cast<Connection*>(data);
    guarded([&] {
        const std::lock_guard<std::mutex> lock(self.mutex_);
        if (info->version)
            self.version_ = info->version;
    });
}

void Connection::onDone(void* data, uint32_t id, int sequence) {
    auto& self = *static_cast<Connection*>(data);
    if (id != PW_ID_CORE)
        return;
    const std::lock_guard<std::mutex> lock(self.mutex_);
    self.awaited_.erase(sequence);
    self.changed_.notify_all();
}

void Connection::onError(void* data, uint32_t id, int, int result, const char*) {
    if (id != PW_ID_CORE || result != -EPIPE)
        return; // of a node that went away meanwhile, for example
    auto& self = *static_cast<Connection*>(data);
    {
        const std::lock_guard<std::mutex> lock(self.mutex_);
        self.over_ = true;
        self.changed_.notify_all();
    }
    guarded([&] { self.tell([](Watcher& watcher) { watcher.connectionLost(); }); });
}

void Connection::onGlobal(void* data, uint32_t id, uint32_t, const char* type, uint32_t,
                          const spa_dict* properties) {
    guarded([&] { static_cast<Connection*>(data)->take(id, type, properties); });
}

void Connection::take(uint32_t id, const char* type, const spa_dict* properties) {
    if (is(type, PW_TYPE_INTERFACE_Node)) {
        if (text(properties, PW_KEY_MEDIA_CLASS) != "Video/Source")
            return;
        if (text(properties, PW_KEY_MEDIA_ROLE) == "Camera")
            return bindNode(id, properties);
        const std::lock_guard<std::mutex> lock(mutex_);
        sources_.insert(id);
    } else if (is(type, PW_TYPE_INTERFACE_Link)) {
        const Link link = {number(properties, PW_KEY_LINK_OUTPUT_NODE),
                           number(properties, PW_KEY_LINK_INPUT_NODE)};
        {
            const std::lock_guard<std::mutex> lock(mutex_);
            links_[id] = link;
        }
        tell([&](Watcher& watcher) { watcher.linkCame(id, link.from, link.to); });
    } else if (is(type, PW_TYPE_INTERFACE_Client) && isSessionManager(text(properties, PW_KEY_APP_NAME))) {
        const std::lock_guard<std::mutex> lock(mutex_);
        managers_.insert(id);
    }
}

void Connection::onGlobalRemove(void* data, uint32_t id) {
    auto& self = *static_cast<Connection*>(data);
    std::unique_ptr<Bound> node, device; // whose end calls libpipewire
    {
        const std::lock_guard<std::mutex> lock(self.mutex_);
        node = taken(self.nodes_, id);
        device = taken(self.devices_, id);
        self.links_.erase(id);
        self.sources_.erase(id);
        self.managers_.erase(id);
    }
    if (!node)
        return;
    guarded([&] {
        self.tell([&](Watcher& watcher) {
            watcher.nodeLeft(id);
            watcher.camerasChanged();
        });
    });
}

void Connection::bindNode(uint32_t id, const spa_dict* properties) {
    pw_proxy* const proxy = bind(id, PW_TYPE_INTERFACE_Node, PW_VERSION_NODE);
    if (!proxy)
        return;
    auto node = std::make_unique<Bound>(*this, proxy);
    node->camera.id = id;
    node->camera.serial = text(properties, PW_KEY_OBJECT_SERIAL);
    static const pw_node_events events = [] {
        pw_node_events all = {};
        all.version = PW_VERSION_NODE_EVENTS;
        all.info = onNodeInfo;
        all.param = onNodeParam;
        return all;
    }();
    pw_node_add_listener(reinterpret_cast<pw_node*>(proxy), &node->listener, &events, node.get());
    const std::lock_guard<std::mutex> lock(mutex_);
    nodes_[id] = std::move(node);
}

void Connection::bindDevice(uint32_t id) {
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        if (id == SPA_ID_INVALID || devices_.count(id))
            return;
    }
    pw_proxy* const proxy = bind(id, PW_TYPE_INTERFACE_Device, PW_VERSION_DEVICE);
    if (!proxy)
        return;
    auto device = std::make_unique<Bound>(*this, proxy);
    static const pw_device_events events = [] {
        pw_device_events all = {};
        all.version = PW_VERSION_DEVICE_EVENTS;
        all.info = onDeviceInfo;
        return all;
    }();
    pw_device_add_listener(reinterpret_cast<pw_device*>(proxy), &device->listener, &events, device.get());
    const std::lock_guard<std::mutex> lock(mutex_);
    devices_[id] = std::move(device);
}

void Connection::onNodeInfo(void* data, const pw_node_info* info) {
    guarded([&] { describe(*static_cast<Bound*>(data), info); });
}

void Connection::describe(Bound& node, const pw_node_info* info) {
    uint32_t device = SPA_ID_INVALID;
    {
        const std::lock_guard<std::mutex> lock(node.connection.mutex_);
        node.camera.inUse = info->state == PW_NODE_STATE_RUNNING || info->state == PW_NODE_STATE_IDLE;
        if (!(info->change_mask & PW_NODE_CHANGE_MASK_PROPS))
            return;
        node.camera.name = text(info->props, PW_KEY_NODE_NAME);
        node.camera.description = text(info->props, PW_KEY_NODE_DESCRIPTION);
        node.camera.v4l2Path = text(info->props, "api.v4l2.path");
        node.camera.details = readDetails(info->props);
        device = node.device = number(info->props, PW_KEY_DEVICE_ID);
    }
    node.connection.bindDevice(device);
    node.connection.tell([](Watcher& watcher) { watcher.camerasChanged(); });
}

void Connection::onDeviceInfo(void* data, const pw_device_info* info) {
    auto& device = *static_cast<Bound*>(data);
    if (!(info->change_mask & PW_DEVICE_CHANGE_MASK_PROPS))
        return;
    guarded([&] {
        {
            const std::lock_guard<std::mutex> lock(device.connection.mutex_);
            device.deviceNumbers = text(info->props, "device.devids");
            device.details = readDetails(info->props);
        }
        device.connection.tell([](Watcher& watcher) { watcher.camerasChanged(); });
    });
}

void Connection::onNodeParam(void* data, int question, uint32_t, uint32_t, uint32_t, const spa_pod* param) {
    auto& node = *static_cast<Bound*>(data);
    guarded([&] {
        const std::lock_guard<std::mutex> lock(node.connection.mutex_);
        const auto answer = node.answers.find(question);
        if (answer != node.answers.end())
            addOffers(param, answer->second);
    });
}

// The daemon answers in order: with the answer to this everything has arrived that it said before.
int Connection::roundTrip(int64_t deadline) {
    int sequence = 0;
    {
        const Lock loop(*this);
        sequence = pw_core_sync(core_, PW_ID_CORE, 0);
        const std::lock_guard<std::mutex> lock(mutex_);
        awaited_.insert(sequence);
    }
    std::unique_lock<std::mutex> lock(mutex_);
    const bool answered = changed_.wait_until(lock, timePoint(deadline),
                                              [&] { return over_ || awaited_.count(sequence) == 0; });
    awaited_.erase(sequence);
    if (over_)
        return EPIPE;
    return answered ? 0 : ETIMEDOUT;
}

int Connection::settle(int64_t deadline) {
    // What there is, of which nodes are bound as it arrives; what these say of themselves, of which devices
    // are bound; what those say.
    for (int step = 0; step < 3; ++step)
        if (const int error = roundTrip(deadline))
            return error;
    return 0;
}

std::vector<CameraNode> Connection::cameras() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    std::vector<CameraNode> all;
    if (over_)
        return all;
    for (const auto& node : nodes_) {
        all.push_back(node.second->camera);
        const auto device = devices_.find(node.second->device);
        if (device != devices_.end()) {
            all.back().deviceNumbers = device->second->deviceNumbers;
            complete(all.back().details, device->second->details);
        }
    }
    return all;
}

bool Connection::has(const std::string& serial) const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return !over_ && std::any_of(nodes_.begin(), nodes_.end(),
                                 [&](const auto& node) { return node.second->camera.serial == serial; });
}

int Connection::otherSources() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return static_cast<int>(sources_.size());
}

bool Connection::hasSessionManager() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return !managers_.empty();
}

std::string Connection::version() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return version_;
}

bool Connection::isOver() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return over_;
}

int Connection::ask(const std::string& serial, int64_t deadline, std::vector<Offer>& offers) {
    uint32_t id = SPA_ID_INVALID;
    int question = 0;
    {
        const Lock loop(*this); // so that the node stays, and no answer comes before it is expected
        Bound* node = nullptr;
        {
            const std::lock_guard<std::mutex> lock(mutex_);
            for (const auto& one : nodes_)
                if (one.second->camera.serial == serial) {
                    id = one.first;
                    node = one.second.get();
                }
        }
        if (!node)
            return ENODEV;
        question = pw_node_enum_params(reinterpret_cast<pw_node*>(node->proxy), 0, SPA_PARAM_EnumFormat, 0,
                                       UINT32_MAX, nullptr);
        const std::lock_guard<std::mutex> lock(mutex_);
        node->answers[question].clear();
    }
    int error = roundTrip(deadline);
    const std::lock_guard<std::mutex> lock(mutex_);
    const auto node = nodes_.find(id);
    if (node == nodes_.end())
        return error ? error : ENODEV;
    offers = std::move(node->second->answers[question]);
    node->second->answers.erase(question);
    return error;
}

void Connection::suspend(uint32_t node, uint32_t consumer, int64_t deadline) noexcept {
    {
        const Lock loop(*this); // so that the node stays
        pw_proxy* proxy = nullptr;
        {
            const std::lock_guard<std::mutex> lock(mutex_);
            const auto found = nodes_.find(node);
            const bool inUse = std::any_of(links_.begin(), links_.end(), [&](const auto& link) {
                return link.second.from == node && link.second.to != consumer;
            });
            if (over_ || found == nodes_.end() || inUse)
                return;
            proxy = found->second->proxy;
        }
        const spa_command command = SPA_NODE_COMMAND_INIT(SPA_NODE_COMMAND_Suspend);
        pw_node_send_command(reinterpret_cast<pw_node*>(proxy), &command);
    }
    guarded([&] { roundTrip(deadline); });
}

int Connection::consumers(uint32_t node) const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return static_cast<int>(std::count_if(links_.begin(), links_.end(),
                                          [&](const auto& link) { return link.second.from == node; }));
}

} // namespace pipewire
} // namespace cameras
} // namespace ostrel
