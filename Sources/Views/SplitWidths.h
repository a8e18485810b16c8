#pragma once

namespace orvia {

/// Widths of the main screen's columns in pixels, their separating lines included.
struct SplitWidths {
    static constexpr int sidebarMinimum = 180;
    static constexpr int sidebarIdeal = 210;
    static constexpr int inboxMinimum = 280;
    static constexpr int inboxIdeal = 320;
    static constexpr int conversationMinimum = 320;
    static constexpr int panel = 300;

    int sidebar = sidebarIdeal;
    int inbox = inboxIdeal;
    int conversation = 0;

    /// Divides @p total among the columns. Sidebar and inbox keep the widths that are wanted for them; where
    /// the conversation would fall under its minimum the inbox gives way, then the sidebar, each down to its
    /// own minimum. What is wanted is not changed by that, so that the columns come back when there is room
    /// again.
    static SplitWidths fit(int total, int wantedSidebar, int wantedInbox, bool panelShown);
    /// The least total at which every column has its minimum.
    static int minimumTotal(bool panelShown);

    friend bool operator==(const SplitWidths&, const SplitWidths&) = default;
};

} // namespace orvia
