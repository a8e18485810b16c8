#include "Benchmarks/VirtualDisplay.h"

#include <QElapsedTimer>
#include <QThread>
#include <QtEndian>

#include <algorithm>
#include <array>
#include <cstdlib>

namespace orvia::bench {

using namespace Qt::StringLiterals;

namespace {

/// The words of the header of an X window dump that tell where its pixels are. See XWDFile.h.
enum HeaderWord : std::size_t {
    headerSize = 0,
    pictureWidth = 4,
    pictureHeight = 5,
    bytesPerLine = 12,
    colourCount = 19,
    headerWords = 25,
};
constexpr qint64 bytesPerColour = 12;
constexpr double longestWait = 60'000; // milliseconds

} // namespace

VirtualDisplay::VirtualDisplay()
{
    QProcess& server = m_server.process();
    server.start(u"Xvfb"_s, {u"-displayfd"_s, u"1"_s, u"-screen"_s, u"0"_s, u"1280x800x24"_s, u"-nolisten"_s,
                             u"tcp"_s, u"-fbdir"_s, m_directory.path()});
    while (!server.canReadLine() && server.waitForReadyRead(10'000)) {
    }
    m_name = u":"_s + QString::fromLatin1(server.readLine()).trimmed();
    mapPicture();
}

void VirtualDisplay::mapPicture()
{
    m_file.setFileName(m_directory.filePath(u"Xvfb_screen0"_s));
    if (!m_file.open(QIODevice::ReadOnly))
        std::abort();
    const uchar* const bytes = m_file.map(0, m_file.size());
    if (!bytes)
        std::abort();
    std::array<quint32, headerWords> header;
    qFromBigEndian<quint32>(bytes, headerWords, header.data());
    const uchar* const pixels = bytes + header[headerSize] + header[colourCount] * bytesPerColour;
    m_picture =
        QImage(pixels, static_cast<int>(header[pictureWidth]), static_cast<int>(header[pictureHeight]),
               static_cast<qsizetype>(header[bytesPerLine]), QImage::Format_RGB32);
}

double VirtualDisplay::millisecondsUntil(const std::function<bool(const QImage&)>& isPainted) const
{
    QElapsedTimer timer;
    timer.start();
    const auto passed = [&timer] { return static_cast<double>(timer.nsecsElapsed()) / 1e6; };
    while (!isPainted(m_picture)) {
        if (passed() > longestWait)
            std::abort();
        QThread::usleep(500);
    }
    return passed();
}

int edges(const QImage& picture, const QRect& area)
{
    int count = 0;
    for (int y = area.top(); y <= area.bottom(); y += 4) {
        const auto* const line = reinterpret_cast<const QRgb*>(picture.constScanLine(y));
        // The lines of an empty pane are of one colour, which is told sooner.
        if (std::equal(line + area.left(), line + area.right(), line + area.left() + 1))
            continue;
        for (int x = area.left() + 1; x <= area.right(); ++x)
            count += line[x] == line[x - 1] ? 0 : 1;
    }
    return count;
}

} // namespace orvia::bench
