#pragma once

#include "DemoService/FileShelf.h"
#include "DemoService/Store.h"

#include <QJsonObject>

namespace orvia::demo {

/// Adds the demo's products, agents and canned responses; every agent has @p password.
void addTeam(Store& store, const QString& password);

/// Adds the demo's conversations, their times counted back from the store's present instant.
void addConversations(Store& store, FileShelf& files);

/// The JSON object of the seed file @p name.
QJsonObject seedDocument(const QString& name);

/// A one-page PDF that shows @p title, padded with comments to @p size bytes where it is shorter.
QByteArray pdfDocument(const QByteArray& title, qsizetype size);

} // namespace orvia::demo
