// Includes a header of the renderer.
#pragma once

#include "renderer/core/actions.h"
