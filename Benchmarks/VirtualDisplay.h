#pragma once

#include "Support/PrivateBus.h"

#include <QFile>
#include <QImage>
#include <QTemporaryDir>

#include <functional>

namespace orvia::bench {

/// An X server without a screen whose frame buffer is a file in memory: looking at what is painted costs the
/// server and the program nothing.
class VirtualDisplay {
public:
    VirtualDisplay();

    /// The value of DISPLAY for programs that are to be shown here.
    QString name() const { return m_name; }
    /// The frame buffer itself; what is painted later shows in it.
    const QImage& picture() const { return m_picture; }
    /// Looks twice in a millisecond until @p isPainted holds, and answers the milliseconds since the call.
    double millisecondsUntil(const std::function<bool(const QImage&)>& isPainted) const;

private:
    void mapPicture();

    QTemporaryDir m_directory;
    test::ChildProcess m_server;
    QString m_name;
    QFile m_file;
    QImage m_picture;
};

/// How many pixels of @p area differ from their left neighbour: none on an empty pane, thousands in a list of
/// texts. Every fourth row is looked at.
int edges(const QImage& picture, const QRect& area);

} // namespace orvia::bench
