// Includes a header of a family.
#pragma once

#include "renderer/triangles/triangle_kernels.h"
