// A machine that has the cameras of a test's making instead of its own, and the virtual ones that are
// attached.
#ifndef OSTREL_TESTS_SUPPORT_MACHINE_H
#define OSTREL_TESTS_SUPPORT_MACHINE_H

#include "platform/cameras/registry.h"
#include "platform/cameras/virtual/virtual_provider.h"

#include <memory>

namespace ostrel::support {

// For as long as it lives. Null: none.
class Machine {
public:
    explicit Machine(const std::shared_ptr<cameras::CameraProvider>& own = nullptr)
        : before_(cameras::setProviders(with(own))) {}
    ~Machine() { cameras::setProviders(before_); }
    Machine(const Machine&) = delete;
    Machine& operator=(const Machine&) = delete;

    void has(const std::shared_ptr<cameras::CameraProvider>& own) { cameras::setProviders(with(own)); }

private:
    static cameras::Providers with(const std::shared_ptr<cameras::CameraProvider>& own) {
        cameras::Providers providers;
        if (own)
            providers.push_back(own);
        providers.push_back(cameras::virtualProvider());
        return providers;
    }

    const cameras::Providers before_;
};

} // namespace ostrel::support

#endif
