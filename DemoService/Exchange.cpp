#include "DemoService/Exchange.h"

#include <QJsonDocument>
#include <QJsonObject>

namespace orvia::demo {

using namespace Qt::StringLiterals;

Answer answerOf(const Refusal& refusal)
{
    const QJsonObject body{{u"error"_s, refusal.message}};
    return {refusal.status, QJsonDocument(body).toJson(QJsonDocument::Compact)};
}

} // namespace orvia::demo
