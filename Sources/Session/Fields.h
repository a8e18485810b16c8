#pragma once

#include "Session/Session.h"

/// How the session stores its fields: an equal value notifies nobody. For the sources of the session.
namespace orvia {

template <class Value>
void Session::assignField(Value& field, std::type_identity_t<Value> value, void (Session::*changed)())
{
    if (field == value)
        return;
    field = std::move(value);
    Q_EMIT(this->*changed)();
}

template <class Value>
void Session::setEntry(QHash<QString, Value>& entries, const QString& id, std::type_identity_t<Value> value,
                       void (Session::*changed)(const QString&))
{
    const auto found = entries.find(id);
    if (found == entries.end())
        entries.insert(id, std::move(value));
    else if (*found == value)
        return;
    else
        *found = std::move(value);
    Q_EMIT(this->*changed)(id);
}

template <class Value>
void Session::removeEntry(QHash<QString, Value>& entries, const QString& id,
                          void (Session::*changed)(const QString&))
{
    if (entries.remove(id))
        Q_EMIT(this->*changed)(id);
}

template <class Value>
void Session::removeAllEntries(QHash<QString, Value>& entries, void (Session::*changed)(const QString&))
{
    const QStringList ids = entries.keys();
    entries.clear();
    for (const QString& id : ids)
        Q_EMIT(this->*changed)(id);
}

} // namespace orvia
