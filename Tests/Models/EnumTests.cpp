#include "Models/Enums.h"

#include <gmock/gmock.h>

namespace orvia {

namespace {

template <class Enum>
void checkCases(const std::vector<std::pair<Enum, std::string>>& cases)
{
    std::vector<Enum> inOrder;
    for (const auto& [value, text] : cases) {
        inOrder.push_back(value);
        EXPECT_EQ(wireText(value).toStdString(), text);
        EXPECT_EQ(enumFromWireText<Enum>(text), value);
        std::string upperCase = text;
        upperCase[0] = static_cast<char>(upperCase[0] - 'a' + 'A');
        for (const std::string& other : {upperCase, text + " ", " " + text, text.substr(1), std::string()})
            EXPECT_EQ(enumFromWireText<Enum>(other), std::nullopt) << other;
    }
    EXPECT_THAT(allCases<Enum>(), testing::ElementsAreArray(inOrder));
}

} // namespace

TEST(Enums, CasesOrderAndWireTexts)
{
    checkCases<AgentRole>({{AgentRole::admin, "admin"}, {AgentRole::agent, "agent"}});
    checkCases<NotifyMode>(
        {{NotifyMode::all, "all"}, {NotifyMode::mine, "mine"}, {NotifyMode::mentions, "mentions"}});
    checkCases<ConversationStatus>(
        {{ConversationStatus::open, "open"}, {ConversationStatus::closed, "closed"}});
    checkCases<MessageSender>({{MessageSender::visitor, "visitor"},
                               {MessageSender::agent, "agent"},
                               {MessageSender::system, "system"},
                               {MessageSender::note, "note"}});
    checkCases<MessageVia>({{MessageVia::chat, "chat"}, {MessageVia::email, "email"}});
    checkCases<AttachmentKind>({{AttachmentKind::image, "image"}, {AttachmentKind::file, "file"}});
    checkCases<InboxQueue>(
        {{InboxQueue::all, "all"}, {InboxQueue::unassigned, "unassigned"}, {InboxQueue::mine, "mine"}});
}

} // namespace orvia
