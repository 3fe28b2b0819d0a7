// Includes from a folder above its own.
#pragma once

#include "renderer/lines/polylines_2d.h"
