// Standard images. Draws nothing yet: every function only reports its call, and the reading ones give no image. Images of the
// other pixel kind belong here.
#include "vorna/standard/standard_call.h"

VT_REPORTED(Draw_DCI_Index8_Image, const VT_DCI_Point*, const VT_DCI_Point*, std::int32_t, const std::uint8_t*)
VT_REPORTED(Draw_DCI_RGB32_Image, const VT_DCI_Point*, const VT_DCI_Point*, std::int32_t, const VT_RGB32*, std::int32_t,
            const VT_Packing*)
VT_REPORTED(Draw_DCI_Image, const VT_DCI_Point*, const VT_Shared_Image*)
VT_REPORTED(Write_Depth_Rectangle, const VT_DCI_Point*, const VT_DCI_Point*, std::int32_t, const std::uint16_t*)

void VD_Standard_Read_Depth_Image(VT_Renderer_Data& renderer, const VT_Rendition&, const VT_DCI_Point*, const VT_DCI_Point*,
                                  const Buffer_Format*, VT_Reference<VT_Shared_Image>& image) {
    const vorna::Standard_Call call(renderer, "VD_Standard_Read_Depth_Image");
    image = nullptr;
}

void VD_Standard_Read_Color_Image(VT_Renderer_Data& renderer, const VT_Rendition&, const VT_DCI_Point*, const VT_DCI_Point*,
                                  const Buffer_Format*, VT_Reference<VT_Shared_Image>& image) {
    const vorna::Standard_Call call(renderer, "VD_Standard_Read_Color_Image");
    image = nullptr;
}
