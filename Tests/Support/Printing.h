#pragma once

#include "APIClient/APIError.h"

#include <QByteArray>
#include <QString>

#include <ostream>

/// How failed expectations show texts; they would be lists of numbers otherwise. Found by the types'
/// namespace.
QT_BEGIN_NAMESPACE

inline void PrintTo(const QString& text, std::ostream* stream)
{
    *stream << '"' << text.toStdString() << '"';
}

inline void PrintTo(const QByteArray& bytes, std::ostream* stream)
{
    *stream << '"' << bytes.toStdString() << '"';
}

QT_END_NAMESPACE

namespace orvia {

inline void PrintTo(const APIError& error, std::ostream* stream)
{
    *stream << error.message.toStdString();
    if (error.status)
        *stream << " (status " << *error.status << ')';
}

} // namespace orvia
