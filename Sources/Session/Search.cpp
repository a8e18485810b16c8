#include "APIClient/Outcome.h"
#include "Session/Fields.h"

#include <QPointer>
#include <QTextBoundaryFinder>

/// The debounced search of the service, and opening what it found.
namespace orvia {

namespace {

constexpr int resultLimit = 30;

/// Whether @p text has at least two user-perceived characters.
bool isLongEnough(const QString& text)
{
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    return finder.toNextBoundary() >= 0 && finder.position() < text.size();
}

} // namespace

void Session::setSearchText(const QString& text)
{
    if (m_searchText == text)
        return;
    m_searchText = text;
    Q_EMIT searchTextChanged();
    scheduleSearch();
}

void Session::scheduleSearch()
{
    cancelSearch();
    if (isLongEnough(m_searchText.trimmed())) {
        assignField(m_isSearching, true, &Session::isSearchingChanged);
        m_searchDebounce.start();
    } else {
        assignField(m_isSearching, false, &Session::isSearchingChanged);
        assignField(m_searchResults, {}, &Session::searchResultsChanged);
    }
}

void Session::cancelSearch()
{
    m_searchDebounce.stop();
    m_searchTask.request_stop();
}

void Session::startSearch()
{
    m_searchTask = std::stop_source();
    runSearch(m_searchText.trimmed(), m_searchTask.get_token());
}

QCoro::Task<void> Session::runSearch(QString query, std::stop_token stop)
{
    const QPointer<Session> self = this;
    auto outcome = co_await outcomeOf(client().search(query, resultLimit, stop));
    if (!self || stop.stop_requested())
        co_return;
    assignField(m_searchResults, std::move(outcome.answer).value_or(std::vector<SearchResult>()),
                &Session::searchResultsChanged);
    if (outcome.failure)
        showBanner(outcome.failure->message);
    assignField(m_isSearching, false, &Session::isSearchingChanged);
}

void Session::clearSearch()
{
    cancelSearch();
    setSearchText({});
    assignField(m_searchResults, {}, &Session::searchResultsChanged);
    assignField(m_isSearching, false, &Session::isSearchingChanged);
}

void Session::openSearchResult(const SearchResult& result)
{
    // The hit may be one of the results that clearing the search is about to drop.
    const Conversation conversation = result.conversation;
    upsert(conversation);
    revealConversation(conversation);
    clearSearch();
}

} // namespace orvia
