// Standard polygons. Draws nothing yet: every function only reports its call. Hatched polygons belong here.
#include "vorna/standard/standard_call.h"

VT_REPORTED_FORMS(Polygon, VT_POLYGON)
