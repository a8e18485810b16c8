#pragma once

#include "Views/AdminViews/AdminAgentsView.h"
#include "Views/AdminViews/AdminCannedView.h"
#include "Views/AdminViews/AdminProductsView.h"
