#pragma once

/// Lengths of the visitor panel, in device-independent pixels. Heights are minimums: large fonts enlarge
/// them.
namespace orvia::PanelMetrics {

constexpr int width = 300;
constexpr int topPadding = 14;
constexpr int sidePadding = 16;
constexpr int sectionGap = 20;
constexpr int sectionTitleHeight = 14;
constexpr int lineHeight = 18;
constexpr int tableRowHeight = 20;
constexpr int journeyRowHeight = 22;
constexpr int keyWidth = 84;

} // namespace orvia::PanelMetrics
