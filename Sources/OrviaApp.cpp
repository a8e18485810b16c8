#include "OrviaApp.h"
