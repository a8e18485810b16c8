#pragma once

#include "DemoService/Desk.h"

#include <QSet>
#include <QTimer>

#include <chrono>
#include <functional>
#include <map>
#include <random>
#include <vector>

namespace orvia::demo {

/// Visitors who type, send, read and answer, and teammates who look and draft, without end. Everything
/// happens on beats of one timer; the same seed gives the same sequence. Teammates with an open channel of
/// their own are left to the person behind it.
class ScriptedLife : public QObject {
    Q_OBJECT

public:
    ScriptedLife(Store& store, Desk& desk, LiveChannel& live, quint64 seed, std::chrono::milliseconds beat);
    ~ScriptedLife() override;

    void start();

private:
    struct VisitorPart {
        QString conversationId;
        QStringList lines;
        qsizetype next = 0;
    };
    struct TeammatePart {
        QString conversationId;
        QString agentId;
        QString draft;
        QString ends; ///< "reply", "note", or "drop" for a draft that is never sent
    };
    struct Newcomer {
        QString productId;
        Visitor visitor;
        QString line;
    };

    void loadParts();
    void after(int beats, std::function<void()> step);
    void tick();
    void directVisitors();
    void directTeammates();
    void reactTo(const QString& conversationId, const Message& message);

    /// The visitor types @p text with a growing preview and sends it; answers the beats that it takes.
    int typeAndSend(const QString& conversationId, const QString& text);
    void play(const TeammatePart& part);
    void finish(const TeammatePart& part);
    void arrive(const Newcomer& newcomer);
    std::size_t choose(std::size_t count) { return static_cast<std::size_t>(m_random() % count); }

    Store& m_store;
    Desk& m_desk;
    LiveChannel& m_live;
    std::mt19937_64 m_random;
    QTimer m_timer;
    qint64 m_beat = 0;
    std::multimap<qint64, std::function<void()>> m_steps;
    std::vector<VisitorPart> m_visitors;
    std::vector<TeammatePart> m_teammates;
    std::vector<Newcomer> m_newcomers;
    QStringList m_answers;
    std::size_t m_nextVisitor = 0;
    std::size_t m_nextTeammate = 0;
    std::size_t m_nextNewcomer = 0;
    QSet<QString> m_typing; ///< conversations whose visitor is at it
};

/// What has been typed of @p text by step @p step of @p steps: never part of a user-perceived character.
QString typedSoFar(const QString& text, int step, int steps);

} // namespace orvia::demo
