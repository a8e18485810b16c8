#include "DemoService/RequestBody.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <algorithm>
#include <cmath>

namespace orvia::demo {

using namespace Qt::StringLiterals;

RequestBody::RequestBody(const Request& request)
{
    const QByteArray mediaType = request.contentType.split(';').first().trimmed().toLower();
    if (request.body.isEmpty())
        throw Refusal(400, u"The request needs a JSON body."_s);
    if (mediaType != "application/json")
        throw Refusal(415, u"The body must be sent as application/json."_s);
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(request.body, &error);
    if (error.error != QJsonParseError::NoError)
        throw Refusal(400, u"Malformed JSON: %1."_s.arg(error.errorString()));
    if (!document.isObject())
        throw Refusal(400, u"The body must be a JSON object."_s);
    m_object = document.object();
}

RequestBody::RequestBody(QJsonObject object, QString prefix)
    : m_object(std::move(object))
    , m_prefix(std::move(prefix))
{
}

void RequestBody::allowOnly(std::initializer_list<QLatin1StringView> names) const
{
    for (auto it = m_object.begin(); it != m_object.end(); ++it) {
        const auto matches = [&it](QLatin1StringView name) { return it.key() == name; };
        if (std::none_of(names.begin(), names.end(), matches))
            throw Refusal(400, u"\"%1%2\" is not a member of this request."_s.arg(m_prefix, it.key()));
    }
}

QString RequestBody::text(QLatin1StringView name) const
{
    const QJsonValue value = member(name);
    if (!value.isString())
        refuse(name, u"a string"_s);
    return value.toString();
}

QString RequestBody::filledText(QLatin1StringView name) const
{
    const QString value = text(name);
    if (value.trimmed().isEmpty())
        throw Refusal(400, u"\"%1%2\" must not be empty."_s.arg(m_prefix, name));
    return value;
}

bool RequestBody::flag(QLatin1StringView name) const
{
    const QJsonValue value = member(name);
    if (!value.isBool())
        refuse(name, u"true or false"_s);
    return value.toBool();
}

qint64 RequestBody::integer(QLatin1StringView name) const
{
    const QJsonValue value = member(name);
    const double number = value.toDouble();
    if (!value.isDouble() || std::trunc(number) != number || std::abs(number) > 0x1p63)
        refuse(name, u"a whole number"_s);
    return value.toInteger();
}

QStringList RequestBody::texts(QLatin1StringView name) const
{
    const QJsonValue value = member(name);
    if (!value.isArray())
        refuse(name, u"a list of strings"_s);
    QStringList texts;
    for (const QJsonValue item : value.toArray()) {
        if (!item.isString())
            refuse(name, u"a list of strings"_s);
        texts.push_back(item.toString());
    }
    return texts;
}

RequestBody RequestBody::object(QLatin1StringView name) const
{
    const QJsonValue value = member(name);
    if (!value.isObject())
        refuse(name, u"an object"_s);
    return RequestBody(value.toObject(), m_prefix + name + u'.');
}

std::optional<QString> RequestBody::nullableText(QLatin1StringView name) const
{
    const QJsonValue value = member(name);
    if (value.isNull())
        return std::nullopt;
    if (!value.isString())
        refuse(name, u"a string or null"_s);
    return value.toString();
}

std::optional<Instant> RequestBody::nullableInstant(QLatin1StringView name) const
{
    const QJsonValue value = member(name);
    if (value.isNull())
        return std::nullopt;
    const auto instant = instantFromISO8601(value.toString().toStdString());
    if (!instant)
        refuse(name, u"an ISO 8601 date or null"_s);
    return instant;
}

QJsonValue RequestBody::member(QLatin1StringView name) const
{
    const auto found = m_object.find(name);
    if (found == m_object.end())
        throw Refusal(400, u"\"%1%2\" is missing."_s.arg(m_prefix, name));
    return *found;
}

void RequestBody::refuse(QLatin1StringView name, const QString& expectation) const
{
    throw Refusal(400, u"\"%1%2\" must be %3."_s.arg(m_prefix, name, expectation));
}

void RequestBody::refuseCase(QLatin1StringView name, const QStringList& cases) const
{
    throw Refusal(400, u"\"%1%2\" must be one of: %3."_s.arg(m_prefix, name, cases.join(u", ")));
}

} // namespace orvia::demo
