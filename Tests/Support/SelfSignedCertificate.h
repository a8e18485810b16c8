#pragma once

#include <QSslConfiguration>

namespace orvia::test {

/// A server's TLS configuration with a certificate for 127.0.0.1 that nobody vouches for, made on first use.
QSslConfiguration selfSignedConfiguration();

} // namespace orvia::test
