// Forms of single entities.
#pragma once

#include "drawing/map/dxf/drawing.h"
#include "drawing/map/dxf/form.h"
#include "drawing/map/dxf/placement.h"
#include "drawing/map/dxf/texts.h"

namespace vorna::drawing::map::dxf {

class Form_Maker {
public:
    Form_Maker(const std::string& file, const Drawing& drawing, const std::string& font, Load_Limits& limits)
        : file_(file), values_(file), drawing_(drawing), limits_(limits), texts_(file, drawing, font, limits) {}

    // False for entities that are not drawn. Throws Map_Error and Load_Error.
    bool make(const Entity& entity, bool in_block, Forms& forms);
    const Text_Maker& texts() const noexcept { return texts_; }

private:
    bool make_text(const Entity& entity, bool in_block, Forms& forms);
    void make_arc(const Entity& entity, Forms& forms) const;
    void make_ellipse(const Entity& entity, Forms& forms) const;
    void make_face(const Entity& entity, Forms& forms) const;
    void make_point(const Entity& entity, Forms& forms) const;
    bool make_spline(const Entity& entity, Forms& forms);
    void make_polyline(const Entity& entity, Forms& forms);

    const std::string& file_;
    Values values_;
    const Drawing& drawing_;
    Load_Limits& limits_;
    Text_Maker texts_;
};

// From an entity's coordinates, whose plane has a normal of its own in some entities, seen from above.
Placement plane_of(const Entity& entity, const Values& values);

} // namespace vorna::drawing::map::dxf
