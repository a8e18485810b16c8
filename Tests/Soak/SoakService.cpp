#include "DemoService/DemoService.h"
#include "DemoService/LoadGenerator.h"

#include <QCoreApplication>
#include <QSocketNotifier>

#include <cstdio>
#include <iostream>
#include <sstream>
#include <string>

/// The demo service with an inbox of its own making, told by lines of its standard input what to do:
///     live COUNT MARK   sends so many live events and after them one of the type "mark" with the number MARK
///     break             breaks every live channel
/// Ends with the input.
namespace orvia::demo {

using namespace Qt::StringLiterals;

namespace {

constexpr int conversations = 400;
constexpr std::size_t longestThread = 60;
constexpr std::size_t shortenedThread = 40;
constexpr int strangerEvery = 10; ///< events; so often one is about a conversation that no inbox holds

class SoakService {
public:
    SoakService()
        : m_service({.conversations = conversations, .keepsJournal = false})
        , m_generator(m_service.store(), m_service.desk(), m_service.live(), 7)
    {
    }

    bool start()
    {
        const bool listens = m_service.listen();
        std::cout << m_service.origin().toString().toStdString() << std::endl;
        return listens;
    }

    void obey(const std::string& line)
    {
        std::istringstream words(line);
        std::string command;
        qint64 count = 0;
        qint64 mark = 0;
        words >> command >> count >> mark;
        if (command == "break")
            m_service.live().abortAll();
        else
            live(count, mark);
    }

private:
    void live(qint64 count, qint64 mark)
    {
        const LiveChannel& channel = m_service.live();
        const qint64 end = channel.eventCount() + count;
        for (int round = 0; channel.eventCount() < end; ++round) {
            if (round % strangerEvery == 0)
                emitStranger();
            m_generator.happen();
        }
        shortenThreads();
        SocketEvent event;
        event.type = u"mark"_s;
        event.conversationId = QString::number(mark);
        m_service.emitEvent(event);
    }

    /// A conversation of which the console hears nothing but this: a visitor types and writes, a teammate
    /// looks, drafts and leaves.
    void emitStranger()
    {
        SocketEvent event;
        event.conversationId = u"stranger-%1"_s.arg(++m_strangers);
        event.type = u"viewers"_s;
        event.agents = std::vector<ViewerAgent>{{u"dana"_s, u"Dana Whitfield"_s}};
        m_service.emitEvent(event);
        event.agents->clear();
        m_service.emitEvent(event);
        event.type = u"typing"_s;
        event.from = u"visitor"_s;
        event.preview = u"Hello, is any"_s;
        m_service.emitEvent(event);
        event.from = u"agent"_s;
        event.agentId = u"dana"_s;
        m_service.emitEvent(event);
        event.type = u"message"_s;
        event.message.emplace();
        event.message->id = *event.conversationId + u"-message"_s;
        event.message->conversationId = *event.conversationId;
        event.message->body = u"Hello, is anybody there at this hour?"_s;
        m_service.emitEvent(event);
    }

    /// A thread that grew all day would make the last conversations that are opened larger than the first.
    void shortenThreads()
    {
        Store& store = m_service.store();
        for (std::size_t index = 0; index < store.threadCount(); ++index) {
            auto& messages = store.threadAt(index).messages;
            if (messages.size() > longestThread)
                messages.erase(messages.begin(), messages.end() - shortenedThread);
        }
    }

    DemoService m_service;
    LoadGenerator m_generator;
    qint64 m_strangers = 0;
};

} // namespace

} // namespace orvia::demo

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    orvia::demo::SoakService service;
    if (!service.start())
        return 1;
    // Lines are short and come one at a time, so that none is left in the stream's buffer unseen.
    QSocketNotifier input(0, QSocketNotifier::Read);
    QObject::connect(&input, &QSocketNotifier::activated, &input, [&] {
        std::string line;
        if (!std::getline(std::cin, line))
            return QCoreApplication::quit();
        do
            service.obey(line);
        while (std::cin.rdbuf()->in_avail() > 0 && std::getline(std::cin, line));
    });
    return QCoreApplication::exec();
}
