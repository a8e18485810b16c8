#include "ClientFixture.h"
