// A model as it is drawn: its faces, its edges or both.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "app/scene/edge_renderer.h"
#include "app/scene/scene.h"

namespace app {

struct Drawn_Model {
    std::unique_ptr<scene::Scene> faces;
    std::unique_ptr<scene::Edge_Renderer> edges;

    const std::vector<VT_Vector>& points() const { return faces ? faces->points() : edges->points(); }
    std::string summary() const;
};

} // namespace app
