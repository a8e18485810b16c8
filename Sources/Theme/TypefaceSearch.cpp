#include "Theme/TypefaceSearch.h"

#include <QTextLayout>

#include <array>

namespace orvia {

using namespace Qt::StringLiterals;

namespace {

/// A text of each script, or family of scripts, that many messages have and many typefaces lack.
const std::array samples{u"🙂"_s, u"ع"_s, u"電"_s, u"で"_s, u"한"_s};

/// Leaves time for what else the event loop has to do between two of them.
constexpr std::chrono::milliseconds pause(5);

} // namespace

TypefaceSearch::TypefaceSearch(const QFont& font, QObject* parent)
    : QObject(parent)
    , m_font(font)
{
    m_timer.callOnTimeout(this, &TypefaceSearch::searchNext);
    m_timer.start(pause);
}

void TypefaceSearch::searchNext()
{
    if (m_step == samples.size()) {
        m_timer.stop();
        return;
    }
    QTextLayout layout(samples[m_step], m_font);
    layout.beginLayout();
    layout.createLine();
    layout.endLayout();
    ++m_step;
}

} // namespace orvia
