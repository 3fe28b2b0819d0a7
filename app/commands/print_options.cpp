// Options of images that are printed.
#include "app/commands/print_options.h"

#include <utility>

#include "drawing/job/print_size.h"

namespace vorna::app {

void add_print_options(std::vector<Option>& table, drawing::Print_Settings& options) {
    std::vector<Option> own{
        {.names = {"--dpi"},
         .value = number_value("N", 1, 10000),
         .text = "Pixels per inch of paper, for PNG, TIFF and PDF files to say; 300 by default with --paper and --scale",
         .target = &options.dpi},
        {.names = {"--paper"},
         .value = suggested_value("PAPER", drawing::paper_names()),
         .text = "Size of the image: A0 to A6, letter, legal or tabloid, with -landscape on its side, or WxHmm",
         .target = &options.paper,
         .excludes = {"--size"}},
        {.names = {"--scale"},
         .value = text_value("1:N"),
         .text =
             "So many units of what is drawn are one on paper: of a map in its projection, of drawings, of models with --ortho; "
             "the image is as large as it needs to be without --size and --paper",
         .target = &options.scale,
         .excludes = {"--zoom"}},
        {.names = {"--unit"},
         .value = choice_value("UNIT", drawing::unit_names()),
         .text = "Unit of the coordinates of drawings, models and planes; mm by default of drawings and models",
         .target = &options.unit,
         .needs = {"--scale"}}};
    for (Option& option : own) {
        option.group = "Print";
        table.push_back(std::move(option));
    }
}

} // namespace vorna::app
