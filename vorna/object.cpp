// The host's global objects.
#include "host/object.h"

#include "vorna/stock_patterns.h"

// Constant-initialised, so that objects can be made during the initialisation of other globals.
constinit VT_Vorna VORNA;
constinit const VT_Shared_Data SHARED = vorna::make_shared_data();
