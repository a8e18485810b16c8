#pragma once

#include "Models/Product.h"

#include <QString>

#include <vector>

namespace orvia::CannedMatching {

/// The canned responses to offer for a text that begins with "/": those whose shortcut or body begins with
/// what follows, letter case aside, in input order, at most @p limit. Empty for any other text.
std::vector<CannedResponse> matches(const QString& text, const std::vector<CannedResponse>& canned,
                                    int limit);

} // namespace orvia::CannedMatching
