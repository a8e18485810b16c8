#include "ComposerLogic/ReadReceipt.h"

#include <gtest/gtest.h>

namespace orvia {
namespace {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

constexpr Instant ten{std::chrono::hours(10)};

Message message(const QString& id, MessageSender sender, std::optional<Instant> at)
{
    Message made;
    made.id = id;
    made.sender = sender;
    made.createdAt = at;
    return made;
}

TEST(ReadReceipt, MarksTheNewestReplyThatWasRead)
{
    const std::vector<Message> thread{
        message(u"first"_s, MessageSender::agent, ten),
        message(u"visitor"_s, MessageSender::visitor, ten + 1min),
        message(u"second"_s, MessageSender::agent, ten + 2min),
        message(u"timeless"_s, MessageSender::agent, std::nullopt),
        message(u"system"_s, MessageSender::system, ten + 3min),
        message(u"note"_s, MessageSender::note, ten + 3min),
    };
    EXPECT_EQ(ReadReceipt::seenMessageId(thread, std::nullopt), std::nullopt);
    EXPECT_EQ(ReadReceipt::seenMessageId(thread, ten - 1ms), std::nullopt);
    EXPECT_EQ(ReadReceipt::seenMessageId(thread, ten), u"first"_s);
    EXPECT_EQ(ReadReceipt::seenMessageId(thread, ten + 1min), u"first"_s);
    EXPECT_EQ(ReadReceipt::seenMessageId(thread, ten + 5min), u"second"_s);
}

} // namespace
} // namespace orvia
