#include "apps/camera/control_list.h"

#include "apps/camera/table.h"
#include "apps/common/control_names.h"
#include "apps/common/text.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

namespace ostrel::apps::cli {

namespace {

std::string rangeOf(const OVideoControl& control) {
    switch (control.type()) {
    case OVideoControl::BUTTON:
        return "button";
    case OVideoControl::BOOLEAN:
        return "on, off";
    case OVideoControl::MENU:
    case OVideoControl::INTEGER_MENU: {
        std::vector<std::string> items;
        const QList<int> values = control.items().keys();
        for (const int value : values)
            items.push_back(valueText(control, value));
        return join(items, ", ");
    }
    case OVideoControl::TEXT:
        return "text of up to " + counted(static_cast<unsigned long long>(control.maximum()), "byte");
    case OVideoControl::BITMASK:
        return "bits of " + valueText(control, control.maximum());
    default:
        break;
    }
    std::string range =
        valueText(control, control.minimum()) + " to " + valueText(control, control.maximum());
    if (control.step() > 1)
        range += " by " + std::to_string(static_cast<long long>(control.step()));
    return range;
}

bool hasDefault(const OVideoControl& control) {
    return control.type() != OVideoControl::BUTTON && control.type() != OVideoControl::TEXT;
}

std::string stateOf(const OVideoControl& control, const QList<OVideoControl>& all) {
    std::vector<std::string> state;
    const int automatic = findControl(all, control.automaticControl());
    if (control.isInactive())
        state.push_back(automatic < 0 ? "inactive" : controlKey(all[automatic]) + " has the say");
    if (control.isReadOnly())
        state.emplace_back("read only");
    if (control.isGrabbed())
        state.emplace_back("in use");
    return join(state, ", ");
}

const char* typeName(const OVideoControl& control) {
    switch (control.type()) {
    case OVideoControl::INTEGER:
        return "integer";
    case OVideoControl::BOOLEAN:
        return "boolean";
    case OVideoControl::MENU:
        return "menu";
    case OVideoControl::BUTTON:
        return "button";
    case OVideoControl::INTEGER64:
        return "integer64";
    case OVideoControl::TEXT:
        return "text";
    case OVideoControl::BITMASK:
        return "bitmask";
    case OVideoControl::INTEGER_MENU:
        return "integer menu";
    }
    return "unknown";
}

QJsonValue number(int64_t value) {
    return QJsonValue(static_cast<qint64>(value));
}

QJsonObject objectOf(const OVideoControl& control, const QList<OVideoControl>& all) {
    QJsonObject object{{"name", QString::fromStdString(controlKey(control))},
                       {"label", control.name()},
                       {"id", number(control.id())},
                       {"type", typeName(control)},
                       {"minimum", number(control.minimum())},
                       {"maximum", number(control.maximum())},
                       {"step", number(control.step())},
                       {"inactive", control.isInactive()},
                       {"readOnly", control.isReadOnly()},
                       {"volatile", control.isVolatile()},
                       {"grabbed", control.isGrabbed()}};
    if (hasDefault(control))
        object["default"] = number(control.defaultValue());
    if (control.hasValue())
        object["value"] =
            control.type() == OVideoControl::TEXT ? QJsonValue(control.text()) : number(control.value());
    const int automatic = findControl(all, control.automaticControl());
    if (automatic >= 0)
        object["automatic"] = QString::fromStdString(controlKey(all[automatic]));
    const QMap<int, QString> items = control.items();
    QJsonArray menu;
    for (auto item = items.begin(); item != items.end(); ++item)
        menu.append(QJsonObject{{"value", item.key()}, {"name", item.value()}});
    if (!menu.isEmpty())
        object["items"] = menu;
    return object;
}

} // namespace

std::string controlTable(const QList<OVideoControl>& controls) {
    std::vector<Row> rows = {{"NAME", "VALUE", "DEFAULT", "RANGE", "STATE"}};
    for (const OVideoControl& control : controls)
        rows.push_back({controlKey(control), valueText(control),
                        hasDefault(control) ? valueText(control, control.defaultValue()) : "-",
                        rangeOf(control), stateOf(control, controls)});
    return aligned(rows);
}

std::string controlJson(const QList<OVideoControl>& controls) {
    QJsonArray array;
    for (const OVideoControl& control : controls)
        array.append(objectOf(control, controls));
    return QJsonDocument(array).toJson().toStdString();
}

} // namespace ostrel::apps::cli
