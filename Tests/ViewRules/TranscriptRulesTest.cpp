#include "Views/ConversationDetailView/TranscriptRules.h"

#include <QDateTime>

#include <gtest/gtest.h>

namespace orvia {
namespace {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

constexpr Instant ten{std::chrono::hours(10)};

Message message(MessageSender sender, std::optional<Instant> at = ten, std::optional<MessageVia> via = {})
{
    Message made;
    made.sender = sender;
    made.createdAt = at;
    made.via = via;
    return made;
}

TEST(TimeDivider, ShowsAfterMoreThanTenMinutes)
{
    const Message first = message(MessageSender::visitor);
    EXPECT_FALSE(TranscriptRules::showsTimeDivider(nullptr, first));
    EXPECT_FALSE(TranscriptRules::showsTimeDivider(&first, message(MessageSender::agent, ten + 600s)));
    EXPECT_TRUE(TranscriptRules::showsTimeDivider(&first, message(MessageSender::agent, ten + 600s + 1ms)));
    EXPECT_FALSE(TranscriptRules::showsTimeDivider(&first, message(MessageSender::agent, ten - 1h)));
    EXPECT_FALSE(TranscriptRules::showsTimeDivider(&first, message(MessageSender::agent, std::nullopt)));
    const Message timeless = message(MessageSender::visitor, std::nullopt);
    EXPECT_FALSE(TranscriptRules::showsTimeDivider(&timeless, first));
}

TEST(EmailCaption, ClosesARunOfEmails)
{
    const Message mail = message(MessageSender::visitor, ten, MessageVia::email);
    const Message agentMail = message(MessageSender::agent, ten, MessageVia::email);
    const Message chat = message(MessageSender::visitor, ten, MessageVia::chat);
    EXPECT_FALSE(TranscriptRules::showsEmailCaption(mail, &mail));
    EXPECT_TRUE(TranscriptRules::showsEmailCaption(mail, &agentMail));
    EXPECT_TRUE(TranscriptRules::showsEmailCaption(mail, &chat));
}

TEST(PresenceLine, NamesTwoAsTheyAreCalled)
{
    const ViewerAgent ann{u"1"_s, u"Ann %2"_s};
    const ViewerAgent nameless{u"2"_s, u""_s};
    const ViewerAgent bob{u"3"_s, u"Bob"_s};
    EXPECT_EQ(TranscriptRules::presenceLine({ann, nameless, bob}), u"Ann %2 and Bob are also viewing"_s);
}

TEST(Captions, FallBackWhenNamesAreUnknown)
{
    EXPECT_EQ(TranscriptRules::noteCaption(u""_s), u"Internal note"_s);
    EXPECT_EQ(TranscriptRules::noteCaption(std::nullopt), u"Internal note"_s);
    Conversation conversation;
    EXPECT_EQ(TranscriptRules::assignmentLine(nullptr, u"me"_s, std::nullopt), u"Unassigned"_s);
    EXPECT_EQ(TranscriptRules::assignmentLine(&conversation, std::nullopt, std::nullopt), u"Unassigned"_s);
    conversation.assigneeId = u"me"_s;
    EXPECT_EQ(TranscriptRules::assignmentLine(&conversation, std::nullopt, std::nullopt),
              u"Assigned to a teammate"_s);
}

TEST(AttachmentURL, ResolvesAgainstTheOrigin)
{
    const QUrl origin(u"https://chat.example:8443"_s);
    const auto resolved = [&origin](const std::optional<QString>& url) {
        Attachment attachment;
        attachment.url = url;
        return TranscriptRules::resolvedURL(attachment, origin);
    };
    EXPECT_EQ(resolved(u"/files/1?x=a b"_s), QUrl(u"https://chat.example:8443/files/1?x=a%20b"_s));
    EXPECT_EQ(resolved(u"files/1"_s), QUrl(u"https://chat.example:8443/files/1"_s));
    EXPECT_EQ(resolved(u"http://cdn.example/a/../b"_s), QUrl(u"http://cdn.example/a/../b"_s));
    EXPECT_EQ(resolved(u"http://[bad"_s), std::nullopt);
    EXPECT_EQ(resolved(u""_s), std::nullopt);
    EXPECT_EQ(resolved(std::nullopt), std::nullopt);
}

TEST(SnoozeTimes, FollowTheCalendar)
{
    struct Case {
        const char* zone;
        const char* now;
        const char* tomorrow;
        const char* threeDays;
    };
    const std::vector<Case> cases{
        {"UTC", "2025-02-27T23:59:59Z", "2025-02-28T09:00:00Z", "2025-03-02T23:59:59Z"},
        // Clocks go forward in the night to the 30th of March and back in the night to the 26th of October.
        {"Europe/Berlin", "2025-03-29T11:00:00Z", "2025-03-30T07:00:00Z", "2025-04-01T10:00:00Z"},
        {"Europe/Berlin", "2025-10-25T10:00:00Z", "2025-10-26T08:00:00Z", "2025-10-28T11:00:00Z"},
        // Half past two does not exist on the 30th: the next time that does is three o'clock.
        {"Europe/Berlin", "2025-03-27T01:30:00Z", "2025-03-28T08:00:00Z", "2025-03-30T01:00:00Z"},
        // Half past two exists twice on the 26th: the first one counts.
        {"Europe/Berlin", "2025-10-23T00:30:00Z", "2025-10-24T07:00:00Z", "2025-10-26T00:30:00Z"},
        // Here the 30th of December 2011 never was.
        {"Pacific/Apia", "2011-12-30T01:00:00Z", "2011-12-30T19:00:00Z", "2012-01-01T01:00:00Z"},
        // And here one day was lived twice, nine o'clock included.
        {"Pacific/Kwajalein", "1969-09-29T00:00:00Z", "1969-09-29T22:00:00Z", "1969-10-02T23:00:00Z"},
    };
    for (const Case& tried : cases) {
        SCOPED_TRACE(std::string(tried.zone) + ' ' + tried.now);
        const QTimeZone zone{QByteArray(tried.zone)};
        ASSERT_TRUE(zone.isValid());
        const Instant now = *instantFromISO8601(tried.now);
        EXPECT_EQ(iso8601FromInstant(TranscriptRules::tomorrowMorning(now, zone)), tried.tomorrow);
        EXPECT_EQ(iso8601FromInstant(TranscriptRules::threeDaysOut(now, zone)), tried.threeDays);
    }
    EXPECT_EQ(TranscriptRules::tomorrowMorning(ten, QTimeZone()), ten + 24h) << "a zone that is unknown";
    EXPECT_EQ(TranscriptRules::threeDaysOut(ten, QTimeZone()), ten);
}

} // namespace
} // namespace orvia
