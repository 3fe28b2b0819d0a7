// Includes a header of a folder above.
#pragma once

#include "vorna/draw.h"
