#pragma once

#include "Platform/SecretService.h"

/// The one function of the module behind @c orvia::SecretService, which alone is linked with the credential
/// library. The caller owns what it answers. Thread-safe.
extern "C" [[gnu::visibility("default")]] orvia::SecretStorage*
orviaSecretService(const QString& label, orvia::SecretServiceLimits limits);
