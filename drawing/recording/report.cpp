// Reports of replays as JSON.
#include <cstring>

#include "drawing/image/image_file.h"
#include "drawing/recording/document_writers.h"
#include "drawing/recording/replay.h"

namespace vorna::drawing::recording {

namespace {

using Number = std::int64_t;

void put_pixel(Json_Printer& json, Buffer_Format format, const std::uint8_t* pixel) {
    switch (format) {
    case Buffer_Format::index8:
        json.value(Number{*pixel});
        break;
    case Buffer_Format::depth16: {
        std::uint16_t depth;
        std::memcpy(&depth, pixel, sizeof depth);
        json.value(Number{depth});
        break;
    }
    default:
        json.start_list();
        for (const int channel : {2, 1, 0, 3}) {
            json.value(Number{pixel[channel]});
        }
        json.end_list();
    }
}

void put(Json_Printer& json, const Report::Read& read) {
    if (!read.image) {
        json.value(nullptr);
        return;
    }
    const VT_Shared_Image& image = *read.image;
    json.start_object();
    json.name("call");
    json.value(static_cast<Number>(read.call));
    json.name("width");
    json.value(Number{image.width()});
    json.name("height");
    json.value(Number{image.height()});
    json.name("format");
    json.value(static_cast<Number>(image.format()));
    json.name("rows");
    json.start_list();
    for (std::int32_t r = 0; r < image.height(); ++r) {
        json.start_list();
        for (std::int32_t c = 0; c < image.width(); ++c) {
            put_pixel(json, image.format(), image.row(r) + c * vorna::bytes_per_pixel(image.format()));
        }
        json.end_list();
    }
    json.end_list();
    json.end_object();
}

void put(Json_Printer& json, const VT_DCI_Point& point) {
    json.start_list();
    json.value(Number{point.x});
    json.value(Number{point.y});
    json.value(Number{point.z});
    json.end_list();
}

} // namespace

// Printed piece by piece: a document of the JSON library ends the process when memory runs out, see json_release.h.
std::string json_of(const Report& report) {
    Json_Printer json;
    json.start_object();
    json.name("standard");
    json.start_list();
    for (const Report::Standard& drawn : report.standard) {
        json.start_list();
        json.value(static_cast<Number>(drawn.call));
        json.value(std::string_view(drawn.function));
        json.end_list();
    }
    json.end_list();
    json.name("reads");
    json.start_list();
    for (const Report::Read& read : report.reads) {
        put(json, read);
    }
    json.end_list();
    json.name("presented");
    json.start_list();
    for (const Report::Presented& shown : report.presented) {
        json.start_list();
        put(json, shown.top_left);
        put(json, shown.bottom_right);
        json.value(Number{shown.x});
        json.value(Number{shown.y});
        json.end_list();
    }
    json.end_list();
    json.end_object();
    return json.take();
}

} // namespace vorna::drawing::recording
