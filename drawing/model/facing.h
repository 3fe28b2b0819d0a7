// Which way the faces of a mesh look, and whether they hide their backs.
#pragma once

#include <mutex>

#include "drawing/files/long_list.h"
#include "drawing/model/mesh.h"

namespace vorna::drawing::model {

// Of a finished mesh, which must outlive it and not change. Where the mesh consists of closed bodies whose faces are wound
// counter-clockwise as seen from outside, faces look outwards, and a viewer outside sees none from behind. Elsewhere vertices'
// normals decide. Found when first asked for, for all that is made of the mesh; several threads may ask at the same time.
class Facing {
public:
    // is_part: the mesh is a part of a body, whose faces never count as hiding their backs.
    explicit Facing(const Mesh& mesh, unsigned threads = 1, bool is_part = false);

    bool hides_backs() const {
        find_once();
        return hides_backs_;
    }
    // By triangle, of length 1.
    const Long_List<VT_Vector>& normals() const {
        find_once();
        return normals_;
    }

private:
    void find_once() const {
        std::call_once(is_found_, [this] { find(); });
    }
    void find() const;

    const Mesh& mesh_;
    unsigned threads_;
    bool is_part_;
    mutable std::once_flag is_found_;
    mutable bool hides_backs_ = false;
    mutable Long_List<VT_Vector> normals_;
};

} // namespace vorna::drawing::model
