// A map or drawing that is looked at from anywhere: read and projected once, drawn into any window.
#pragma once

#include <memory>
#include <string>

#include "app/commands/map_command.h"
#include "drawing/map/map_painter.h"
#include "drawing/recording/session.h"

namespace vorna::app {

class Map_Scene {
public:
    Map_Scene() = default;
    Map_Scene(const Map_Scene&) = delete;
    Map_Scene& operator=(const Map_Scene&) = delete;
    virtual ~Map_Scene() = default;

    // Everything, or what the options say, fills a picture of that size.
    virtual drawing::map::View fitted(VT_Int_Pair size) const = 0;
    virtual void look(const drawing::map::View& view) = 0;
    // Establishes the session for the view; then what it draws is a picture of its own.
    virtual void set_up(drawing::Session& session) = 0;
    virtual void draw(drawing::Session& session, VT_RGB32 background) const = 0;
    // How many shapes and positions.
    virtual std::string summary() const = 0;
};

// Both must outlive the scene; the picture's colours and smoothing may change between a look and the next set_up. Throws what
// reading and options throw.
std::unique_ptr<Map_Scene> load_map_scene(const Map_Picture& picture, const Map_Options& options);

} // namespace vorna::app
