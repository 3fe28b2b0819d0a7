// Line types: how a styled line is cut into dashes, gaps and dots.
#pragma once

#include <cstdint>

#include "host/color.h"
#include "host/export.h"
#include "host/geometry.h"
#include "host/object.h"

class VORNA_API VT_Line_Type final : public VT_Counted {
public:
    VT_Counted* clone() const override { return new VT_Line_Type(*this); }
    // Multiplies every length by the factor.
    void scale(double factor) noexcept;

    std::int32_t kind = 0; // 7 = cased: the casing, width and color, is drawn first and the line over it
    double width = 0;      // of the casing
    VT_RGB32 color;        // of the casing
    std::int32_t mode = 0; // 2 = leading and trailing parts draw a dot at the very ends only
    // The first value of each pair is the length in force; the second is the host's own copy and scales along.
    double leading[2] = {0, 0};
    double trailing[2] = {0, 0};
    VT_Array<double> lengths; // of the repeating elements
    VT_Array<double> kinds;   // above 0 dash, below 0 gap, 0 dot

    // Marks a segment that is drawn without a line type.
    static const VT_Reference<const VT_Line_Type> None;
};

class VORNA_API VT_Line_Type_Set final : public VT_Counted {
public:
    VT_Counted* clone() const override { return new VT_Line_Type_Set(*this); }

    bool per_segment = false; // one type a segment instead of one along the polyline
    double scale = 1;
    VT_Array<VT_Reference<const VT_Line_Type>> types;

    // The set of a plain line; compared by identity.
    static const VT_Reference<const VT_Line_Type_Set> None;
};
