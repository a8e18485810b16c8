#pragma once

#include <QSslConfiguration>

namespace orvia::test {

/// What is wrong with a server's certificate, if anything.
enum class Certificate { valid, selfSigned, expired, otherHost };

/// A server's TLS configuration for 127.0.0.1 with such a certificate, made on first use. All but the
/// self-signed one come from an authority that this process trusts from the first call on.
QSslConfiguration serverConfiguration(Certificate certificate);

} // namespace orvia::test
