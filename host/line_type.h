// Line types: how a line is cut into dashes, gaps and dots. Lengths are in pixels.
#pragma once

#include <cstdint>

#include "host/color.h"
#include "host/export.h"
#include "host/geometry.h"
#include "host/object.h"

namespace vorna::line_type_kind {
inline constexpr std::int32_t cased = 7;
} // namespace vorna::line_type_kind

class VORNA_API VT_Line_Type final : public VT_Counted {
public:
    VT_Counted* clone() const override { return new VT_Line_Type(*this); }
    // Multiplies every length by the factor.
    void scale(double factor) noexcept;

    std::int32_t kind = 0; // cased: the casing, of width and color, is drawn first and the line over it
    double width = 0;      // of the casing
    VT_RGB32 color;        // of the casing
    std::int32_t mode = 0; // 2 = the leading and the trailing part are a dot at the end of the line instead of a dash
    // Lengths of the dashes before and after the repeated elements. The first value of a pair is in force, the second one is
    // reserved and is scaled too.
    double leading[2] = {0, 0};
    double trailing[2] = {0, 0};
    VT_Array<double> lengths; // of the repeated elements
    VT_Array<double> kinds;   // of the repeated elements: above 0 a dash, below 0 a gap, 0 a dot

    // Marks a segment that is drawn without a line type.
    static const VT_Reference<const VT_Line_Type> None;
};

class VORNA_API VT_Line_Type_Set final : public VT_Counted {
public:
    VT_Counted* clone() const override { return new VT_Line_Type_Set(*this); }

    bool per_segment = false; // a type for each segment instead of the first type along the whole polyline
    double scale = 1;
    VT_Array<VT_Reference<const VT_Line_Type>> types;

    // The set of lines without line types, compared by identity.
    static const VT_Reference<const VT_Line_Type_Set> None;
};
