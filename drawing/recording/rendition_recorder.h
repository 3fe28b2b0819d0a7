// The renditions of an application's calls, in the form of recordings.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "drawing/recording/recording.h"
#include "host/renderer_options.h"
#include "host/rendition.h"

namespace vorna::drawing::recording {

class Rendition_Recorder {
public:
    // options: the current options, which must outlive the recorder.
    explicit Rendition_Recorder(const VT_Renderer_Options& options) : options_(options) {}

    // To be called after each change of the options or the window.
    void begin(const VT_Int_Rectangle& window);

    // Equal renditions give the same object.
    std::shared_ptr<const Rendition> recorded(const VT_Rendition& rendition);

    // The first thing that recordings cannot hold; empty when there is none.
    const std::string& problem() const noexcept { return problem_; }

private:
    Rendition described(const VT_Rendition& rendition);
    template <Keyed Group, class Host> Group described_group(const Host& host, std::int32_t mode);
    template <class Value> static std::optional<Value> described_attribute(const Value& value, const Value& usual);
    static std::optional<std::optional<Line_Type_Set>> described_attribute(const VT_Reference<const VT_Line_Type_Set>& set,
                                                                           const VT_Reference<const VT_Line_Type_Set>& usual);
    static std::optional<Bitmap> described_attribute(const VT_Reference<const VT_Pattern_Bitmap>& bitmap,
                                                     const VT_Reference<const VT_Pattern_Bitmap>& usual);
    std::optional<Texture> described_attribute(const VT_Reference<const VT_Basic_Material>& material,
                                               const VT_Reference<const VT_Basic_Material>& usual);
    Texture described_texture(const VT_Basic_Material& material);
    std::optional<std::uint8_t> index_unless_closest(std::uint8_t index, VT_RGB32 color) const;

    // Lists made from objects of the host. A reference to the object keeps its address from being used again.
    template <class Object, class Element>
    using Lists = std::map<std::pair<const Object*, std::uint32_t>, std::pair<VT_Reference<const Object>, Shared_List<Element>>>;

    const VT_Renderer_Options& options_;
    VT_Int_Rectangle window_{};
    std::string problem_;

    std::unordered_map<std::string, std::shared_ptr<const Rendition>> renditions_; // by their bytes, for the current options
    std::string last_bytes_;
    std::shared_ptr<const Rendition> last_;
    Lists<VT_Contour_Set, std::vector<VT_Point>> contours_;
    Lists<VT_Shared_Image, VT_RGB32> texels_;
    std::vector<VT_Reference<const VT_Counted>> kept_; // their addresses are part of the bytes of renditions
};

} // namespace vorna::drawing::recording
