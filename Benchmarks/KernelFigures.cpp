#include "Benchmarks/KernelFigures.h"

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <cstdlib>

namespace orvia::bench {

using namespace Qt::StringLiterals;

namespace {

QByteArray contents(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        std::abort();
    return file.readAll();
}

/// The number behind @p name in a file of lines "name: number unit".
qint64 field(const QByteArray& text, const QByteArray& name)
{
    for (const QByteArray& line : text.split('\n')) {
        if (line.startsWith(name + ':'))
            return line.mid(name.size() + 1).simplified().split(' ').front().toLongLong();
    }
    std::abort();
}

QFileInfoList threadsOf(qint64 processId)
{
    return QDir(u"/proc/%1/task"_s.arg(processId)).entryInfoList(QDir::Dirs | QDir::NoDotAndDotDot);
}

} // namespace

qint64 proportionalMemory(qint64 processId)
{
    return field(contents(u"/proc/%1/smaps_rollup"_s.arg(processId)), "Pss") * 1024;
}

std::map<QString, qint64> wakeUps(qint64 processId)
{
    std::map<QString, qint64> counts;
    for (const QFileInfo& thread : threadsOf(processId))
        counts[thread.fileName()] =
            field(contents(thread.filePath() + "/status"_L1), "voluntary_ctxt_switches");
    return counts;
}

qint64 wakeUpsBetween(const std::map<QString, qint64>& before, const std::map<QString, qint64>& after)
{
    qint64 sum = 0;
    for (const auto& [thread, count] : after) {
        const auto known = before.find(thread);
        sum += known == before.end() ? count : count - known->second;
    }
    return sum + std::count_if(before.begin(), before.end(), [&after](const auto& thread) {
               return !after.contains(thread.first);
           });
}

qint64 processorTime(qint64 processId)
{
    qint64 sum = 0;
    for (const QFileInfo& thread : threadsOf(processId))
        sum += contents(thread.filePath() + "/schedstat"_L1).split(' ').front().toLongLong();
    return sum;
}

} // namespace orvia::bench
