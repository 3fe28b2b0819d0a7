// The smallest recording that still shows a fault.
#include "drawing/recording/reduction.h"

#include <algorithm>
#include <map>
#include <set>
#include <utility>
#include <variant>

#include "drawing/image/sha256.h"
#include "drawing/recording/call_kinds.h"
#include "drawing/recording/delta_debugging.h"
#include "drawing/recording/key_reduction.h"
#include "drawing/recording/recording_file.h"
#include "drawing/recording/summary.h"

namespace vorna::drawing::recording {

namespace {

using Places = std::vector<std::size_t>;

template <class Element> std::vector<Element> chosen(const std::vector<Element>& list, const Places& places) {
    std::vector<Element> result;
    result.reserve(places.size());
    for (const std::size_t place : places) {
        if (place < list.size()) {
            result.push_back(list[place]);
        }
    }
    return result;
}

// The arguments with some of their points, and the colours and parameters of these. The colour of a triangle or segment belongs
// to its first point, so that enough colours are left.
template <class Arguments> Arguments with_points(const Arguments& arguments, const Places& places) {
    Arguments result = arguments;
    result.points = chosen(arguments.points, places);
    if constexpr (requires { arguments.single; }) {
        if (arguments.colors && !arguments.single) {
            result.colors = chosen(*arguments.colors, places);
        }
    } else if constexpr (requires { arguments.colors; }) {
        result.colors = chosen(arguments.colors, places);
    }
    if constexpr (requires { arguments.parameters; }) {
        result.parameters.clear();
        for (const std::size_t place : places) {
            const auto first = arguments.parameters.begin() + static_cast<std::ptrdiff_t>(place * parameter_width);
            result.parameters.insert(result.parameters.end(), first, first + parameter_width);
        }
    }
    return result;
}

class Reducer {
public:
    Reducer(Recording recording, const Reduction_Settings& settings) : settings_(settings), best_(std::move(recording)) {
        file_ = file_of(best_, settings_.file_name);
        tried_.insert(digest_of(file_));
    }

    Recording run() {
        try {
            for (bool is_smaller = true; is_smaller;) {
                is_smaller = false;
                is_smaller_ = &is_smaller;
                leave_out_calls();
                leave_out_points();
                leave_out_renditions();
                leave_out_setup();
                shrink_window();
            }
        } catch (const Reduction_Ended&) {
        }
        return std::move(best_);
    }

private:
    static std::string digest_of(const std::string& file) {
        Sha256 sum;
        sum.add(reinterpret_cast<const std::uint8_t*>(file.data()), file.size());
        return sum.finish();
    }

    // Whether the candidate keeps the fault; then it is the best one.
    bool accepts(Recording candidate) {
        std::string file = file_of(candidate, settings_.file_name);
        if (!tried_.insert(digest_of(file)).second || !settings_.keeps(file)) {
            return false;
        }
        best_ = std::move(candidate);
        file_ = std::move(file);
        *is_smaller_ = true;
        if (settings_.progress) {
            settings_.progress(best_, file_.size());
        }
        return true;
    }

    void leave_out_calls() {
        const std::vector<Call> all = best_.calls;
        minimal_elements(all.size(), [&](const Places& places) {
            Recording candidate = without_calls();
            candidate.calls = chosen(all, places);
            return accepts(std::move(candidate));
        });
    }

    void leave_out_points() {
        for (std::size_t call = 0; call < best_.calls.size(); ++call) {
            const Call whole = best_.calls[call];
            minimal_elements(points_of(whole), [&](const Places& places) {
                Recording candidate = best_;
                std::visit(
                    [&](const auto& arguments) {
                        if constexpr (requires { arguments.points.size(); }) {
                            candidate.calls[call].arguments = with_points(arguments, places);
                        }
                    },
                    whole.arguments);
                return accepts(std::move(candidate));
            });
        }
    }

    // Calls that share a rendition go on sharing it.
    void leave_out_renditions() {
        std::set<const Rendition*> done;
        for (std::size_t call = 0; call < best_.calls.size(); ++call) {
            std::shared_ptr<const Rendition> current = best_.calls[call].rendition;
            if (!current || done.contains(current.get())) {
                continue;
            }
            const auto accepts_instead = [&](std::shared_ptr<const Rendition> other) {
                Recording candidate = best_;
                for (Call& each : candidate.calls) {
                    if (each.rendition == current) {
                        each.rendition = other;
                    }
                }
                const bool is_accepted = accepts(std::move(candidate));
                if (is_accepted) {
                    current = std::move(other);
                }
                return is_accepted;
            };
            if (accepts_instead(nullptr)) {
                continue;
            }
            Rendition rendition = *current;
            leave_out_keys(rendition, [&] { return accepts_instead(std::make_shared<const Rendition>(rendition)); });
            done.insert(current.get());
        }
        for (std::size_t call = 0; call < best_.calls.size(); ++call) {
            if (best_.calls[call].standard) {
                Recording candidate = best_;
                candidate.calls[call].standard = false;
                accepts(std::move(candidate));
            }
        }
    }

