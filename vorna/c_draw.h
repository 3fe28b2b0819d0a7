// The drawing calls of the C interface.
//
// Forms of coordinates, the points of which are
//     2d    vorna_point      pixels, anywhere within 2^30; cut to the clip
//     2di   vorna_point_i    the same as whole numbers
//     3d    vorna_point_d    pixels after transformation and projection, anywhere; cut to the clip
//     dc    vorna_point      pixels that are meant to lie inside the window, for calls that repeat often
//     dci   vorna_point_i    the same as whole numbers
// z is a depth and counts on canvases with a depth buffer. Numbers that are not whole are rounded.
//
// All of them draw on a canvas between vorna_begin_picture and vorna_end_picture, by its attributes, and give
// VORNA_INVALID_ARGUMENT for null pointers, more than 2^31 - 1 points, too few colours, and numbers that are not finite. Null
// arrays are accepted where the count is 0. Too few points for a form draw nothing.
#pragma once

#include "vorna/c_canvas.h"

#if defined(__cplusplus)
extern "C" {
#endif
#if defined(__GNUC__)
#pragma GCC visibility push(default)
#endif

// A line through count points, in the line colour.
vorna_status vorna_draw_2d_polyline(vorna_canvas* canvas, size_t count, const vorna_point* points);
vorna_status vorna_draw_dc_polyline(vorna_canvas* canvas, size_t count, const vorna_point* points);
vorna_status vorna_draw_2di_polyline(vorna_canvas* canvas, size_t count, const vorna_point_i* points);
vorna_status vorna_draw_dci_polyline(vorna_canvas* canvas, size_t count, const vorna_point_i* points);
vorna_status vorna_draw_3d_polyline(vorna_canvas* canvas, size_t count, const vorna_point_d* points);

// colors: one for each segment, count - 1 of them, or a single one for all.
vorna_status vorna_draw_2d_colorized_polyline(vorna_canvas* canvas, size_t count, const vorna_point* points, size_t color_count,
                                              const vorna_color* colors);
vorna_status vorna_draw_dc_colorized_polyline(vorna_canvas* canvas, size_t count, const vorna_point* points, size_t color_count,
                                              const vorna_color* colors);
vorna_status vorna_draw_2di_colorized_polyline(vorna_canvas* canvas, size_t count, const vorna_point_i* points,
                                               size_t color_count, const vorna_color* colors);
vorna_status vorna_draw_dci_colorized_polyline(vorna_canvas* canvas, size_t count, const vorna_point_i* points,
                                               size_t color_count, const vorna_color* colors);
vorna_status vorna_draw_3d_colorized_polyline(vorna_canvas* canvas, size_t count, const vorna_point_d* points, size_t color_count,
                                              const vorna_color* colors);

// colors: one for each point, with shades between them.
vorna_status vorna_draw_2d_gouraud_polyline(vorna_canvas* canvas, size_t count, const vorna_point* points,
                                            const vorna_color* colors);
vorna_status vorna_draw_dc_gouraud_polyline(vorna_canvas* canvas, size_t count, const vorna_point* points,
                                            const vorna_color* colors);
vorna_status vorna_draw_2di_gouraud_polyline(vorna_canvas* canvas, size_t count, const vorna_point_i* points,
                                             const vorna_color* colors);
vorna_status vorna_draw_dci_gouraud_polyline(vorna_canvas* canvas, size_t count, const vorna_point_i* points,
                                             const vorna_color* colors);
vorna_status vorna_draw_3d_gouraud_polyline(vorna_canvas* canvas, size_t count, const vorna_point_d* points,
                                            const vorna_color* colors);

// A strip of count - 2 triangles, of which each has a point, the next and the one after that, in the face colour.
vorna_status vorna_draw_2d_polytriangle(vorna_canvas* canvas, size_t count, const vorna_point* points);
vorna_status vorna_draw_dc_polytriangle(vorna_canvas* canvas, size_t count, const vorna_point* points);
vorna_status vorna_draw_2di_polytriangle(vorna_canvas* canvas, size_t count, const vorna_point_i* points);
vorna_status vorna_draw_dci_polytriangle(vorna_canvas* canvas, size_t count, const vorna_point_i* points);
vorna_status vorna_draw_3d_polytriangle(vorna_canvas* canvas, size_t count, const vorna_point_d* points);

// colors: one for each triangle, count - 2 of them, or a single one for all.
vorna_status vorna_draw_2d_colorized_polytriangle(vorna_canvas* canvas, size_t count, const vorna_point* points,
                                                  size_t color_count, const vorna_color* colors);
vorna_status vorna_draw_dc_colorized_polytriangle(vorna_canvas* canvas, size_t count, const vorna_point* points,
                                                  size_t color_count, const vorna_color* colors);
vorna_status vorna_draw_2di_colorized_polytriangle(vorna_canvas* canvas, size_t count, const vorna_point_i* points,
                                                   size_t color_count, const vorna_color* colors);
vorna_status vorna_draw_dci_colorized_polytriangle(vorna_canvas* canvas, size_t count, const vorna_point_i* points,
                                                   size_t color_count, const vorna_color* colors);
vorna_status vorna_draw_3d_colorized_polytriangle(vorna_canvas* canvas, size_t count, const vorna_point_d* points,
                                                  size_t color_count, const vorna_color* colors);

// colors: one for each point, with shades between them.
vorna_status vorna_draw_2d_gouraud_polytriangle(vorna_canvas* canvas, size_t count, const vorna_point* points,
                                                const vorna_color* colors);
vorna_status vorna_draw_dc_gouraud_polytriangle(vorna_canvas* canvas, size_t count, const vorna_point* points,
                                                const vorna_color* colors);
vorna_status vorna_draw_2di_gouraud_polytriangle(vorna_canvas* canvas, size_t count, const vorna_point_i* points,
                                                 const vorna_color* colors);
vorna_status vorna_draw_dci_gouraud_polytriangle(vorna_canvas* canvas, size_t count, const vorna_point_i* points,
                                                 const vorna_color* colors);
vorna_status vorna_draw_3d_gouraud_polytriangle(vorna_canvas* canvas, size_t count, const vorna_point_d* points,
                                                const vorna_color* colors);

// colors, texture_points: one for each point. The texture of vorna_set_texture is multiplied with the shades.
vorna_status vorna_draw_2d_textured_polytriangle(vorna_canvas* canvas, size_t count, const vorna_point* points,
                                                 const vorna_color* colors, const vorna_texture_point* texture_points);
vorna_status vorna_draw_dc_textured_polytriangle(vorna_canvas* canvas, size_t count, const vorna_point* points,
                                                 const vorna_color* colors, const vorna_texture_point* texture_points);
vorna_status vorna_draw_2di_textured_polytriangle(vorna_canvas* canvas, size_t count, const vorna_point_i* points,
                                                  const vorna_color* colors, const vorna_texture_point* texture_points);
vorna_status vorna_draw_dci_textured_polytriangle(vorna_canvas* canvas, size_t count, const vorna_point_i* points,
                                                  const vorna_color* colors, const vorna_texture_point* texture_points);
vorna_status vorna_draw_3d_textured_polytriangle(vorna_canvas* canvas, size_t count, const vorna_point_d* points,
                                                 const vorna_color* colors, const vorna_texture_point* texture_points);

// A closed polygon of count corners, filled. color: null = the face colour.
vorna_status vorna_draw_2d_polygon(vorna_canvas* canvas, size_t count, const vorna_point* points, const vorna_color* color);
vorna_status vorna_draw_dc_polygon(vorna_canvas* canvas, size_t count, const vorna_point* points, const vorna_color* color);
vorna_status vorna_draw_2di_polygon(vorna_canvas* canvas, size_t count, const vorna_point_i* points, const vorna_color* color);
vorna_status vorna_draw_dci_polygon(vorna_canvas* canvas, size_t count, const vorna_point_i* points, const vorna_color* color);
vorna_status vorna_draw_3d_polygon(vorna_canvas* canvas, size_t count, const vorna_point_d* points, const vorna_color* color);

// A marker at each of count points, in the marker colour.
vorna_status vorna_draw_2d_polymarker(vorna_canvas* canvas, size_t count, const vorna_point* points);
vorna_status vorna_draw_dc_polymarker(vorna_canvas* canvas, size_t count, const vorna_point* points);
vorna_status vorna_draw_2di_polymarker(vorna_canvas* canvas, size_t count, const vorna_point_i* points);
vorna_status vorna_draw_dci_polymarker(vorna_canvas* canvas, size_t count, const vorna_point_i* points);
vorna_status vorna_draw_3d_polymarker(vorna_canvas* canvas, size_t count, const vorna_point_d* points);

// colors: one for each marker, or a single one for all.
vorna_status vorna_draw_2d_colorized_polymarker(vorna_canvas* canvas, size_t count, const vorna_point* points, size_t color_count,
                                                const vorna_color* colors);
vorna_status vorna_draw_dc_colorized_polymarker(vorna_canvas* canvas, size_t count, const vorna_point* points, size_t color_count,
                                                const vorna_color* colors);
vorna_status vorna_draw_2di_colorized_polymarker(vorna_canvas* canvas, size_t count, const vorna_point_i* points,
                                                 size_t color_count, const vorna_color* colors);
vorna_status vorna_draw_dci_colorized_polymarker(vorna_canvas* canvas, size_t count, const vorna_point_i* points,
                                                 size_t color_count, const vorna_color* colors);
vorna_status vorna_draw_3d_colorized_polymarker(vorna_canvas* canvas, size_t count, const vorna_point_d* points,
                                                size_t color_count, const vorna_color* colors);

// One pixel. color: null = the line colour.
vorna_status vorna_draw_dci_dot(vorna_canvas* canvas, const vorna_point_i* point, const vorna_color* color);

// A filled ellipse, and the outline of one from one angle to another. center: in device coordinates. radii: x and y in pixels,
// before the rotation. start, end, rotation: radians, counter-clockwise. color: null = the line colour.
vorna_status vorna_draw_dci_ellipse(vorna_canvas* canvas, const vorna_point_i* center, const vorna_point_i* radii, double start,
                                    double end, double rotation, const vorna_color* color);
vorna_status vorna_draw_dci_elliptical_arc(vorna_canvas* canvas, const vorna_point_i* center, const vorna_point_i* radii,
                                           double start, double end, double rotation, const vorna_color* color);

// Rows of palette indices, of colours, or of depths for the depth buffer, from the top down: the highest row lies at top_left->y,
// and every pixel of the first two has the depth top_left->z. stride: bytes from a row to the next, a multiple of a pixel's; 0 =
// no gaps. They are cut to window and clip. Without depth buffer depths are ignored.
vorna_status vorna_draw_dci_index8_image(vorna_canvas* canvas, const vorna_point_i* top_left, const uint8_t* indices,
                                         int32_t width, int32_t height, size_t stride);
vorna_status vorna_draw_dci_rgb32_image(vorna_canvas* canvas, const vorna_point_i* top_left, const vorna_color* colors,
                                        int32_t width, int32_t height, size_t stride);
vorna_status vorna_write_depth_rectangle(vorna_canvas* canvas, const vorna_point_i* top_left, const uint16_t* depths,
                                         int32_t width, int32_t height, size_t stride);
// An image of any format, its highest row at point->y.
vorna_status vorna_draw_dci_image(vorna_canvas* canvas, const vorna_point_i* point, const vorna_image* image);

// Fills the part of the area that lies in the window with a colour, or clears its depths to the farthest one. area: null = the
// window. fill: a face pattern, 64 = solid.
vorna_status vorna_draw_window(vorna_canvas* canvas, const vorna_rectangle* area, int32_t fill, vorna_color color);
vorna_status vorna_clear_depth_rectangle(vorna_canvas* canvas, const vorna_rectangle* area);

// Copies of an area inside the window; null = the window. These two need no picture. Without depth buffer VORNA_INVALID_ARGUMENT.
vorna_status vorna_read_color_image(vorna_canvas* canvas, const vorna_rectangle* area, vorna_image** image);
vorna_status vorna_read_depth_image(vorna_canvas* canvas, const vorna_rectangle* area, vorna_image** image);

#if defined(__GNUC__)
#pragma GCC visibility pop
#endif
#if defined(__cplusplus)
}
#endif
