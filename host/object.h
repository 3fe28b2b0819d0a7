// Shared objects: atomic reference counts, serial numbers, copy on write.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "host/export.h"

// The global object of the host. Its change counter, the first member, gives every changed object a new serial number.
struct VT_Vorna {
    std::atomic<std::uint32_t> change_counter{0};

    // A serial number that no object has yet.
    std::uint32_t next_serial() noexcept { return change_counter.fetch_add(1, std::memory_order_relaxed) + 1; }
};

extern VORNA_API VT_Vorna VORNA;

// Constants that the host shares with its modules.
struct VT_Shared_Data {
    // Thresholds of the ordered dither. Entry a + 8 * b is 1024 * B(a, b) + 512, B the rank in the 8 x 8 Bayer matrix.
    std::uint16_t thresholds[64];
    // Face patterns 0 to 73: row b of eight cells, the lowest row first; cell a is bit 0x80 >> a.
    std::uint8_t stock_patterns[74][8];
};

extern VORNA_API const VT_Shared_Data SHARED;

class VORNA_API VT_Object {
public:
    virtual ~VT_Object() = default;

protected:
    VT_Object() = default;
    VT_Object(const VT_Object&) = default;
    VT_Object& operator=(const VT_Object&) = default;
};

// An object with an atomic reference count and a serial number. The count starts at 0; the release from 1 to 0 deletes the
// object. A copy is a new object with count 0 and a serial number of its own.
class VORNA_API VT_Counted : public VT_Object {
public:
    // A copy with count 0, or null for classes that cannot be copied.
    virtual VT_Counted* clone() const = 0;

    void retain() const noexcept { count_.fetch_add(1, std::memory_order_relaxed); }

    void release() const noexcept {
        if (count_.fetch_sub(1, std::memory_order_acq_rel) == 1) {
            delete this;
        }
    }

    std::uint32_t reference_count() const noexcept { return count_.load(std::memory_order_acquire); }
    std::uint32_t serial() const noexcept { return serial_; }
    // Takes a new serial number. To be called after every change in place, since caches use the serial number as their key.
    void stamp() noexcept { serial_ = VORNA.next_serial(); }

protected:
    VT_Counted() noexcept : serial_(VORNA.next_serial()) {}
    VT_Counted(const VT_Counted& other) noexcept : VT_Object(other), serial_(VORNA.next_serial()) {}
    VT_Counted& operator=(const VT_Counted&) noexcept {
        stamp();
        return *this;
    }

private:
    mutable std::atomic<std::uint32_t> count_{0};
    std::uint32_t serial_;
};

// A handle that holds one count of its object; may be null.
template <class Object> class VT_Reference {
public:
    VT_Reference() noexcept = default;
    VT_Reference(std::nullptr_t) noexcept {}
    VT_Reference(Object* object) noexcept : object_(object) {
        if (object_) {
            object_->retain();
        }
    }
    VT_Reference(const VT_Reference& other) noexcept : VT_Reference(other.object_) {}
    VT_Reference(VT_Reference&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
    template <class Derived>
    VT_Reference(const VT_Reference<Derived>& other) noexcept requires(requires(Derived* from, Object*& to) { to = from; })
        : VT_Reference(other.get()) {}
    ~VT_Reference() {
        if (object_) {
            object_->release();
        }
    }

    // By value, so that the new object is retained before the old one is released.
    VT_Reference& operator=(VT_Reference other) noexcept {
        std::swap(object_, other.object_);
        return *this;
    }

    Object* get() const noexcept { return object_; }
    Object* operator->() const noexcept { return object_; }
    Object& operator*() const noexcept { return *object_; }
    explicit operator bool() const noexcept { return object_ != nullptr; }
    friend bool operator==(const VT_Reference& a, const VT_Reference& b) noexcept { return a.object_ == b.object_; }

private:
    Object* object_ = nullptr;
};

namespace vorna {

// Copy on write: returns the object with a new serial number when no other reference holds it, else replaces it by a clone.
template <class Object> Object& make_unique(VT_Reference<Object>& held) {
    if (held->reference_count() < 2) {
        held->stamp();
    } else {
        held = VT_Reference<Object>(static_cast<Object*>(held->clone()));
    }
    return *held;
}

} // namespace vorna
