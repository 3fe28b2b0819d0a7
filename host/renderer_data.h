// The base of every renderer: option tables, callbacks, action table and the hooks that the host calls.
#pragma once

#include <cstdint>

#include "host/actions.h"
#include "host/export.h"
#include "host/frame_buffer.h"
#include "host/object.h"
#include "host/options.h"
#include "host/renderer_options.h"

// Releases what the reference holds and leaves a new buffer of that size and format in it.
struct VT_Buffer_Creation {
    void (*function)(void* context, std::int32_t width, std::int32_t height, const Buffer_Format* format,
                     VT_Reference<Frame_Buffer>& buffer) = nullptr;
    void* context = nullptr;
};

// Shows a rectangle of the colour buffer: corners in device coordinates, destination of its top left pixel in window
// coordinates that run downwards. Returns what update returns.
struct VT_Presentation {
    std::int32_t (*function)(void* context, const VT_DCI_Point& top_left, const VT_DCI_Point& bottom_right,
                             const VT_Reference<Frame_Buffer>& buffer, std::int32_t destination_x,
                             std::int32_t destination_y) = nullptr;
    void* context = nullptr;
};

// Told of each standard function that draws on a renderer's behalf, the outermost only.
struct VT_Standard_Observer {
    void (*function)(void* context, const char* name) = nullptr;
    void* context = nullptr;
};

// One thread drives one renderer at a time.
class VORNA_API VT_Renderer_Data : public VT_Counted {
public:
    // A prototype with the host's own callbacks.
    VT_Renderer_Data();
    // Options, tables and callbacks of the prototype; no action is installed.
    VT_Renderer_Data(const VT_Renderer_Data& prototype);
    VT_Renderer_Data& operator=(const VT_Renderer_Data&) = delete;
    ~VT_Renderer_Data() override;

    VT_Counted* clone() const override { return nullptr; }

    // The order of these operations is the order of the host's virtual table.
    virtual VT_Renderer_Options& current_renderer_options() { return designated_->current_options; }
    virtual VT_Renderer_Options& current_renderer_options_for_update() { return designated_->current_options; }
    virtual void optimize_current_options();
    virtual void optimize_current_renderer_options();
    virtual VT_Option_Table& current_option_table() { return designated_->current_table; }
    virtual std::int32_t establish() { return 0; }
    // Carries the requested options over, fits them to what the renderer declares, then runs establish. Returns its result.
    virtual std::int32_t establish_all();
    virtual void begin_picture() {}
    virtual void begin_picture_all();
    virtual void end_picture() {}
    virtual void end_picture_all();
    virtual std::int32_t update(const VT_Int_Rectangle&) { return 0; }
    virtual std::int32_t update_all(const VT_Int_Rectangle& rectangle);

    // With true the host's standard function is put into every slot; with false every slot is emptied.
    void set_standard_actions(bool on);
    // Gives every value of the requested table that has changed since the last time to the current table.
    void update_current_options();

    VT_Renderer_Options declared_options; // what the renderer can do
    VT_Renderer_Options current_options;  // what it is asked to do
    VT_Option_Table requested_table;
    VT_Option_Table current_table;
    VT_Buffer_Creation buffer_creation;
    VT_Presentation presentation;
    VT_Action_Table actions;

    VT_Standard_Observer standard_observer;
    std::int32_t standard_depth = 0; // standard functions that run at this moment, one inside the other

protected:
    VT_Renderer_Data* designated_ = this; // whose options count as current
};
