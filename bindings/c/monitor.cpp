// Being told of cameras that come and go.
#include "bindings/c/camera_items.h"
#include "bindings/c/lists.h"

#include "base/qt_text.h"

#include <ostrel/device_monitor.h>

namespace ostrel {
namespace c {

namespace {

class Monitor : public Object {
public:
    int descriptor() override { return descriptor_; }
    int wait(int timeoutMs) override {
        QString why;
        const int answer = monitor.wait(timeoutMs, &why);
        if (answer < 0)
            throw Failure(OSTREL_OVER, utf8Of(why));
        return answer;
    }

    OVideoDeviceMonitor monitor;

private:
    const int descriptor_ = monitor.descriptor();
};

} // namespace

} // namespace c
} // namespace ostrel

using namespace ostrel;
using namespace ostrel::c;

extern "C" int ostrel_monitor(ostrel_handle* monitor, char* why, size_t why_bytes) {
    return call(why, why_bytes, [&] {
        ostrel_handle& to = required(monitor, "The place for the handle");
        to = addHandle(std::make_shared<Monitor>());
        return OSTREL_OK;
    });
}

extern "C" int ostrel_monitor_cameras(ostrel_handle monitor, ostrel_handle* list, size_t* count, char* why,
                                      size_t why_bytes) {
    return call(why, why_bytes, [&] {
        const ListAnswer answer(list, count);
        const auto object = objectOf<Monitor>(monitor, "a monitor");
        const Turn turn(*object);
        return answer.give(itemsOf(object->monitor.cameras()));
    });
}

extern "C" int ostrel_take_changes(ostrel_handle monitor, ostrel_handle* list, size_t* count, char* why,
                                   size_t why_bytes) {
    return call(why, why_bytes, [&] {
        const ListAnswer answer(list, count);
        const auto object = objectOf<Monitor>(monitor, "a monitor");
        const Turn turn(*object);
        const QList<OVideoDeviceChange> changes = object->monitor.take();
        return answer.give(std::vector<OVideoDeviceChange>(changes.begin(), changes.end()));
    });
}

extern "C" int ostrel_change_at(ostrel_handle list, size_t index, ostrel_change_info* change, char* why,
                                size_t why_bytes) {
    return call(why, why_bytes, [&] {
        return giveItem<OVideoDeviceChange>(list, index, change, "a list of changes",
                                            [](const OVideoDeviceChange& from, ostrel_change_info& info) {
                                                info.kind = from.kind();
                                                copyText(from.uniqueID(), info.id);
                                                copyText(from.name(), info.name);
                                            });
    });
}
