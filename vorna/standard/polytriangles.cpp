// Standard polytriangles. Draws nothing yet: every function only reports its call. Hatched faces belong here.
#include "vorna/standard/standard_call.h"

VT_REPORTED_FORMS(Polytriangle, VT_POINTS)
VT_REPORTED_FORMS(Colorized_Polytriangle, VT_COLORIZED)
VT_REPORTED_FORMS(Gouraud_Polytriangle, VT_GOURAUD)
VT_REPORTED_FORMS(Textured_Polytriangle, VT_TEXTURED)
