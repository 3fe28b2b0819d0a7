// A model as it is drawn.
#include "app/drawn_model.h"

namespace app {

std::string Drawn_Model::summary() const {
    return (faces ? faces->summary() : "") + (faces && edges ? ", " : "") + (edges ? edges->summary() : "");
}

} // namespace app
