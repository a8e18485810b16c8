#include "Benchmarks/KernelFigures.h"

#include <QByteArray>
#include <QDir>
#include <QFile>

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

template <class Figure>
qint64 sumOverThreads(qint64 processId, Figure figure)
{
    const QDir threads(u"/proc/%1/task"_s.arg(processId));
    qint64 sum = 0;
    for (const QString& thread : threads.entryList(QDir::Dirs | QDir::NoDotAndDotDot))
        sum += figure(threads.filePath(thread));
    return sum;
}

} // namespace

qint64 proportionalMemory(qint64 processId)
{
    return field(contents(u"/proc/%1/smaps_rollup"_s.arg(processId)), "Pss") * 1024;
}

qint64 wakeUps(qint64 processId)
{
    return sumOverThreads(processId, [](const QString& thread) {
        return field(contents(thread + "/status"_L1), "voluntary_ctxt_switches");
    });
}

qint64 processorTime(qint64 processId)
{
    return sumOverThreads(processId, [](const QString& thread) {
        return contents(thread + "/schedstat"_L1).split(' ').front().toLongLong();
    });
}

} // namespace orvia::bench
