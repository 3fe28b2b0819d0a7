// Standard polylines. Draws nothing yet: every function only reports its call. Wide lines with joins and caps, styled and cased
// lines belong here.
#include "vorna/standard/standard_call.h"

VT_REPORTED_FORMS(Polyline, VT_POINTS)
VT_REPORTED_FORMS(Colorized_Polyline, VT_COLORIZED)
VT_REPORTED_FORMS(Gouraud_Polyline, VT_GOURAUD)
