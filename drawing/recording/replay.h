// Recordings drawn through a renderer.
#pragma once

#include <cstddef>
#include <functional>
#include <limits>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "drawing/recording/recording.h"
#include "drawing/recording/session.h"

namespace vorna::drawing::recording {

// Events of a replay besides drawing.
struct Report {
    struct Standard {
        std::size_t call;
        std::string function;
    };
    struct Read {
        std::size_t call;
        VT_Reference<VT_Shared_Image> image; // null: the renderer left none
    };
    struct Presented {
        VT_DCI_Point top_left;
        VT_DCI_Point bottom_right;
        std::int32_t x, y;
    };

    std::vector<Standard> standard; // host functions that drew in the renderer's stead, in order
    std::vector<Read> reads;
    std::vector<Presented> presented;
};

std::string json_of(const Report& report);

// A call that recordings may hold but that no replay draws.
class Not_Drawn : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

struct Replay_Settings {
    bool unchecked = false;            // coordinates that renderers trust are not checked either
    bool reports_standard = true;      // Report::standard; several threads draw only without it
    std::int32_t largest_side = 16384; // of windows, for who has little memory or time
    // The calls that are made, `last` included. Of earlier calls only those that set the renderer up are made.
    std::size_t first = 0;
    std::size_t last = std::numeric_limits<std::size_t>::max();
    // Called around every call that is made. May be empty.
    std::function<void(std::size_t call)> before_call;
    std::function<void(std::size_t call)> after_call;
};

// Where a recording says nothing else.
inline constexpr Window default_window{64, 64, VT_Int_Pair{}, false};

// Puts what the window has into the options.
void lay_over(VT_Renderer_Options& options, const Window& window);

// Throws Recording_Error for a recording that no host would send, and Not_Drawn before it draws anything.
Report replay(const Recording& recording, Session& session, const Replay_Settings& settings = {});

// A replay whose calls somebody else chooses. Recording and session must outlive it.
class Replayer {
public:
    // Of the settings those count that hold for single calls.
    Replayer(const Recording& recording, Session& session, const Replay_Settings& settings);
    Replayer(const Replayer&) = delete;
    Replayer& operator=(const Replayer&) = delete;
    ~Replayer();

    // Throw as `replay` does.
    void begin(); // first: establishes the renderer
    void make(std::size_t call);
    // Draws the call with other arguments, of its own type, and other attributes.
    void draw_as(std::size_t call, const Arguments& arguments, const VT_Reference<VT_Rendition>& rendition);

    // Gives up what calls have read and presented so far.
    void drop_report() noexcept;

    // The attributes that `make` draws the call with, by the options in force.
    VT_Reference<VT_Rendition> rendition_of(std::size_t call);

private:
    class Implementation;

    const Replay_Settings settings_;
    std::unique_ptr<Implementation> replay_;
};

} // namespace vorna::drawing::recording
