#pragma once

#include "DemoService/Exchange.h"
#include "Models/Enums.h"
#include "Models/Instant.h"

#include <QJsonObject>

#include <optional>

namespace orvia::demo {

/// The JSON object of a request, read strictly: each accessor throws a Refusal with status 400 and a text
/// that names the member when it is missing or of the wrong type.
class RequestBody {
public:
    /// Refuses a body that is not a JSON object (400) or not declared as JSON (415).
    explicit RequestBody(const Request& request);

    /// Refuses members other than @p names, which a typing error would otherwise hide.
    void allowOnly(std::initializer_list<QLatin1StringView> names) const;

    bool has(QLatin1StringView name) const { return m_object.contains(name); }

    QString text(QLatin1StringView name) const;
    /// Like @c text, but only white space is refused as well. The text keeps its surrounding space.
    QString filledText(QLatin1StringView name) const;
    bool flag(QLatin1StringView name) const;
    qint64 integer(QLatin1StringView name) const;
    QStringList texts(QLatin1StringView name) const;
    RequestBody object(QLatin1StringView name) const;

    /// The member must be there, but may be null.
    std::optional<QString> nullableText(QLatin1StringView name) const;
    std::optional<Instant> nullableInstant(QLatin1StringView name) const;

    template <json::TextEnum Enum>
    Enum oneOf(QLatin1StringView name) const
    {
        const auto value = enumFromWireText<Enum>(text(name).toStdString());
        if (!value)
            refuseCase(name, QStringList(wireTexts<Enum>()));
        return *value;
    }

private:
    explicit RequestBody(QJsonObject object, QString prefix);

    template <class Enum>
    static QStringList wireTexts()
    {
        QStringList texts;
        for (const Enum value : allCases<Enum>())
            texts.push_back(wireText(value));
        return texts;
    }

    QJsonValue member(QLatin1StringView name) const;
    [[noreturn]] void refuse(QLatin1StringView name, const QString& expectation) const;
    [[noreturn]] void refuseCase(QLatin1StringView name, const QStringList& cases) const;

    QJsonObject m_object;
    QString m_prefix; ///< the path of a nested object, for the error texts
};

} // namespace orvia::demo
