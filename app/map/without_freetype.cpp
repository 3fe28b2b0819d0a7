// Builds without FreeType have no letters.
#include "app/map/label_font.h"

namespace app::map {

std::unique_ptr<Label_Font> load_label_font(const std::string&, int) {
    throw Usage_Error("--labels: expected a build with FreeType, found one without");
}

} // namespace app::map
