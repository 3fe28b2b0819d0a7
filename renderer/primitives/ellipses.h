// Members of the ellipse and elliptical arc slots for 32-bit buffers without depth.
#pragma once

#include "renderer/core/member.h"

namespace krb {

// A filled ellipse, and its outline one pixel wide. Whole ellipses only, with a plain line and axes along rows and columns; all
// else is the host's. The centre is a column and row of the buffer, without the window origin, and the whole shape must lie
// inside the buffer. The clip region is honoured, the hard clip is not.
//
// A filled shape covers, in every row that its outline touches, the pixels from the outline's leftmost to its rightmost one, each
// once.
extern template struct Member<slots::Draw_DCI_Ellipse, Case::rgb32>;
extern template struct Member<slots::Draw_DCI_Elliptical_Arc, Case::rgb32>;

} // namespace krb
