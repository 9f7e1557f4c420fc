#include "apps/common/control_settings.h"

#include "apps/common/control_names.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QSet>
#include <QtCore/QVariant>

namespace ostrel::apps {

namespace {

bool isSettable(const OVideoControl& control) {
    return !control.isReadOnly() && control.type() != OVideoControl::BUTTON && control.hasValue();
}

bool isAsWanted(const OVideoControl& control, const SavedControl& wanted) {
    return control.hasValue() && control.value() == wanted.value && control.text() == wanted.text;
}

// Those that may have the say over others.
QSet<uint32_t> automaticAmong(const QList<OVideoControl>& controls) {
    QSet<uint32_t> result;
    for (const OVideoControl& control : controls)
        result.insert(control.automaticControl());
    return result;
}

// All at once, else one by one. Those that are as wanted are left out.
void apply(const QString& uniqueID, const QList<OVideoControl>& now, const QList<SavedControl>& wanted,
           QStringList& refused) {
    QList<OVideoControl> values;
    for (const SavedControl& one : wanted) {
        const int found = findControl(now, one.id);
        if (found < 0) {
            refused.append(QString("the camera has no control %1").arg(one.key));
        } else if (!isAsWanted(now[found], one)) {
            values.append(now[found]);
            values.last().setValue(one.value);
            values.last().setText(one.text);
        }
    }
    if (values.isEmpty() || setVideoControls(uniqueID, values))
        return;
    for (const OVideoControl& one : values) {
        QString why;
        if (!setVideoControls(uniqueID, QList<OVideoControl>() << one, &why))
            refused.append(why);
    }
}

QList<OVideoControl> listed(const QString& uniqueID, QStringList& refused) {
    QString why;
    const QList<OVideoControl> controls = videoControls(uniqueID, &why);
    if (controls.isEmpty())
        refused.append(why);
    return controls;
}

// Qt 5 writes numbers of more than 53 bits as others: they are texts.
QJsonValue written(int64_t number) {
    const int64_t largest = int64_t(1) << 53;
    return number < -largest || number > largest ? QJsonValue(QString::number(number))
                                                 : QJsonValue(static_cast<qint64>(number));
}

bool readNumber(const QJsonValue& json, int64_t& number) {
    const QVariant value = json.toVariant(); // of a whole number, all of its bits
    number = value.toLongLong();
    return value.userType() == QMetaType::LongLong;
}

// What is missing or of another kind must not be taken for a 0.
bool readControl(const QJsonObject& json, SavedControl& control) {
    int64_t id = 0;
    if (!readNumber(json["id"], id) || id <= 0 || id > UINT32_MAX)
        return false;
    control.id = static_cast<uint32_t>(id);
    control.key = json["name"].toString();
    control.text = json["text"].toString();
    bool isLarge = false;
    if (json["value"].isString())
        control.value = json["value"].toString().toLongLong(&isLarge);
    return isLarge || json["text"].isString() || readNumber(json["value"], control.value);
}

} // namespace

QList<SavedControl> savedControls(const QList<OVideoControl>& controls) {
    QList<SavedControl> result;
    for (const OVideoControl& control : controls)
        if (isSettable(control) && !control.isInactive())
            result.append(
                {control.id(), control.value(), control.text(), QString::fromStdString(controlKey(control))});
    return result;
}

QByteArray toJson(const SavedCameras& cameras) {
    QJsonObject all;
    for (auto camera = cameras.begin(); camera != cameras.end(); ++camera) {
        QJsonArray controls;
        for (const SavedControl& one : camera.value().controls) {
            QJsonObject control{{"id", static_cast<double>(one.id)}, {"name", one.key}};
            if (one.text.isEmpty())
                control["value"] = written(one.value);
            else
                control["text"] = one.text;
            controls.append(control);
        }
        all[camera.key()] = QJsonObject{{"name", camera.value().name}, {"controls", controls}};
    }
    return QJsonDocument(all).toJson();
}

bool fromJson(const QByteArray& json, SavedCameras& cameras) {
    const QJsonDocument document = QJsonDocument::fromJson(json);
    if (!document.isObject())
        return false;
    const QJsonObject all = document.object();
    for (auto entry = all.begin(); entry != all.end(); ++entry) {
        if (!entry.value().isObject() || !entry.value().toObject()["controls"].isArray())
            return false;
        SavedCamera camera;
        camera.name = entry.value().toObject()["name"].toString();
        const QJsonArray controls = entry.value().toObject()["controls"].toArray();
        for (const QJsonValue value : controls) {
            SavedControl control;
            if (!readControl(value.toObject(), control))
                return false;
            camera.controls.append(control);
        }
        cameras[entry.key()] = camera;
    }
    return true;
}

QStringList applyControls(const QString& uniqueID, const QList<SavedControl>& wanted) {
    QStringList refused;
    QList<OVideoControl> now = listed(uniqueID, refused);
    const QSet<uint32_t> automatic = automaticAmong(now);
    QList<SavedControl> first, rest;
    for (const SavedControl& one : wanted)
        (automatic.contains(one.id) ? first : rest).append(one);
    if (now.isEmpty())
        return refused;
    apply(uniqueID, now, first, refused);
    now = listed(uniqueID, refused);
    if (!now.isEmpty())
        apply(uniqueID, now, rest, refused);
    return refused;
}

QStringList applyDefaults(const QString& uniqueID) {
    QStringList refused;
    QList<OVideoControl> now = listed(uniqueID, refused);
    const QSet<uint32_t> automatic = automaticAmong(now);
    for (const bool automaticOnes : {true, false}) {
        QList<SavedControl> defaults;
        for (const OVideoControl& control : now)
            if (isSettable(control) && !control.isInactive() && control.type() != OVideoControl::TEXT &&
                automatic.contains(control.id()) == automaticOnes)
                defaults.append({control.id(), control.defaultValue(), QString(),
                                 QString::fromStdString(controlKey(control))});
        apply(uniqueID, now, defaults, refused);
        if (automaticOnes)
            now = listed(uniqueID, refused);
    }
    return refused;
}

} // namespace ostrel::apps
