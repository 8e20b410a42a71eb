#include <EditorSerialization/Animations.h>
#include <EditorSerialization/Json.h>

#include <QJsonArray>
#include <QJsonObject>

namespace Serialize {

namespace {

const QString formatKey = QStringLiteral("format");
const QString formatName = QStringLiteral("animation");
const QString versionKey = QStringLiteral("version");
const QString nameKey = QStringLiteral("name");
const QString keysKey = QStringLiteral("keys");
const QString timeKey = QStringLiteral("time");
const QString transformKey = QStringLiteral("transform");
constexpr int version = 1;

std::optional<Animation::TransformationItem> refuse(const char* why, const QString& detail = QString())
{
    logRefusal("Serialize::readAnimation", why, detail);
    return std::nullopt;
}

} // namespace

QByteArray writeAnimation(const Animation::TransformationItem& item)
{
    QJsonArray keys;
    for (const Animation::TransformationItem::Key& key : item.keys())
        keys.append(
            QJsonObject{{timeKey, QString::number(key.time)}, {transformKey, writeTransform(key.value.matrix())}});
    const QJsonObject root{
        {formatKey, formatName}, {versionKey, version}, {nameKey, item.name.toQString()}, {keysKey, keys}};
    return QJsonDocument(root).toJson(QJsonDocument::Compact);
}

std::optional<Animation::TransformationItem> readAnimation(const QByteArray& data)
{
    if (data.isEmpty())
        return refuse("no data");
    if (data.size() > maxAnimationBytes)
        return refuse("document too large");
    QString error;
    const QJsonDocument document = readJson(data, &error);
    if (!document.isObject())
        return refuse("not a JSON object", error);
    const QJsonObject root = document.object();
    if (root.value(formatKey).toString() != formatName || root.value(versionKey).toInt(-1) != version)
        return refuse("not an animation of a known version");
    const QJsonValue name = root.value(nameKey);
    if (!name.isUndefined() && !name.isString())
        return refuse("the name is not a text");
    const QJsonArray keys = root.value(keysKey).toArray();
    if (keys.isEmpty())
        return refuse("no keys");
    Animation::TransformationItem item;
    item.name = Types::String(name.toString());
    for (const QJsonValue& value : keys) {
        const QJsonObject key = value.toObject();
        bool number = false;
        const qlonglong time = key.value(timeKey).toString().toLongLong(&number);
        Types::Transform matrix;
        if (!number || time < 0 || !readTransform(key.value(transformKey), matrix))
            return refuse("a key is not a time and nine finite numbers");
        const std::size_t before = item.keys().size();
        item.setKey(Types::Time(time), Transformation::Object().setMatrix(matrix));
        if (item.keys().size() == before)
            return refuse("two keys at one time");
    }
    return item;
}

} // namespace Serialize
