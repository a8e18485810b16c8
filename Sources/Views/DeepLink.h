#pragma once

#include <QString>
#include <QUrl>

#include <optional>

namespace orvia::DeepLink {

/// The id in orvia://conversation/ID, absent for every other link and for an empty id.
std::optional<QString> conversationId(const QUrl& url);

} // namespace orvia::DeepLink
