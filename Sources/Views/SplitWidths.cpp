#include "Views/SplitWidths.h"

#include <algorithm>

namespace orvia {

SplitWidths SplitWidths::fit(int total, int wantedSidebar, int wantedInbox, bool panelShown)
{
    SplitWidths widths;
    widths.sidebar = std::max(sidebarMinimum, wantedSidebar);
    widths.inbox = std::max(inboxMinimum, wantedInbox);
    const int forColumns = total - (panelShown ? panel : 0);
    int missing = conversationMinimum - (forColumns - widths.sidebar - widths.inbox);
    const auto giveWay = [&missing](int& width, int minimum) {
        const int given = std::clamp(missing, 0, width - minimum);
        width -= given;
        missing -= given;
    };
    giveWay(widths.inbox, inboxMinimum);
    giveWay(widths.sidebar, sidebarMinimum);
    widths.conversation = std::max(0, forColumns - widths.sidebar - widths.inbox);
    return widths;
}

int SplitWidths::minimumTotal(bool panelShown)
{
    return sidebarMinimum + inboxMinimum + conversationMinimum + (panelShown ? panel : 0);
}

} // namespace orvia
