#include <EditorSerialization/Json.h>
#include <EditorSerialization/OverlayPresets.h>

#include <QJsonArray>
#include <QJsonObject>

#include <glog/logging.h>

namespace Serialize {

namespace {

const QString formatKey = QStringLiteral("format");
const QString formatName = QStringLiteral("overlay-presets");
const QString versionKey = QStringLiteral("version");
const QString presetsKey = QStringLiteral("presets");
const QString nameKey = QStringLiteral("name");
const QString tagKey = QStringLiteral("tag");
const QString itemsKey = QStringLiteral("items");
const QString textKey = QStringLiteral("text");
const QString transformKey = QStringLiteral("transform");
constexpr int version = 1;

std::vector<std::unique_ptr<Overlay::Preset>> refuse(const char* why, const QString& detail = QString())
{
    logRefusal("Serialize::readOverlayPresets", why, detail);
    return {};
}

bool optionalString(const QJsonObject& object, const QString& key, std::string& out)
{
    const QJsonValue value = object.value(key);
    if (value.isUndefined())
        return true;
    if (!value.isString())
        return false;
    out = value.toString().toStdString();
    return true;
}

} // namespace

QByteArray writeOverlayPresets(const std::vector<const Overlay::Preset*>& presets)
{
    QJsonArray list;
    for (const Overlay::Preset* preset : presets) {
        if (!preset) {
            LOG(ERROR) << "Serialize::writeOverlayPresets: null preset skipped";
            continue;
        }
        QJsonArray items;
        for (const Overlay::Item& item : preset->items()) {
            items.append(QJsonObject{{textKey, QString::fromStdString(item.text())},
                                     {transformKey, writeTransform(item.transform())}});
        }
        list.append(QJsonObject{
            {nameKey, preset->name.toQString()}, {tagKey, QString::fromStdString(preset->tag())}, {itemsKey, items}});
    }
    const QJsonObject root{{formatKey, formatName}, {versionKey, version}, {presetsKey, list}};
    return QJsonDocument(root).toJson(QJsonDocument::Compact);
}

std::vector<std::unique_ptr<Overlay::Preset>> readOverlayPresets(const QByteArray& data)
{
    if (data.isEmpty())
        return refuse("no data");
    if (data.size() > maxOverlayPresetBytes)
        return refuse("document too large");
    QString error;
    const QJsonDocument document = readJson(data, &error);
    if (document.isNull())
        return refuse("not a JSON document", error);
    if (!document.isObject())
        return refuse("the document is not an object");
    const QJsonObject root = document.object();
    if (root.value(formatKey).toString() != formatName)
        return refuse("not a list of overlay presets");
    if (root.value(versionKey).toInt(-1) != version)
        return refuse("unknown version");
    const QJsonValue presetsValue = root.value(presetsKey);
    if (!presetsValue.isArray())
        return refuse("no list of presets");

    std::vector<std::unique_ptr<Overlay::Preset>> presets;
    const QJsonArray list = presetsValue.toArray();
    for (const QJsonValue& presetValue : list) {
        if (!presetValue.isObject())
            return refuse("a preset is not an object");
        const QJsonObject object = presetValue.toObject();
        auto preset = std::make_unique<Overlay::Preset>();
        std::string name;
        std::string tag;
        if (!optionalString(object, nameKey, name) || !optionalString(object, tagKey, tag))
            return refuse("a preset name or tag is not a text");
        preset->name = Types::String(name);
        preset->setTag(tag);
        const QJsonValue itemsValue = object.value(itemsKey);
        if (!itemsValue.isArray())
            return refuse("a preset has no list of items");
        const QJsonArray items = itemsValue.toArray();
        for (const QJsonValue& itemValue : items) {
            if (!itemValue.isObject())
                return refuse("an item is not an object");
            const QJsonObject itemObject = itemValue.toObject();
            if (!itemObject.value(textKey).isString())
                return refuse("an item has no text");
            Types::Transform transform;
            const QJsonValue transformValue = itemObject.value(transformKey);
            if (!transformValue.isUndefined() && !readTransform(transformValue, transform))
                return refuse("an item transform is not nine finite numbers");
            preset->appendItem(
                Overlay::Item().setText(itemObject.value(textKey).toString().toStdString()).setTransform(transform));
        }
        presets.push_back(std::move(preset));
    }
    return presets;
}

} // namespace Serialize
