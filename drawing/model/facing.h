// Which way the faces of a mesh look, and whether they hide their backs.
#pragma once

#include "drawing/model/mesh.h"

namespace vorna::drawing::model {

// Of a finished mesh, which must outlive it. Where the mesh consists of closed bodies whose faces are wound counter-clockwise as
// seen from outside, faces look outwards, and a viewer outside sees none from behind. Elsewhere vertices' normals decide.
class Facing {
public:
    explicit Facing(const Mesh& mesh);

    bool hides_backs() const noexcept { return hides_backs_; }
    // Of length 1.
    VT_Vector normal(std::size_t triangle) const;

private:
    const Mesh& mesh_;
    bool hides_backs_;
};

} // namespace vorna::drawing::model
