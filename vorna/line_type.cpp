// Line types.
#include "host/line_type.h"

// The library's only globals that run code to come to life. They stand in the order of their need, in one file, and no other
// global of the library looks at them; modules and applications are initialised after the library.
const VT_Reference<const VT_Line_Type> VT_Line_Type::None(new VT_Line_Type);
const VT_Reference<const VT_Line_Type_Set> VT_Line_Type_Set::None(new VT_Line_Type_Set);

// The width of a casing is no length along the line and stays.
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
