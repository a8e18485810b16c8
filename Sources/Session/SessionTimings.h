#pragma once

#include <chrono>

namespace orvia {

/// Every wait of the session. The application uses the defaults, tests shorten them.
struct SessionTimings {
    std::chrono::milliseconds typingClear = std::chrono::seconds(4); ///< a visitor's typing mark without news
    std::chrono::milliseconds previewClear = std::chrono::seconds(180); ///< a preview or draft without news
    std::chrono::milliseconds bannerDismiss = std::chrono::seconds(5);
    std::chrono::milliseconds searchDebounce = std::chrono::milliseconds(300);
    std::chrono::milliseconds sessionRetry = std::chrono::seconds(15);
    double typingThrottle = 1.0; ///< least spacing of outgoing typing frames per conversation, in seconds
};

} // namespace orvia
