// May include what it includes.
#include "drawing/files/path.h"
#include "host/geometry.h"
