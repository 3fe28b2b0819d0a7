// The host's global objects.
#include "host/object.h"

#include "vorna/stock_patterns.h"

// Both exist before any code runs, so that objects can be made while other globals are constructed.
constinit VT_Vorna VORNA;
constinit const VT_Shared_Data SHARED = vorna::make_shared_data();
