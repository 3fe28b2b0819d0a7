// One image of the library: settings of the public interface as a job.
#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "drawing/drawing.h"
#include "drawing/files/input.h"
#include "drawing/files/load_limits.h"
#include "drawing/job/job.h"
#include "drawing/job/map_drawing.h"
#include "drawing/job/model_drawing.h"
#include "drawing/model/facing.h"

namespace vorna::drawing {

struct Model::Content {
    std::shared_ptr<Load_Limits> limits;
    std::string name;
    model::Mesh mesh;
    // By number of a triangle that is drawn its number among those that were given; empty = the same.
    std::vector<std::uint32_t> given_numbers;
    model::Up_Axis up_axis = model::Up_Axis::y;

    // Of the mesh, which has not changed since it was first asked for. Several threads may ask at the same time.
    const model::Facing& facing() const {
        std::call_once(has_facing_, [this] { facing_ = std::make_unique<model::Facing>(mesh, limits->threads()); });
        return *facing_;
    }

    Content(std::shared_ptr<Load_Limits> reading_limits, std::string model_name)
        : limits(std::move(reading_limits)), name(std::move(model_name)) {}

private:
    mutable std::once_flag has_facing_;
    mutable std::unique_ptr<model::Facing> facing_;
};

struct Map::Content {
    Content(std::vector<Input> inputs, const map::Map_Settings& settings, const std::shared_ptr<Load_Limits>& limits);

    std::string name;
    std::shared_ptr<map::Map_Scene> scene;
};

std::uint64_t pixels_of(VT_Int_Pair size) noexcept;
Module_Choice module_of(const Image_Settings& settings);
// With the scale of the print, if it gives one. Throws Usage_Error for a camera that looks nowhere or has no scale.
model::Camera_Settings checked_camera(const model::Camera_Settings& camera, const model::Mesh& mesh, VT_Int_Pair size,
                                      const Print_Settings& print);

// A drawing and its job.
struct Image_Maker {
    Image_Maker(const Model& model, const Model_View& view, const Image_Settings& settings, std::vector<std::string>* warnings);
    Image_Maker(const Map& map, const Image_Settings& settings);

    // Of the next image of a model; for images without an own number of pixels to average.
    void set_size(const Image_Settings& settings, VT_Int_Pair size);
    Image image();
    // more_memory: bytes of other planes that stay in memory beside the samples.
    Image_Samples samples(std::uint64_t more_memory = 0);
    // A signal that waits while the file is written comes afterwards.
    std::string write(const std::string& file);

    Job_Settings job;
    Module_Choice module;
    std::unique_ptr<Drawing> drawing;
};

} // namespace vorna::drawing
