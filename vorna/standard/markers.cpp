// Standard markers, dots and ellipses. Draws nothing yet: every function only reports its call. Marker symbols and sizes, arcs
// and rotated ellipses belong here.
#include "vorna/standard/standard_call.h"

VT_REPORTED_FORMS(Polymarker, VT_POINTS)
VT_REPORTED_FORMS(Colorized_Polymarker, VT_COLORIZED)
VT_REPORTED(Draw_DCI_Dot, const VT_DCI_Point*, const VT_RGB32*)
VT_REPORTED(Draw_DCI_Ellipse, const VT_DCI_Point*, const VT_DCI_Point*, double, double, double, const VT_RGB32*)
VT_REPORTED(Draw_DCI_Elliptical_Arc, const VT_DCI_Point*, const VT_DCI_Point*, double, double, double, const VT_RGB32*)
