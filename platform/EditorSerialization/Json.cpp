#include <EditorSerialization/Json.h>

#include <QCoreApplication>
#include <QSet>

#include <glog/logging.h>

#include <cmath>
#include <vector>

namespace Serialize {

namespace {

int hexDigit(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

// Moves `at` from past a string's opening quote to past its closing quote; with `text`, the
// string as Qt decodes it (UTF-8, escapes as UTF-16 code units, an unknown escape as the
// character itself). Only a string Qt accepts has to come out the same: one it refuses ends
// the document anyway.
void scanString(const QByteArray& data, int& at, QString* text)
{
    int run = at;
    while (at < data.size() && data[at] != '"') {
        if (data[at] != '\\') {
            ++at;
            continue;
        }
        if (++at >= data.size())
            break;
        const char escaped = data[at++];
        if (!text)
            continue;
        *text += QString::fromUtf8(data.constData() + run, at - 2 - run);
        switch (escaped) {
        case 'b':
            *text += QChar(0x8);
            break;
        case 'f':
            *text += QChar(0xc);
            break;
        case 'n':
            *text += QChar(0xa);
            break;
        case 'r':
            *text += QChar(0xd);
            break;
        case 't':
            *text += QChar(0x9);
            break;
        case 'u': {
            ushort unit = 0;
            for (int i = 0; i < 4 && at < data.size() && hexDigit(data[at]) >= 0; ++i)
                unit = ushort(unit << 4 | hexDigit(data[at++]));
            *text += QChar(unit);
            break;
        }
        default:
            *text += QLatin1Char(escaped);
            break;
        }
        run = at;
    }
    if (text)
        *text += QString::fromUtf8(data.constData() + run, at - run);
    ++at;
}

QString tr(const char* text) { return QCoreApplication::translate("Serialize", text); }

// The offset of the first key Qt would mishandle, -1 for none (and why in `why`): a key that
// its object repeats, or one holding a NUL character (Qt compares those only up to the NUL,
// so "a\u0000x" and "a\u0000y" would be one key). Only the structure is followed; whether
// the text is JSON is Qt's to say.
int refusedKey(const QByteArray& data, QString* why)
{
    struct Level
    {
        bool object = false;
        bool expectKey = false;
        QSet<QString> keys;
    };
    std::vector<Level> levels;
    for (int at = 0; at < data.size();) {
        const int start = at;
        switch (data[at++]) {
        case '{':
            levels.push_back({true, true, {}});
            break;
        case '[':
            levels.push_back({false, false, {}});
            break;
        case '}':
        case ']':
            if (!levels.empty())
                levels.pop_back();
            break;
        case ',':
            if (!levels.empty())
                levels.back().expectKey = levels.back().object;
            break;
        case ':':
            if (!levels.empty())
                levels.back().expectKey = false;
            break;
        case '"': {
            if (levels.empty() || !levels.back().expectKey) {
                scanString(data, at, nullptr);
                break;
            }
            QString text;
            scanString(data, at, &text);
            levels.back().expectKey = false;
            if (text.contains(QChar(0))) {
                *why = tr("a key holding a NUL character");
                return start;
            }
            if (levels.back().keys.contains(text)) {
                *why = tr("the key \"%1\" repeated").arg(text);
                return start;
            }
            levels.back().keys.insert(text);
            break;
        }
        default:
            break;
        }
    }
    return -1;
}

} // namespace

QJsonDocument readJson(const QByteArray& data, QString* error)
{
    QString why;
    const int refused = refusedKey(data, &why);
    if (refused >= 0) {
        if (error)
            *error = tr("%1 at byte %2").arg(why).arg(refused);
        return QJsonDocument();
    }
    QJsonParseError parseError;
    QJsonDocument document = QJsonDocument::fromJson(data, &parseError);
    if (parseError.error != QJsonParseError::NoError) {
        if (error)
            *error = tr("%1 at byte %2").arg(parseError.errorString()).arg(parseError.offset);
        return QJsonDocument();
    }
    return document;
}

QJsonArray writeTransform(const Types::Transform& transform)
{
    QJsonArray array;
    for (double v : transform.values())
        array.append(v);
    return array;
}

bool readTransform(const QJsonValue& value, Types::Transform& out)
{
    const QJsonArray array = value.toArray();
    if (!value.isArray() || array.size() != 9)
        return false;
    double m[9];
    for (int i = 0; i < 9; ++i) {
        if (!array.at(i).isDouble() || !std::isfinite(array.at(i).toDouble()))
            return false;
        m[i] = array.at(i).toDouble();
    }
    out = Types::Transform(m[0], m[1], m[2], m[3], m[4], m[5], m[6], m[7], m[8]);
    return true;
}

void logRefusal(const char* reader, const char* why, const QString& detail)
{
    LOG(ERROR) << reader << ": " << why << (detail.isEmpty() ? "" : " (") << detail.toStdString()
               << (detail.isEmpty() ? "" : ")");
}

} // namespace Serialize
