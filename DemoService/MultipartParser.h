#pragma once

#include <QByteArray>
#include <QString>

#include <optional>
#include <vector>

namespace orvia::demo {

/// One part of a form.
struct FormPart {
    QString name;
    std::optional<QString> fileName; ///< present for files
    QString mime;                    ///< empty when the part does not say
    QByteArray data;
};

/// The parts of a multipart/form-data body (RFC 7578), at most @c maxFormParts. Refuses with status 400 what
/// is not one, and with 415 another content type. Nothing is copied but what the parts hold.
std::vector<FormPart> parseMultipart(const QByteArray& contentType, const QByteArray& body);

inline constexpr std::size_t maxFormParts = 16;

} // namespace orvia::demo
