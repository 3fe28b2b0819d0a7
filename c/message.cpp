// Statuses, messages, version, and memory that is handed over.
#include <cstdlib>
#include <new>

#include "c/call.h"
#include "c/reading.h"
#include "drawing/files/interruption.h"
#include "drawing/files/usage_error.h"

namespace vorna::c {
namespace {

constexpr const char* no_memory = "not enough memory";

// The message, or a constant where there is no memory for it.
struct Message {
    std::string text;
    const char* shown = "";
};

Message& message() noexcept {
    thread_local Message of_thread;
    return of_thread;
}

vorna_status note(vorna_status status, const char* what) noexcept {
    Message& kept = message();
    try {
        kept.text = what;
        kept.shown = kept.text.c_str();
    } catch (...) {
        kept.shown = no_memory;
    }
    return status;
}

} // namespace

vorna_status note_exception() noexcept {
    try {
        throw;
    } catch (const std::bad_alloc&) {
        message().shown = no_memory;
        return VORNA_OUT_OF_MEMORY;
    } catch (const std::length_error&) {
        message().shown = no_memory;
        return VORNA_OUT_OF_MEMORY;
    } catch (const drawing::Interrupted& interrupted) {
        drawing::Interruption::raise_again(interrupted);
        return note(VORNA_INTERRUPTED, "interrupted by a signal");
    } catch (const drawing::Interruption_Error& error) {
        return note(VORNA_INTERRUPTED, error.what());
    } catch (const drawing::Usage_Error& error) {
        return note(VORNA_INVALID_INPUT, error.what());
    } catch (const std::invalid_argument& error) {
        return note(VORNA_INVALID_ARGUMENT, error.what());
    } catch (const std::exception& error) {
        return note(VORNA_FAILED, error.what());
    } catch (...) {
        return note(VORNA_FAILED, "an exception that says nothing");
    }
}

const vorna_reading& default_reading() noexcept {
    static const vorna_reading reading{sizeof reading, 0, 0, 0, 0, -1, nullptr, nullptr};
    return reading;
}

VORNA_SETTINGS_END(vorna_reading, input_format);

std::optional<drawing::model::Section> section_of(const double* plane) {
    if (!plane) {
        return {};
    }
    return drawing::model::Section{{plane[0], plane[1], plane[2]}, plane[3]};
}

drawing::Reading reading_of(const vorna_reading* given) {
    const vorna_reading reading = settings_or(given, default_reading());
    require(!std::isnan(reading.crease), "crease: expected a number");
    drawing::Reading result;
    result.max_memory = reading.max_memory;
    result.outside_of_folder = reading.outside_of_folder != 0;
    result.threads = reading.threads;
    result.accepts_no_triangles = reading.accepts_no_triangles != 0;
    if (reading.crease >= 0) {
        result.crease = reading.crease;
    }
    result.section = section_of(reading.section);
    result.input_format = text_of(reading.input_format);
    return result;
}

drawing::Load_Limits limits_of(const vorna_reading* given) {
    const drawing::Reading reading = reading_of(given);
    return drawing::Load_Limits(reading.max_memory > 0 ? std::optional(reading.max_memory) : std::nullopt,
                                reading.outside_of_folder, 1);
}

char* copied(const char* bytes, std::size_t size) {
    auto* const copy = static_cast<char*>(std::malloc(size + 1));
    if (!copy) {
        throw std::bad_alloc();
    }
    std::memcpy(copy, bytes, size);
    copy[size] = 0;
    return copy;
}

} // namespace vorna::c

const char* vorna_last_message(void) {
    return vorna::c::message().shown;
}

const char* vorna_version(void) {
    return VORNA_VERSION_TEXT;
}

int32_t vorna_version_number(void) {
    return VORNA_VERSION;
}

void vorna_free(void* memory) {
    std::free(memory);
}

vorna_status vorna_reading_init(vorna_reading* reading, size_t size) {
    return vorna::c::fill_defaults(reading, size, vorna::c::default_reading());
}
