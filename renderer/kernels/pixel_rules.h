// The rules that a configuration is made of, besides the pixel format.
#pragma once

namespace krb {

enum class Depth_Rule {
    none,
    less_or_equal, // pass when new <= stored; a pass always writes
    by_mode,       // the renderer's test mode and write flag
};

enum class Pixel_Rule { store, blend, merge };

enum class Clip_Rule {
    open,
    masked,    // the pixels that the complex-clip mask leaves
    patterned, // the cells of a face pattern, less what a mask takes away when there is one
};

} // namespace krb
