// Labels in builds without FreeType: none.
#include "drawing/map/label_font.h"

namespace vorna::drawing::map {

std::unique_ptr<Label_Font> load_label_font(const std::string&, Load_Limits&) {
    throw Usage_Error("expected a build with FreeType, which letters need, found one without");
}

} // namespace vorna::drawing::map
