// Line types.
#include "host/line_type.h"

// The only globals of the library with dynamic initialisation. They are in one file, in the order of their dependence, and no
// other global of the library uses them; modules and applications are initialised after the library.
const VT_Reference<const VT_Line_Type> VT_Line_Type::None(new VT_Line_Type);
const VT_Reference<const VT_Line_Type_Set> VT_Line_Type_Set::None(new VT_Line_Type_Set);

// The width of a casing is not a length along the line and is not scaled.
void VT_Line_Type::scale(double factor) noexcept {
    for (double& length : leading) {
        length *= factor;
    }
    for (double& length : trailing) {
        length *= factor;
    }
    for (double& length : lengths) {
        length *= factor;
    }
    stamp();
}
