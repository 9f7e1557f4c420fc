#include "platform/cameras/pipewire/daemon_watch.h"

#include "platform/cameras/descriptor_set.h"
#include "platform/cameras/folder_events.h"
#include "platform/cameras/pipewire/daemon.h"
#include "platform/cameras/pipewire/remote.h"
#include "platform/cameras/ticker.h"

#include <algorithm>
#include <cerrno>
#include <new>
#include <string>
#include <sys/types.h>
#include <unistd.h>
#include <vector>

namespace ostrel {
namespace cameras {
namespace pipewire {

namespace {

bool exists(const std::string& path) {
    return ::access(path.c_str(), F_OK) == 0;
}

// Whether something has come to a path of which the end, or more, was missing.
class PathWatch {
public:
    explicit PathWatch(const std::string& path) {
        // Where the next part has come while its folder was being looked at, it is looked at in its turn.
        for (int tries = 0; tries < 3 && (!events_ || isFolder(next_)); ++tries)
            watchNearest(path);
    }

    // Else something may come unnoticed.
    bool isComplete() const { return events_->watches() && !isFolder(next_); }
    int descriptor() const { return events_->descriptor(); }
    bool changed() { return events_->changed(); }

private:
    static bool isFolder(const std::string& path) { return exists(path + "/."); }

    void watchNearest(const std::string& path) {
        size_t end = path.size();
        do {
            const size_t slash = path.rfind('/', end - 1);
            const std::string name = path.substr(slash + 1, end - slash - 1);
            next_ = path.substr(0, end);
            events_ = std::make_unique<FolderEvents>(path.substr(0, std::max<size_t>(slash, 1)),
                                                     [name](const char* one) { return name == one; });
            end = slash;
        } while (!events_->watches() && end > 0 && end != std::string::npos);
    }

    std::string next_; // what is waited for
    std::unique_ptr<FolderEvents> events_;
};

class DaemonWatch : public ChangeWatch, private Watcher {
public:
    explicit DaemonWatch(std::shared_ptr<Remote> remote)
        : remote_(std::move(remote)), told_(remote_->changes().watch()) {
        complete_ = set_.add(told_->descriptor());
        complete_ = set_.add(looks_.descriptor()) && complete_;
        watchSockets();
        follow();
        rest();
    }
    ~DaemonWatch() override {
        if (::getpid() == process_)
            leave();
        else // a child has none of the threads that its end would wait for
            static_cast<void>(new (std::nothrow) std::shared_ptr<Connection>(std::move(connection_)));
    }
    DaemonWatch(const DaemonWatch&) = delete;
    DaemonWatch& operator=(const DaemonWatch&) = delete;

    int descriptor() const override { return complete_ ? set_.descriptor() : -1; }

    bool changed() override {
        bool any = told_->changed();
        looks_.clear();
        if (connection_ && connection_->isOver()) { // who goes again and again is not run after
            leave();
            watchSockets();
            any = true;
        } else {
            if (!connection_ && socketsChanged())
                watchSockets();
            any = follow() || any;
        }
        any = any || (wasSilent_ && !remote_->isSilent());
        rest();
        return any;
    }

private:
    void camerasChanged() override { remote_->changes().raise(); }
    void connectionLost() override { remote_->changes().raise(); }

    void leave() {
        if (!connection_)
            return;
        {
            const Connection::Lock loop(*connection_);
            connection_->remove(this);
        }
        connection_.reset();
    }

    // Whether the connection is now another one. After the sockets are watched: what comes in between is
    // seen.
    bool follow() {
        std::shared_ptr<Connection> now = remote_->connect();
        error_ = now ? 0 : errno;
        if (now == connection_ || error_ == ETIMEDOUT) // who does not answer has not gone
            return false;
        leave();
        connection_ = std::move(now);
        if (connection_) {
            const Connection::Lock loop(*connection_);
            connection_->add(this);
        }
        if (connection_ && connection_->isOver()) // before anybody listened
            remote_->changes().raise();
        return true;
    }

    void watchSockets() {
        sockets_.clear();
        for (const std::string& path : daemonSockets())
            sockets_.push_back(std::make_unique<PathWatch>(path));
    }

    bool socketsChanged() {
        bool any = false;
        for (const auto& one : sockets_)
            any = one->changed() || any;
        return any;
    }

    // Arranges for what wakes it next.
    void rest() {
        if (connection_)
            sockets_.clear();
        else if (sockets_.empty())
            watchSockets();
        bool told = true;
        for (const auto& one : sockets_)
            told = set_.add(one->descriptor()) && one->isComplete() && told;
        const auto paths = daemonSockets();
        const bool nobodyAnswers = std::any_of(paths.begin(), paths.end(), exists);
        const bool inVain = error_ == ENOPKG || error_ == EPIPE; // until something else is handed over
        wasSilent_ = remote_->isSilent();
        looks_.switchOn(wasSilent_ || (!connection_ && !inVain && (!told || nobodyAnswers)));
    }

    const pid_t process_ = ::getpid();
    const std::shared_ptr<Remote> remote_;
    const std::unique_ptr<ChangeWatch> told_;
    Ticker looks_;
    std::vector<std::unique_ptr<PathWatch>> sockets_; // while there is no connection
    DescriptorSet set_;                               // after what is in it
    bool complete_ = false;
    std::shared_ptr<Connection> connection_;
    int error_ = 0; // why there is none
    bool wasSilent_ = false;
};

} // namespace

std::unique_ptr<ChangeWatch> watchDaemon(std::shared_ptr<Remote> remote) {
    return std::make_unique<DaemonWatch>(std::move(remote));
}

} // namespace pipewire
} // namespace cameras
} // namespace ostrel
