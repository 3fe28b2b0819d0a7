// Standard markers and dots. Draws nothing yet: every function only reports its call. Marker symbols and sizes belong here.
#include "vorna/standard/standard_call.h"

VT_REPORTED_FORMS(Polymarker, VT_POINTS)
VT_REPORTED_FORMS(Colorized_Polymarker, VT_COLORIZED)
VT_REPORTED(Draw_DCI_Dot, const VT_DCI_Point*, const VT_RGB32*)
