#include "Views/DeepLink.h"

namespace orvia::DeepLink {

using namespace Qt::StringLiterals;

std::optional<QString> conversationId(const QUrl& url)
{
    if (url.scheme() != "orvia"_L1 || url.host() != "conversation"_L1)
        return std::nullopt;
    // Split before decoding, so that an encoded slash stays part of its component.
    const QString component = url.path(QUrl::FullyEncoded).section(u'/', -1);
    const QString id = QUrl::fromPercentEncoding(component.toLatin1());
    return id.isEmpty() ? std::nullopt : std::optional(id);
}

} // namespace orvia::DeepLink
