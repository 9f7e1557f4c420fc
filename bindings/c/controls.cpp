// A camera's controls.
#include "bindings/c/lists.h"

#include "base/qt_text.h"

#include <ostrel/controls.h>

namespace ostrel {
namespace c {

namespace {

const char* const LIST = "a list of controls";

class Watch : public Object {
public:
    explicit Watch(const QString& id) : watch(id) {
        if (!watch.error().isEmpty())
            throw Failure(OSTREL_REFUSED, utf8Of(watch.error()));
    }

    int descriptor() override { return watch.descriptor(); }
    int wait(int timeoutMs) override {
        const int answer = watch.wait(timeoutMs);
        if (answer < 0)
            throw Failure(OSTREL_OVER, utf8Of(watch.error()));
        return answer;
    }

    OVideoControlWatch watch;
};

void describe(const OVideoControl& control, ostrel_control_info& info) {
    info.minimum = control.minimum();
    info.maximum = control.maximum();
    info.step = control.step();
    info.default_value = control.defaultValue();
    info.value = control.value();
    info.id = control.id();
    info.automatic = control.automaticControl();
    info.type = control.type();
    info.items = static_cast<int32_t>(control.items().size());
    info.has_value = control.hasValue() ? 1 : 0;
    info.inactive = control.isInactive() ? 1 : 0;
    info.read_only = control.isReadOnly() ? 1 : 0;
    info.is_volatile = control.isVolatile() ? 1 : 0;
    info.grabbed = control.isGrabbed() ? 1 : 0;
    copyText(control.name(), info.name);
    copyText(control.text(), info.text);
}

int giveControls(const ListAnswer& answer, const QList<OVideoControl>& controls) {
    return answer.give(std::vector<OVideoControl>(controls.begin(), controls.end()));
}

} // namespace

} // namespace c
} // namespace ostrel

using namespace ostrel;
using namespace ostrel::c;

extern "C" int ostrel_controls(const char* id, ostrel_handle* list, size_t* count, char* why,
                               size_t why_bytes) {
    return call(why, why_bytes, [&] {
        const ListAnswer answer(list, count);
        QString words;
        const QList<OVideoControl> controls = videoControls(requiredText(id, "The identifier"), &words);
        giveWords(utf8Of(words).c_str(), why, why_bytes);
        return giveControls(answer, controls);
    });
}

extern "C" int ostrel_control_at(ostrel_handle list, size_t index, ostrel_control_info* control, char* why,
                                 size_t why_bytes) {
    return call(why, why_bytes,
                [&] { return giveItem<OVideoControl>(list, index, control, LIST, describe); });
}

extern "C" int ostrel_control_item(ostrel_handle list, size_t index, size_t item, int64_t* value, char* name,
                                   size_t name_bytes, char* why, size_t why_bytes) {
    return call(why, why_bytes, [&] {
        int64_t& to = required(value, "The place for the value");
        const QMap<int, QString> items = objectOf<List<OVideoControl>>(list, LIST)->at(index).items();
        if (item >= static_cast<size_t>(items.size()))
            throw Failure(OSTREL_NOTHING, "The menu ends before");
        const auto found = std::next(items.begin(), static_cast<ptrdiff_t>(item));
        to = found.key();
        copyText(utf8Of(found.value()), name, name_bytes);
        return OSTREL_OK;
    });
}

extern "C" int ostrel_set_controls(const char* id, const uint32_t* controls, const int64_t* values,
                                   const char* const* texts, size_t count, char* why, size_t why_bytes) {
    return call(why, why_bytes, [&] {
        QList<OVideoControl> settings;
        for (size_t i = 0; i < count; ++i) {
            OVideoControl setting((&required(controls, "The list of controls"))[i]);
            setting.setValue((&required(values, "The list of values"))[i]);
            if (texts && texts[i])
                setting.setText(QString::fromUtf8(texts[i]));
            settings.append(setting);
        }
        QString words;
        if (!setVideoControls(requiredText(id, "The identifier"), settings, &words))
            throw Failure(OSTREL_REFUSED, utf8Of(words));
        giveWords(utf8Of(words).c_str(), why, why_bytes);
        return OSTREL_OK;
    });
}

extern "C" int ostrel_watch_controls(const char* id, ostrel_handle* watch, char* why, size_t why_bytes) {
    return call(why, why_bytes, [&] {
        ostrel_handle& to = required(watch, "The place for the handle");
        to = addHandle(std::make_shared<Watch>(requiredText(id, "The identifier")));
        return OSTREL_OK;
    });
}

extern "C" int ostrel_take_controls(ostrel_handle watch, ostrel_handle* list, size_t* count, char* why,
                                    size_t why_bytes) {
    return call(why, why_bytes, [&] {
        const ListAnswer answer(list, count);
        const auto object = objectOf<Watch>(watch, "a watch of controls");
        const Turn turn(*object);
        return giveControls(answer, object->watch.take());
    });
}
