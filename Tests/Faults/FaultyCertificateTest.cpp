#include "FaultFixture.h"
