// The base class of renderers: options, callbacks, the action table, and the functions that the host calls.
#pragma once

#include <cstdint>

#include "host/actions.h"
#include "host/export.h"
#include "host/frame_buffer.h"
#include "host/object.h"
#include "host/options.h"
#include "host/renderer_options.h"

// Replaces the buffer in the reference by a new one of that size, in pixels, and format; null when it cannot be made.
struct VT_Buffer_Creation {
    void (*function)(void* context, std::int32_t width, std::int32_t height, const Buffer_Format* format,
                     VT_Reference<Frame_Buffer>& buffer) = nullptr;
    void* context = nullptr;
};

// Shows a rectangle of the colour buffer. Corners are device coordinates, inclusive; the destination is that of the top left
// pixel, from the top left of the window rightwards and downwards. VT_Renderer_Data::update returns its result.
struct VT_Presentation {
    std::int32_t (*function)(void* context, const VT_DCI_Point& top_left, const VT_DCI_Point& bottom_right,
                             const VT_Reference<Frame_Buffer>& buffer, std::int32_t destination_x,
                             std::int32_t destination_y) = nullptr;
    void* context = nullptr;
};

// Called with the name of each standard function that starts, except for those that another one calls.
struct VT_Standard_Observer {
    void (*function)(void* context, const char* name) = nullptr;
    void* context = nullptr;
};

// One thread at a time uses a renderer; different renderers may be used by several threads at once.
class VORNA_API VT_Renderer_Data : public VT_Counted {
public:
    // A prototype with the default callbacks.
    VT_Renderer_Data();
    // Copies options, tables and callbacks of the prototype; all slots are empty.
    VT_Renderer_Data(const VT_Renderer_Data& prototype);
    VT_Renderer_Data& operator=(const VT_Renderer_Data&) = delete;
    ~VT_Renderer_Data() override;

    VT_Counted* clone() const override { return nullptr; }

    // Modules depend on the order of these functions in the virtual table.
    virtual VT_Renderer_Options& current_renderer_options() { return designated_->current_options; }
    virtual VT_Renderer_Options& current_renderer_options_for_update() { return designated_->current_options; }
    virtual void optimize_current_options();
    virtual void optimize_current_renderer_options();
    virtual VT_Option_Table& current_option_table() { return designated_->current_table; }
    virtual std::int32_t establish() { return 0; }
    // Copies changed requested options to the current ones, limits these to what the renderer declares, and returns the result of
    // establish.
    virtual std::int32_t establish_all();
    virtual void begin_picture() {}
    virtual void begin_picture_all();
    virtual void end_picture() {}
    virtual void end_picture_all();
    virtual std::int32_t update(const VT_Int_Rectangle&) { return 0; }
    virtual std::int32_t update_all(const VT_Int_Rectangle& rectangle);

    // Installs the standard function in every slot, or empties every slot.
    void set_standard_actions(bool on);
    // Copies each value of the requested table that has changed since the last call to the current table.
    void update_current_options();

    VT_Renderer_Options declared_options; // what the renderer supports
    VT_Renderer_Options current_options;  // what the application requests
    VT_Option_Table requested_table;
    VT_Option_Table current_table;
    VT_Buffer_Creation buffer_creation;
    VT_Presentation presentation;
    VT_Action_Table actions;

    VT_Standard_Observer standard_observer;
    std::int32_t standard_depth = 0; // how many standard functions are running, each called by the one before

protected:
    VT_Renderer_Data* designated_ = this; // the renderer whose options are the current ones
};
