// Records what an application draws.
//
// A recorder replaces each of a renderer's slots by a function that stores the call and then makes it through the renderer's own
// table. That table is in force during the call, so that calls between renderer and host are neither recorded nor changed. The
// setters of depth behaviour and the presentation are replaced likewise.
#pragma once

#include <map>
#include <memory>
#include <string>

#include "drawing/recording/recording.h"
#include "drawing/recording/rendition_recorder.h"
#include "drawing/recording/session.h"
#include "host/rendition.h"

namespace vorna::drawing::recording {

// Begins with the session's next establish, which must be its first, because earlier contents of the buffers are not recorded.
// The session must outlive the recorder. A presentation that is installed during the recording is not recorded.
class Recorder {
public:
    explicit Recorder(Session& session);
    Recorder(const Recorder&) = delete;
    Recorder& operator=(const Recorder&) = delete;
    ~Recorder();

    // Ends the recording and returns it. output: device pixels that were shown, none = the window. Throws
    // std::runtime_error when something was drawn that recordings cannot hold.
    Recording finish(const std::optional<VT_Int_Rectangle>& output = {});

    // The renderer's own slots.
    const VT_Action_Table& own_actions() const noexcept { return own_actions_; }

    // Whether the host draws the following calls, as if their slots were empty.
    void set_standard(bool standard) noexcept { is_standard_ = standard; }

    // For the session, around its establish.
    void before_establish();
    void after_establish();

private:
    // The owner of the replaced slots, through which they find the recorder.
    class Slots;
    struct Made_Slots;
    // Restores the renderer's own slots during its lifetime.
    class Pause;

    void install_slots();
    void restore();
    void add(const Call_Kind& kind, const VT_Rendition* rendition, Arguments&& arguments);
    Configuration changed_configuration();
    void set_zbuffer_write(bool value);
    std::int32_t set_zbuffer_test(const std::int32_t* value);
    template <class Setter> void replace_setter(const char* name, Setter by, Setter& own);
    static std::int32_t note_presentation(void* recorder, const VT_DCI_Point& top_left, const VT_DCI_Point& bottom_right,
                                          const VT_Reference<Frame_Buffer>& buffer, std::int32_t x, std::int32_t y);

    Session& session_;
    VT_Renderer_Data& renderer_;
    Recording recording_;
    std::string problem_; // the first thing that recordings cannot hold
    std::unique_ptr<Slots> slots_;
    VT_Action_Table own_actions_;
    bool is_recording_ = false;
    bool is_established_ = false;
    bool is_standard_ = false;
    VT_Bool_Setter own_set_zbuffer_write_ = nullptr;
    VT_Int_Setter own_set_zbuffer_test_ = nullptr;
    VT_Presentation own_presentation_;

    // The defaults of recordings at first, then the current options.
    VT_Renderer_Options options_;
    std::map<std::string, VT_Option_Content> settings_;
    Rendition_Recorder renditions_{options_};
};

} // namespace vorna::drawing::recording