    void leave_out_setup() {
        const auto accepts_setup = [this](const Recording& setup) {
            Recording candidate = setup;
            candidate.calls = best_.calls;
            candidate.configuration.window = best_.configuration.window; // has a pass of its own
            return accepts(std::move(candidate));
        };
        Recording setup = without_calls();
        if (std::exchange(setup.output, std::nullopt) && !accepts_setup(setup)) {
            setup.output = best_.output;
        }
        leave_out_keys(setup.rendition, [&] { return accepts_setup(setup); });
        leave_out_keys(setup.configuration, [&] { return accepts_setup(setup); });
        const Option_Settings options = setup.configuration.options;
        setup.configuration.options = chosen(options, minimal_elements(options.size(), [&](const Places& places) {
                                                 setup.configuration.options = chosen(options, places);
                                                 return accepts_setup(setup);
                                             }));
        for (const auto& [write, test] : {std::pair(Recording().zbuffer_write, setup.zbuffer_test),
                                          std::pair(Recording().zbuffer_write, Recording().zbuffer_test)}) {
            setup.zbuffer_write = write;
            setup.zbuffer_test = test;
            if (!accepts_setup(setup)) {
                setup.zbuffer_write = best_.zbuffer_write;
                setup.zbuffer_test = best_.zbuffer_test;
            }
        }
    }

    VT_Int_Rectangle window() const {
        constexpr std::int32_t usual_side = 64;
        const Window& window = best_.configuration.window;
        const VT_Int_Pair origin = window.origin.value_or(VT_Int_Pair{});
        return {origin.x, origin.x + window.width.value_or(usual_side) - 1, origin.y,
                origin.y + window.height.value_or(usual_side) - 1};
    }

    // Each side moves inwards, by halves of the window first.
    void shrink_window() {
        struct Side {
            std::int32_t VT_Int_Rectangle::*moved;
            int direction;
            std::int32_t VT_Int_Rectangle::*low;
            std::int32_t VT_Int_Rectangle::*high;
        };
        using Area = VT_Int_Rectangle;
        for (const Side& side :
             {Side{&Area::right, -1, &Area::left, &Area::right}, Side{&Area::top, -1, &Area::bottom, &Area::top},
              Side{&Area::left, 1, &Area::left, &Area::right}, Side{&Area::bottom, 1, &Area::bottom, &Area::top}}) {
            const auto length = [&] { return window().*side.high - window().*side.low + 1; };
            for (std::int32_t step = length() / 2; step > 0; step /= 2) {
                bool is_smaller = true;
                while (is_smaller && step < length()) {
                    VT_Int_Rectangle area = window();
                    area.*side.moved += side.direction * step;
                    is_smaller = accepts_window(area);
                }
            }
        }
    }
    // Rectangles that reach out of the window are refused by replays.
    static void cut(VT_Int_Rectangle& rectangle, const VT_Int_Rectangle& window) {
        if (const VT_Int_Rectangle part = vorna::common_part(rectangle, window); !vorna::is_empty(part)) {
            rectangle = part;
        }
    }
    bool accepts_window(const VT_Int_Rectangle& area) {
        Recording candidate = best_;
        Window& window = candidate.configuration.window;
        window.width = area.right - area.left + 1;
        window.height = area.top - area.bottom + 1;
        if (window.origin || area.left != 0 || area.bottom != 0) {
            window.origin = VT_Int_Pair{area.left, area.bottom};
        }
        if (candidate.output) {
            cut(*candidate.output, area);
        }
        for (Call& call : candidate.calls) {
            std::visit(
                [&area](auto& arguments) {
                    if constexpr (requires { arguments.rectangle; }) {
                        cut(arguments.rectangle, area);
                    }
                },
                call.arguments);
        }
        return accepts(std::move(candidate));
    }

    Recording without_calls() const {
        Recording result;
        result.configuration = best_.configuration;
        result.zbuffer_write = best_.zbuffer_write;
        result.zbuffer_test = best_.zbuffer_test;
        result.output = best_.output;
        result.rendition = best_.rendition;
        return result;
    }

    const Reduction_Settings& settings_;
    Recording best_;
    std::string file_;            // of the best one
    std::set<std::string> tried_; // digests
    bool* is_smaller_ = nullptr;
};

} // namespace

Recording reduced(Recording recording, const Reduction_Settings& settings) {
    return Reducer(std::move(recording), settings).run();
}

std::size_t points_in(const Recording& recording) {
    std::size_t points = 0;
    for (const Call& call : recording.calls) {
        points += points_of(call);
    }
    return points;
}

} // namespace vorna::drawing::recording
